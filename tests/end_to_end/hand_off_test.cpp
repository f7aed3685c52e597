// The road from the button to a started converter, in both builds: the text backend in front, the
// recording converter behind.

#include <fstream>

#include "host/address.h"
#include "host/system.h"
#include "platform/testing.h"
#include "platform/text.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {
namespace {

using test_support::Finished;

constexpr char kPage[] =
    "<!DOCTYPE html><title>A first page: draft</title>"
    "<meta name=page-height content=2000><p>Text.";

/// The job's block, built here byte by byte.
class Block {
public:
    Block& Bytes(std::string_view bytes) {
        bytes_ += bytes;
        return *this;
    }
    Block& Number(std::size_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes_.push_back(static_cast<char>(value >> shift & 0xFF));
        }
        return *this;
    }
    Block& Text(const platform::WideString& text) {
        Number(text.size());
        for (const WCHAR unit : text) {
            bytes_.push_back(static_cast<char>(unit & 0xFF));
            bytes_.push_back(static_cast<char>(unit >> 8));
        }
        return *this;
    }
    /// The bytes with their size in front.
    [[nodiscard]] std::string Finish() const {
        return Block().Number(bytes_.size() + 4).bytes_ + bytes_;
    }

private:
    std::string bytes_;
};

std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

class HandOffTest : public HostTest {
protected:
    HandOffTest() : page_(WritePage("page one.html", kPage)), pdf_(Folder() / "out.pdf") {}

    [[nodiscard]] platform::WideString Url() const {
        return platform::FromUtf8(host::FileUrl(page_));
    }
    Finished Run(std::vector<std::string> options) const {
        options.insert(options.end(), {"--backend", "text", "--output", host::PathToUtf8(pdf_)});
        return RunHost(RecordingPrograms(), page_, options);
    }

    std::filesystem::path page_;
    std::filesystem::path pdf_;
};

TEST_F(HandOffTest, ReachesTheConverterThroughSharedMemory) {
    const Finished host = Run({"--wait"});
    ASSERT_EQ(host.code, 0) << host.output;
    EXPECT_EQ(Recorded("command_line"),
              R"("" "" \b \h \r \iw 1280 \ih 2000 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
              R"(\mt 0 \mb 0 \ml 0 \mr 0 \sm QVD:IEP:HTMLData )");
    const std::string expected =
        Block()
            .Bytes({"\x0C\0", 2})  // version; no security
            .Bytes({"\x01\0", 2})  // run settings: no application of the user's,
            .Number(0)             // no path,
            .Text(TEXT("%f"))      // the parameters by default
            .Bytes(Zeros(2))       // no name flag, not asked for the file
            .Bytes(Zeros(1 + 8))   // option
            .Bytes(Zeros(1))       // extra texts
            .Number(1)             // one item
            .Text(Url())
            .Number(0)  // no selection
            .Number(0)  // no text
            .Text(host::PlatformPath(pdf_))
            .Number(0)        // no attachments
            .Bytes(Zeros(3))  // nothing temporary, no details
            .Finish();
    EXPECT_EQ(Recorded("block"), expected);
}

TEST_F(HandOffTest, ReachesTheConverterThroughAFileInProtectedMode) {
    const Finished host = Run({"--wait", "--protected"});
    ASSERT_EQ(host.code, 0) << host.output;
    const std::string line = Recorded("command_line");
    const std::string start =
        R"("" "" \b \h \r \iw 1280 \ih 2000 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
        R"(\mt 0 \mb 0 \ml 0 \mr 0 \bp )";
    ASSERT_TRUE(line.starts_with(start)) << line;
    const std::string stored = line.substr(start.size());
    EXPECT_TRUE(stored.ends_with(".bin ")) << line;
    const std::size_t name = stored.rfind('\\');
    ASSERT_NE(name, std::string::npos) << line;
    EXPECT_EQ(stored.compare(name + 1, 7, "qvdstg_"), 0) << line;
    const std::string expected = Block()
                                     .Bytes({"\x0C\0", 2})
                                     .Bytes({"\x01\0", 2})
                                     .Number(0)
                                     .Text(TEXT("%f"))
                                     .Bytes({"\0\x01", 2})  // the converter is to ask for the file
                                     .Text(TEXT("A first page draft"))
                                     .Bytes(Zeros(1 + 8))
                                     .Bytes(Zeros(1))
                                     .Number(1)
                                     .Text(Url())
                                     .Number(0)
                                     .Number(0)
                                     .Number(0)  // no output file yet
                                     .Number(0)
                                     .Bytes(Zeros(3))
                                     .Finish();
    EXPECT_EQ(Recorded("block"), expected);
}

TEST_F(HandOffTest, EndsWithoutAConverterWhenNothingIsSelected) {
    const Finished host = Run({"--wait", "--selection"});
    EXPECT_EQ(host.code, 1);
    EXPECT_NE(host.output.find("No selection"), std::string::npos) << host.output;
    EXPECT_EQ(Recorded("command_line"), "");
    EXPECT_FALSE(std::filesystem::exists(pdf_));
}

TEST_F(HandOffTest, SaysWhatIsMissing) {
    const std::filesystem::path programs = Folder() / "programs";
    std::filesystem::copy(RecordingPrograms(), programs, std::filesystem::copy_options::recursive);
    const auto run = [&] {
        return RunHost(programs, page_, {"--backend", "text", "--output", host::PathToUtf8(pdf_)});
    };
    std::filesystem::remove(programs / "PageRenderApp.x86.exe");
    Finished host = run();
    EXPECT_EQ(host.code, 1);
    EXPECT_NE(host.output.find("PageRender application could not be found - please reinstall."),
              std::string::npos)
        << host.output;
    std::filesystem::remove(programs / "QVDIEaddin.x64.dll");
    host = run();
    EXPECT_EQ(host.code, 4);
    EXPECT_NE(host.output.find("QVDIEaddin.x64.dll"), std::string::npos) << host.output;
    std::filesystem::remove(page_);
    std::filesystem::copy(RecordingPrograms() / "QVDIEaddin.x64.dll", programs);
    host = run();
    EXPECT_EQ(host.code, 3);
    EXPECT_NE(host.output.find("page one.html"), std::string::npos) << host.output;
}

TEST_F(HandOffTest, RefusesWhatItCannotDo) {
    EXPECT_EQ(RunHost(RecordingPrograms(), page_, {"--nosuch"}).code, 2);
    EXPECT_EQ(RunHost(RecordingPrograms(), "ftp://site.example/", {}).code, 2);
    const Finished host = RunHost(RecordingPrograms(), page_,
                                  {"--output", host::PathToUtf8(Folder() / "missing" / "out.pdf")});
    EXPECT_EQ(host.code, 2);
    EXPECT_NE(host.output.find("missing"), std::string::npos) << host.output;
    EXPECT_EQ(Recorded("command_line"), "");
}

TEST_F(HandOffTest, LeavesAConverterAloneUnlessToldToWait) {
    const std::filesystem::path release = Folder() / "release";
    platform::testing::SetEnvironment("QUVADA_RECORD_WAIT", host::PathToUtf8(release).c_str());
    const Finished host = Run({"--protected"});
    EXPECT_EQ(host.code, 0) << host.output;
    // The host is gone; the converter still fetches its job, and ends when it may.
    EXPECT_TRUE(Eventually([this] { return !Recorded("command_line").empty(); }));
    EXPECT_NE(Recorded("block"), "");
    std::ofstream(release) << "go";
}

}  // namespace
}  // namespace end_to_end
