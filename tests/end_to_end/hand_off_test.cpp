// The road from the button to a started converter, in both builds: the text backend in front, the
// recording converter behind.

#include <fstream>

#include "host/address.h"
#include "host/system.h"
#include "platform/testing.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {
namespace {

constexpr char kPage[] =
    "<!DOCTYPE html><title>A first page: draft</title>"
    "<meta name=page-height content=2000><p>Text.";
constexpr char kSwitches[] =
    R"("" "" \b \h \r \iw 1280 \ih 2000 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
    R"(\mt 0 \mb 0 \ml 0 \mr 0 )";

/// A number or a text as the block has it.
std::string Number(std::size_t value) {
    const auto number = static_cast<std::uint32_t>(value);
    return {reinterpret_cast<const char*>(&number), sizeof number};
}
std::string Text(const platform::WideString& text) {
    return Number(text.size()).append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

class HandOffTest : public HostTest {
protected:
    HandOffTest() : page_(WritePage("page one.html", kPage)) {}

    Finished Run(std::vector<std::string> options,
                 const std::filesystem::path& programs = RecordingPrograms()) const {
        options.insert(options.end(), {page_, "--backend", "text", "--output", Utf8(pdf_)});
        return RunProgram(Host(programs), options);
    }

    /// The job's block came whole, with `naming`, which says who names the PDF, and `output`.
    void ExpectBlock(const std::string& naming, const std::string& output) const {
        const std::string block = Recorded("block");
        const std::string source = Text(host::PlatformPath(CapturedPage()));
        EXPECT_EQ(block.substr(0, 5), Number(block.size()) + '\x0C');
        const std::string afterNaming = std::string(10, '\0') + Number(1);  // One item.
        const std::string wanted = Text(TEXT("%f")) + naming + afterNaming + source +
                                   std::string(8, '\0') + output + Number(0) + '\x01' +
                                   std::string(2, '\0');
        EXPECT_NE(block.find(wanted), std::string::npos);
    }

    /// The page's copy, which the recording converter leaves.
    std::filesystem::path CapturedPage() const {
        for (const auto& entry : std::filesystem::directory_iterator(temp_)) {
            if (entry.path().extension() == ".html") return entry.path();
        }
        return {};
    }

    const std::string page_;
};

TEST_F(HandOffTest, ReachesTheConverterThroughSharedMemory) {
    const Finished host = Run({"--wait"});
    ASSERT_EQ(host.code, 0) << host.output;
    EXPECT_EQ(Recorded("command_line"), std::string(kSwitches) + "\\sm QVD:IEP:HTMLData ");
    ExpectBlock(std::string(2, 0), Text(host::PlatformPath(pdf_)));
    const std::filesystem::path copy = CapturedPage();
    EXPECT_EQ(ReadFile(copy), std::string("\xEF\xBB\xBF<!DOCTYPE HTML><html>") + kPage + "</html>");
    EXPECT_TRUE(std::filesystem::is_empty((temp_ / copy.stem()) += "_files"));
}

TEST_F(HandOffTest, CarriesTheSelectionAndTheAddressOfItsPage) {
    const Finished host = Run({"--wait", "--select", "p"});
    ASSERT_EQ(host.code, 0) << host.output;
    const std::string url = Text(platform::FromUtf8(host::FileUrl(page_)));
    EXPECT_NE(Recorded("block").find(url + Text(TEXT("<p>Text."))), std::string::npos);
    EXPECT_EQ(CapturedPage(), "");
}

TEST_F(HandOffTest, ReachesTheConverterThroughAFileInProtectedModeAndLeavesItAlone) {
    const std::filesystem::path release = folder_ / "release";
    platform::testing::SetEnvironment("QUVADA_RECORD_WAIT", Utf8(release).c_str());
    const Finished host = Run({"--protected"});
    EXPECT_EQ(host.code, 0) << host.output;
    // The host is gone; the converter still fetches its job, and ends when it may.
    EXPECT_TRUE(Eventually([this] { return !Recorded("command_line").empty(); }));
    std::ofstream(release) << "go";
    const std::string line = Recorded("command_line");
    ASSERT_TRUE(line.starts_with(std::string(kSwitches) + "\\bp ")) << line;
    EXPECT_TRUE(line.ends_with(".bin ")) << line;
    EXPECT_EQ(line.compare(line.rfind('\\') + 1, 7, "qvdstg_"), 0) << line;
    // The converter is to ask for the file, and gets a name to offer.
    ExpectBlock(std::string("\0\x01", 2) + Text(TEXT("A first page draft")), Number(0));
}

TEST_F(HandOffTest, FindsTheAddinWhereAnInstallerHasPutIt) {
    const std::filesystem::path programs = RecordingPrograms();
    for (const std::vector<std::string>& scope : {std::vector<std::string>(), {"--user"}}) {
        std::filesystem::remove(records_ / "command_line");
        std::vector<std::string> task = scope;
        task.insert(task.begin(), "register");
        Install(programs, task);
        if (scope.empty() || !test_support::RunsUnderWine()) {
            ExpectEnd(Run({"--wait"}), 0, "");
            EXPECT_NE(Recorded("command_line"), "");
        }
        task.front() = "unregister";
        Install(programs, task);
        Install(programs, task);
        ExpectEnd(Run({"--wait"}), 4, "no add-in is installed");
        // One that is not registered can be tried out.
        EXPECT_EQ(Run({"--wait", "--addin", Utf8(programs / "QVDIEaddin.x64.dll")}).code, 0);
    }
    ExpectEnd(Run({"--addin", page_}), 4, "page one.html");
}

TEST_F(HandOffTest, SaysWhyNothingIsConverted) {
    const std::filesystem::path programs = folder_ / "programs";
    std::filesystem::copy(RecordingPrograms(), programs, std::filesystem::copy_options::recursive);
    const struct {
        const char* missing;  // removed from here on
        std::vector<std::string> options;
        int code;
        const char* says;
    } cases[] = {
        {"", {"--selection"}, 1, "No selection"},
        {"", {"--select", "#none"}, 3, "#none"},
        {"", {"--select", "p", "--frame", "0"}, 3, "no frame 0"},
        {"", {"--nosuch"}, 2, "--nosuch"},
        {"", {"b.html"}, 2, "once for each page"},
        {"programs/modules/ieframe.dll", {"--protected"}, 4, "ieframe.dll"},
        {"programs/PageRenderApp.x86.exe", {"--wait"}, 1, "could not be found - please reinstall."},
        {"programs/QVDIEaddin.x64.dll", {}, 4, "QVDIEaddin.x64.dll"},
        {"page one.html", {}, 3, "page one.html"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.says);
        if (*c.missing) std::filesystem::remove(folder_ / c.missing);
        const Finished host = Run(c.options, programs);
        ExpectEnd(host, c.code, c.says);
    }
    for (const std::filesystem::path& output : {folder_ / "missing" / "out.pdf", records_}) {
        const Finished host =
            RunProgram(Host(RecordingPrograms()), {page_, "--output", Utf8(output)});
        ExpectEnd(host, 2, Utf8(output));
    }
    EXPECT_EQ(Recorded("command_line"), "");
    EXPECT_FALSE(std::filesystem::exists(pdf_));
}

}  // namespace
}  // namespace end_to_end
