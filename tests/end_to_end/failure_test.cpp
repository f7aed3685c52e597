// What goes wrong around a command: killed, two at once, no room, a profile that cannot be used.
// Each time: a clear message or none needed, no crash, nothing left behind, settings not lost.

#include <csignal>
#include <fstream>
#include <sys/mount.h>

#include "platform/memory.h"
#include "platform/scope_exit.h"
#include "platform/testing.h"
#include "settings/conversion_settings.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {
namespace {

using platform::testing::SetEnvironment;

// On the converter's command line: by the settings saved here, and by the default ones.
constexpr char kLandscape[] = "\\l ";
constexpr char kPortrait[] = "\"\" \\b ";

bool HasSharedJob() {
    return static_cast<bool>(
        platform::MappingHandle(OpenFileMappingW(FILE_MAP_READ, FALSE, TEXT("QVD:IEP:HTMLData"))));
}

class FailureTest : public HostTest {
protected:
    FailureTest() : release_(folder_ / "release"), registry_(folder_ / "profile" / "registry.db") {
        // Settings that differ from the defaults, to be found again later.
        ConversionSettings settings(TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin"));
        EXPECT_EQ(settings.Load(), S_OK);
        settings.LandscapeOrientation = true;
        EXPECT_EQ(settings.Save(), S_OK);
        platform::testing::ResetProfile();
    }

    /// Arguments for a quick load of a small page.
    std::vector<std::string> Quick(std::vector<std::string> more = {}) const {
        more.insert(more.end(), {WritePage("page.html", "<title>Page</title><p>text"), "--wait",
                                 "--backend", "text", "--output", Utf8(pdf_)});
        return more;
    }
    Finished Record(std::vector<std::string> more = {}) const {
        std::filesystem::remove(records_ / "command_line");
        return RunProgram(Host(RecordingPrograms()), Quick(std::move(more)));
    }
    /// A run that ends well, with this in what it says and on the converter's command line.
    void ExpectRecorded(const char* line, const char* says = "",
                        const std::vector<std::string>& more = {}) const {
        const Finished host = Record(more);
        ExpectEnd(host, 0, says);
        EXPECT_NE(Recorded("command_line").find(line), std::string::npos);
    }
    void ExpectNoProcessLeft() const {
        EXPECT_TRUE(Eventually([this] { return ProcessesNaming(folder_.string()).empty(); }))
            << testing::PrintToString(ProcessesNaming(folder_.string()));
    }

    const std::filesystem::path release_;  // lets a recording converter that waits for it end
    const std::filesystem::path registry_;
};

TEST_F(FailureTest, AHostThatIsEndedTakesItsBrowserAlong) {
    const std::string page = WritePage("endless.html", "<script>for (;;) {}</script>");
    for (const int signal : {SIGKILL, SIGTERM}) {
        SCOPED_TRACE(signal);
        Process host(Host(Programs()), {page, "--output", Utf8(pdf_)});
        // The browser's own folder lies in the temporary one.
        ASSERT_TRUE(Eventually([this] { return !ProcessesNaming(temp_.string()).empty(); }));
        host.Signal(signal);
        EXPECT_EQ(host.Wait().code, signal == SIGTERM ? 130 : 128 + SIGKILL);
        ExpectNoProcessLeft();
    }
    // What a killed host leaves goes with the next start of a browser.
    EXPECT_TRUE(std::filesystem::is_empty(temp_));
    ExpectRecorded(kLandscape);
}

TEST_F(FailureTest, AHostWaitsForItsTurnAndAKilledOneGivesItUp) {
    SetEnvironment("QUVADA_RECORD_WAIT", release_.c_str());
    Process first(Host(RecordingPrograms()), Quick());
    ASSERT_TRUE(Eventually([this] { return !Recorded("command_line").empty(); }));
    EXPECT_TRUE(HasSharedJob());
    const Finished late = Record({"--timeout", "1"});
    ExpectEnd(late, 1, "another conversion");
    Process next(Host(RecordingPrograms()), Quick({"--verbose"}));
    ASSERT_TRUE(Eventually([&] { return next.Output().find("waiting") != std::string::npos; }));
    next.Signal(SIGTERM);
    const Finished interrupted = next.Wait();
    ExpectEnd(interrupted, 130, "nothing was converted");

    first.Signal(SIGKILL);
    (void)first.Wait();
    EXPECT_FALSE(HasSharedJob());
    std::ofstream(release_) << "go";
    ExpectNoProcessLeft();
    ExpectRecorded(kLandscape);
}

TEST_F(FailureTest, TellsHowTheConverterEnded) {
    using End = std::pair<const char*, const char*>;
    for (const auto& [result, says] : {End{"7", "code 7"}, End{"abort", "killed by signal 6"}}) {
        SetEnvironment("QUVADA_RECORD_RESULT", result);
        const Finished host = Record();
        ExpectEnd(host, 5, says);
    }
    SetEnvironment("QUVADA_RECORD_WAIT", release_.c_str());
    EXPECT_EQ(Record({"--timeout", "1"}).code, 6);
    std::ofstream(release_) << "go";
}

TEST_F(FailureTest, TwoJobsAtOnceGiveTwoPdfs) {
    // Pages that load at once, so that both buttons are pressed at the same time; and two browsers
    // on one profile.
    for (const char* backend : {"text", "text", "chromium"}) {
        const auto start = [&](const std::string& name) {
            return std::make_unique<Process>(
                Host(Programs()),
                std::vector{WritePage(name + ".html", "<title>Page</title><p>Number " + name),
                            std::string("--backend"), std::string(backend), std::string("--wait"),
                            std::string("--output"), Utf8(folder_ / (name + ".pdf"))});
        };
        const auto one = start("one");
        const auto two = start("two");
        EXPECT_EQ(one->Wait().code, 0) << one->Output();
        EXPECT_EQ(two->Wait().code, 0) << two->Output();
        for (const std::string name : {"one", "two"}) {
            const std::filesystem::path pdf = folder_ / (name + ".pdf");
            const Finished text = RunProgram("pdftotext", {Utf8(pdf), "-"});
            EXPECT_NE(text.output.find("Number " + name), std::string::npos) << text.output;
            std::filesystem::remove(pdf);
        }
        EXPECT_TRUE(std::filesystem::is_empty(temp_));
    }
}

TEST_F(FailureTest, ATabThatFailsLeavesTheOthersAlone) {
    const std::vector<std::string> pages = {WritePage("one.html", "<title>One</title>"),
                                            Utf8(folder_ / "missing.html"),
                                            WritePage("two.html", "<title>Two</title>")};
    std::vector<std::string> arguments = {"--wait", "--backend", "text"};
    for (const std::string& page : pages) {
        arguments.insert(arguments.end(), {page, "--output", page + ".pdf"});
    }
    const Finished host = RunProgram(Host(Programs()), arguments);
    ExpectEnd(host, 3, "missing.html: there is no page");
    for (const std::string& page : pages) {
        EXPECT_EQ(ReadFile(page + ".pdf").starts_with("%PDF-"), page != pages[1]) << page;
    }
}

TEST_F(FailureTest, AsksForTheFileOnTheTerminal) {
    std::ofstream(pdf_) << "taken";
    const std::string page = WritePage("page.html", "<title>A page</title>");
    const auto answer = [&](const std::string& lines) {
        std::ofstream(folder_ / "answers") << lines;
        const std::string host = Utf8(Host(Programs())) + " --wait --backend text " + page;
        return RunProgram("sh", {"-c", "script -qec '" + host + "' /dev/null < '" +
                                           Utf8(folder_ / "answers") + "'"});
    };
    const std::string taken = Utf8(pdf_).substr(0, Utf8(pdf_).size() - 4);
    Finished host = answer(Utf8(folder_ / "no" / "x.pdf") + "\n/\n" + taken + "\nn\n");
    EXPECT_EQ(host.code, 1) << host.output;
    for (const char* part : {"\\A page.pdf]: ", "There is no folder", "That is no file name.",
                             "out.pdf exists. Replace it? [y/N] ", "cancelled"}) {
        EXPECT_NE(host.output.find(part), std::string::npos) << part << host.output;
    }
    EXPECT_EQ(ReadFile(pdf_), "taken");
    host = answer(taken + "\ny\n");
    EXPECT_EQ(host.code, 0) << host.output;
    EXPECT_TRUE(ReadFile(pdf_).starts_with("%PDF-"));
}

TEST_F(FailureTest, ACorruptRegistryIsToldAndLeftAsItIs) {
    Install(RecordingPrograms());
    for (const std::string& bytes : {std::string("this is no registry"), std::string(8192, '\xAA'),
                                     std::string("SQLite format 3\0 and then nothing", 34)}) {
        std::ofstream(registry_, std::ios::binary | std::ios::trunc) << bytes;
        // Such a registry lists no add-ins either.
        ExpectRecorded(kPortrait, "registry.db",
                       {"--addin", Utf8(RecordingPrograms() / "QVDIEaddin.x64.dll")});
        EXPECT_EQ(ReadFile(registry_), bytes);
    }
}

TEST_F(FailureTest, AFullOrReadOnlyDiskIsToldAndLosesNothing) {
    const std::filesystem::path disk = folder_ / "disk";
    std::filesystem::create_directory(disk);
    if (mount("none", disk.c_str(), "tmpfs", 0, "size=256k,mode=0777") != 0) {
        GTEST_SKIP() << "this user may not mount a small disk";
    }
    const platform::ScopeExit unmount([&disk]() noexcept { umount2(disk.c_str(), MNT_DETACH); });
    Install(RecordingPrograms());
    std::filesystem::copy(registry_, disk / "registry.db");
    const std::string before = ReadFile(registry_);
    std::ofstream filler(disk / "filler", std::ios::binary);
    while (filler) filler << std::string(1024, 'x') << std::flush;
    filler.close();

    // For the PDF, ...
    const std::filesystem::path output = disk / "full.pdf";
    Finished host = RunProgram(Host(Programs()), {WritePage("full.html", "<p>text"), "--backend",
                                                  "text", "--wait", "--output", Utf8(output)});
    ExpectEnd(host, 5, "full.pdf");
    EXPECT_FALSE(std::filesystem::exists(output));
    // ... for the job's file, ...
    SetEnvironment("TMPDIR", disk.c_str());
    host = Record({"--protected"});
    SetEnvironment("TMPDIR", temp_.c_str());
    ExpectEnd(host, 1, "could not be stored");
    // ... and for the settings.
    ExpectRecorded(kLandscape, "full", {"--profile", Utf8(disk)});
    ASSERT_EQ(mount("none", disk.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, ""), 0);
    // Settings that cannot be opened for writing count as missing.
    ExpectRecorded(kPortrait, "may only be read", {"--profile", Utf8(disk)});
    EXPECT_TRUE(ReadFile(disk / "registry.db") == before) << "something was written";
    ExpectNoProcessLeft();
}

}  // namespace
}  // namespace end_to_end
