// What goes wrong around a command: killed, two at once, no room, a profile that cannot be used.
// Each time: a clear message or none needed, no crash, nothing left behind, settings not lost.

#include <csignal>
#include <fstream>
#include <sys/mount.h>
#include <unistd.h>

#include "host/address.h"
#include "host/system.h"
#include "platform/memory.h"
#include "platform/testing.h"
#include "platform/text.h"
#include "settings/conversion_settings.h"
#include "tests/end_to_end/host_test.h"
#include "tests/end_to_end/processes.h"

namespace end_to_end {
namespace {

using platform::testing::SetEnvironment;
using test_support::Finished;
using test_support::Program;
using test_support::RunProgram;

constexpr WCHAR kSettingsKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");
constexpr char kEndlessPage[] = "<title>Endless</title><script>for (;;) {}</script>";
constexpr char kPage[] = "<title>Page</title><p>text";

bool HasSharedJob() {
    return static_cast<bool>(
        platform::MappingHandle(OpenFileMappingW(FILE_MAP_READ, FALSE, TEXT("QVD:IEP:HTMLData"))));
}

class FailureTest : public HostTest {
protected:
    FailureTest() : pdf_(Folder() / "out.pdf") {}

    /// Settings that differ from the defaults, to be found again later.
    void SaveLandscape() {
        ConversionSettings settings(kSettingsKey);
        ASSERT_EQ(settings.Load(), S_OK);
        settings.LandscapeOrientation = true;
        ASSERT_EQ(settings.Save(), S_OK);
        platform::testing::ResetProfile();
    }
    Finished Record(std::vector<std::string> options = {}) {
        options.insert(options.end(), {"--wait", "--backend", "text", "--output", pdf_.string()});
        return RunHost(RecordingPrograms(), WritePage("page.html", kPage), options);
    }
    void ExpectLandscape() {
        const Finished host = Record();
        EXPECT_EQ(host.code, 0) << host.output;
        EXPECT_NE(Recorded("command_line").find("\\l "), std::string::npos);
    }
    void ExpectNoProcessLeft() {
        EXPECT_TRUE(Eventually([this] { return ProcessesNaming(Folder().string()).empty(); }))
            << testing::PrintToString(ProcessesNaming(Folder().string()));
    }
    /// Its profile lies in the temporary folder.
    [[nodiscard]] bool HasBrowser() const {
        return !ProcessesNaming(TempFolder().string()).empty();
    }
    [[nodiscard]] std::filesystem::path Profile() const { return Folder() / "profile"; }
    [[nodiscard]] std::filesystem::path Registry() const { return Profile() / "registry.db"; }

    std::filesystem::path pdf_;
};

TEST_F(FailureTest, AKilledHostTakesItsBrowserAlong) {
    SaveLandscape();
    const auto host =
        StartHost(Programs(), WritePage("endless.html", kEndlessPage), {"--output", pdf_.string()});
    ASSERT_TRUE(host);
    ASSERT_TRUE(Eventually([this] { return HasBrowser(); }));
    host->Kill();
    EXPECT_EQ(host->Wait(), 128 + SIGKILL);
    ExpectNoProcessLeft();
    ExpectLandscape();
    // The browser's folder goes at the latest with the next start of a browser.
    const Finished next = RunHost(Programs(), Folder() / "missing.html", {});
    const Finished whole =
        RunHost(Programs(), Folder() / "page.html", {"--wait", "--output", pdf_.string()});
    EXPECT_EQ(next.code, 3);
    EXPECT_EQ(whole.code, 0) << whole.output;
    EXPECT_TRUE(std::filesystem::is_empty(TempFolder()));
}

TEST_F(FailureTest, AnInterruptedHostTidiesUpAtOnce) {
    const auto host =
        StartHost(Programs(), WritePage("endless.html", kEndlessPage), {"--output", pdf_.string()});
    ASSERT_TRUE(host);
    ASSERT_TRUE(Eventually([this] { return HasBrowser(); }));
    ASSERT_EQ(kill(host->Id(), SIGTERM), 0);
    EXPECT_EQ(host->Wait(), 130) << host->Output();
    EXPECT_TRUE(std::filesystem::is_empty(TempFolder()));
    ExpectNoProcessLeft();
}

TEST_F(FailureTest, AKilledHostTakesItsJobAlong) {
    SaveLandscape();
    const std::filesystem::path release = Folder() / "release";
    SetEnvironment("QUVADA_RECORD_WAIT", release.c_str());
    const auto host = StartHost(RecordingPrograms(), WritePage("page.html", kPage),
                                {"--wait", "--backend", "text", "--output", pdf_.string()});
    ASSERT_TRUE(host);
    ASSERT_TRUE(Eventually([this] { return !Recorded("command_line").empty(); }));
    EXPECT_TRUE(HasSharedJob());
    host->Kill();
    (void)host->Wait();
    EXPECT_FALSE(HasSharedJob());
    std::ofstream(release) << "go";
    ExpectNoProcessLeft();
    ExpectLandscape();
}

TEST_F(FailureTest, TellsHowTheConverterEnded) {
    SetEnvironment("QUVADA_RECORD_RESULT", "7");
    Finished host = Record();
    EXPECT_EQ(host.code, 5);
    EXPECT_NE(host.output.find("code 7"), std::string::npos) << host.output;
    SetEnvironment("QUVADA_RECORD_RESULT", "abort");
    host = Record();
    EXPECT_EQ(host.code, 5);
    EXPECT_NE(host.output.find("killed by signal 6"), std::string::npos) << host.output;
    SetEnvironment("QUVADA_RECORD_RESULT", nullptr);

    const std::filesystem::path release = Folder() / "release";
    SetEnvironment("QUVADA_RECORD_WAIT", release.c_str());
    host = Record({"--timeout", "1"});
    EXPECT_EQ(host.code, 6) << host.output;
    std::ofstream(release) << "go";
}

TEST_F(FailureTest, TwoHostsAtOnceKeepTheirJobsApart) {
    constexpr int kRounds = 5;
    for (int round = 0; round < kRounds; ++round) {
        std::unique_ptr<Program> hosts[2];
        std::filesystem::path pages[2];
        std::filesystem::path records[2];
        for (std::size_t i = 0; i < 2; ++i) {
            const std::string name = std::to_string(round) + "_" + std::to_string(i);
            pages[i] = WritePage(name + ".html", kPage);
            records[i] = Records() / name;
            std::filesystem::create_directory(records[i]);
            SetEnvironment("QUVADA_RECORD_FOLDER", records[i].c_str());
            hosts[i] = StartHost(RecordingPrograms(), pages[i],
                                 {"--wait", "--backend", "text", "--output", pdf_.string()});
            ASSERT_TRUE(hosts[i]);
        }
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(hosts[i]->Wait(), 0) << hosts[i]->Output();
            const platform::WideString url = platform::FromUtf8(host::FileUrl(pages[i]));
            const std::string bytes(reinterpret_cast<const char*>(url.data()),
                                    url.size() * sizeof(WCHAR));
            EXPECT_NE(ReadFile(records[i] / "block").find(bytes), std::string::npos)
                << "round " << round << ", host " << i;
        }
    }
}

TEST_F(FailureTest, TwoMainJobsAtOnceGiveTwoPdfs) {
    std::unique_ptr<Program> hosts[2];
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string name = std::to_string(i);
        const std::filesystem::path page =
            WritePage(name + ".html", "<title>Page " + name + "</title><p>Number " + name);
        hosts[i] = StartHost(Programs(), page,
                             {"--wait", "--output", (Folder() / (name + ".pdf")).string()});
        ASSERT_TRUE(hosts[i]);
    }
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(hosts[i]->Wait(), 0) << hosts[i]->Output();
        const std::string name = std::to_string(i);
        const Finished text = RunProgram("pdftotext", {(Folder() / (name + ".pdf")).string(), "-"});
        EXPECT_NE(text.output.find("Number " + name), std::string::npos) << text.output;
    }
    EXPECT_TRUE(std::filesystem::is_empty(TempFolder()));
}

TEST_F(FailureTest, ACorruptRegistryIsToldAndLeftAsItIs) {
    const std::string cases[] = {"this is no registry", std::string(8192, '\xAA'),
                                 std::string("SQLite format 3\0 and then nothing", 34)};
    for (const std::string& bytes : cases) {
        SCOPED_TRACE(bytes.substr(0, 20));
        std::filesystem::create_directories(Profile());
        std::ofstream(Registry(), std::ios::binary | std::ios::trunc) << bytes;
        const Finished host = Record();
        EXPECT_EQ(host.code, 0) << host.output;
        EXPECT_NE(host.output.find("registry.db"), std::string::npos) << host.output;
        EXPECT_NE(Recorded("command_line").find("\\pw 5953 "), std::string::npos);
        EXPECT_EQ(ReadFile(Registry()), bytes);
    }
}

TEST_F(FailureTest, AReadOnlyProfileIsToldAndKept) {
    SaveLandscape();
    const std::string before = ReadFile(Registry());
    // Root may write everywhere, so the host runs as someone else, on programs that he may read.
    const std::filesystem::path programs = Folder() / "programs";
    std::filesystem::copy(RecordingPrograms(), programs, std::filesystem::copy_options::recursive);
    const std::filesystem::path page = WritePage("page.html", kPage);
    namespace fs = std::filesystem;
    constexpr fs::perms kAll = fs::perms::all;
    for (const auto& entry : fs::recursive_directory_iterator(Folder())) {
        fs::permissions(entry.path(),
                        fs::perms::group_read | fs::perms::group_exec | fs::perms::others_read |
                            fs::perms::others_exec,
                        fs::perm_options::add);
    }
    fs::permissions(TempFolder(), kAll);
    fs::permissions(Records(), kAll);
    std::vector<std::string> command = {(programs / "quvada-host").string(),
                                        "--wait",
                                        "--backend",
                                        "text",
                                        "--output",
                                        pdf_.string(),
                                        page.string()};
    std::string program = command[0];
    if (geteuid() == 0) {
        program = "setpriv";
        command.insert(command.begin(), {"--reuid=65534", "--regid=65534", "--clear-groups", "--"});
    } else {
        command.erase(command.begin());
        fs::permissions(Registry(), fs::perms::owner_read);
        fs::permissions(Profile(), fs::perms::owner_read | fs::perms::owner_exec);
    }
    const Finished host = RunProgram(program, command);
    fs::permissions(Profile(), fs::perms::owner_all);
    EXPECT_EQ(host.code, 0) << host.output;
    EXPECT_NE(host.output.find("may only be read"), std::string::npos) << host.output;
    EXPECT_NE(Recorded("command_line"), "");
    EXPECT_EQ(ReadFile(Registry()), before);
}

/// A disk of 64 KiB while it lives, where this process may mount one.
class SmallDisk {
public:
    explicit SmallDisk(const std::filesystem::path& path) : path_(path) {
        std::filesystem::create_directory(path);
        mounted_ = mount("none", path.c_str(), "tmpfs", 0, "size=64k,mode=0777") == 0;
    }
    ~SmallDisk() {
        if (mounted_) umount2(path_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    [[nodiscard]] bool IsMounted() const { return mounted_; }
    void Fill() const {
        std::ofstream file(path_ / "filler", std::ios::binary);
        for (int i = 0; i < 64 && file; ++i) file << std::string(1024, 'x') << std::flush;
    }

private:
    std::filesystem::path path_;
    bool mounted_;
};

TEST_F(FailureTest, AFullDiskEndsInAMessageAndNoHalfFile) {
    const std::filesystem::path disk = Folder() / "disk";
    const SmallDisk small(disk);
    if (!small.IsMounted()) GTEST_SKIP() << "this user may not mount a small disk";
    small.Fill();
    const std::filesystem::path page = WritePage("page.html", kPage);

    // For the PDF.
    Finished host = RunHost(Programs(), page, {"--wait", "--output", (disk / "out.pdf").string()});
    EXPECT_EQ(host.code, 5) << host.output;
    EXPECT_NE(host.output.find("out.pdf"), std::string::npos) << host.output;
    EXPECT_FALSE(std::filesystem::exists(disk / "out.pdf"));

    // For the job's file.
    SetEnvironment("TMPDIR", disk.c_str());
    host = Record({"--protected"});
    EXPECT_EQ(host.code, 1) << host.output;
    EXPECT_NE(host.output.find("could not be stored"), std::string::npos) << host.output;
    SetEnvironment("TMPDIR", TempFolder().c_str());
    ExpectNoProcessLeft();
}

TEST_F(FailureTest, AFullProfileDiskLosesNoSettings) {
    const std::filesystem::path disk = Folder() / "disk";
    const SmallDisk small(disk);
    if (!small.IsMounted()) GTEST_SKIP() << "this user may not mount a small disk";
    SaveLandscape();
    std::filesystem::copy(Registry(), disk / "registry.db");
    const std::string before = ReadFile(disk / "registry.db");
    small.Fill();
    const Finished host = Record({"--profile", disk.string()});
    EXPECT_EQ(host.code, 0) << host.output;
    EXPECT_NE(host.output.find("full"), std::string::npos) << host.output;
    EXPECT_NE(Recorded("command_line").find("\\l "), std::string::npos);
    EXPECT_EQ(ReadFile(disk / "registry.db"), before);
}

}  // namespace
}  // namespace end_to_end
