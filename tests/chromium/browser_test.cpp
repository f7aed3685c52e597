#include "chromium/browser.h"

#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "chromium/page.h"
#include "tests/chromium/browser_support.h"
#include "tests/support/scratch_folder.h"

namespace chromium {
namespace {

namespace fs = std::filesystem;

/// Gives each test a temporary folder of its own, in which nothing may be left.
class BrowserTest : public testing::Test {
protected:
    BrowserTest() {
        std::string name = fs::temp_directory_path() / "chromium-test-XXXXXX";
        folder_ = mkdtemp(name.data());
        if (const char* old = std::getenv("TMPDIR")) oldTemporary_ = old;
        setenv("TMPDIR", folder_.c_str(), 1);
    }
    ~BrowserTest() override {
        if (oldTemporary_.empty()) {
            unsetenv("TMPDIR");
        } else {
            setenv("TMPDIR", oldTemporary_.c_str(), 1);
        }
        fs::remove_all(folder_);
    }

    /// A program that stands in for the browser.
    std::string MakeProgram(const std::string& script) {
        const fs::path path = folder_ / "program.sh";
        std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    std::size_t CountLeftOvers() const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            count += entry.path().filename() != "program.sh";
        }
        return count;
    }

    fs::path folder_;
    std::string oldTemporary_;
};

/// Whether a process with `text` in its command line runs.
bool RunsProcessWith(const std::string& text) {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string words = test_support::ReadHostFile(entry.path() / "cmdline");
        if (words.find(text) != std::string::npos) return true;
    }
    return false;
}

/// Whether such processes end soon: those of a killed group leave one after the other.
bool EndsProcessesWith(const std::string& text) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(5);
    while (RunsProcessWith(text)) {
        if (Clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

TEST_F(BrowserTest, SaysWhatIsWrongWithAProgramThatIsNoBrowser) {
    struct Case {
        const char* why;
        const char* script;
        const char* said;  // part of the error
    };
    constexpr Case kCases[] = {
        {"ends at once, with a word on why", "echo no display here >&2; exit 3", "no display here"},
        {"ends at once", "exit 0", "ended unexpectedly"},
        {"talks garbage", "printf 'hello\\0' >&4; sleep 60", "not a message"},
        {"answers another question", "printf '{\"id\":99,\"result\":{}}\\0' >&4; sleep 60",
         "did not answer Browser.getVersion within 0.5 s"},
        {"hangs", "sleep 60", "did not answer"},
        {"hangs and ignores polite signals", "trap '' TERM INT; sleep 60 & wait", "did not answer"},
        {"refuses", "printf '{\"id\":1,\"error\":{\"message\":\"not now\"}}\\0' >&4; sleep 60",
         "not now"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        LaunchOptions options;
        options.program = MakeProgram(c.script);
        options.startLimit = Milliseconds(500);
        const Clock::time_point start = Clock::now();
        const auto browser = Browser::Launch(options);
        ASSERT_FALSE(browser);
        EXPECT_NE(browser.GetError().text.find(c.said), std::string::npos)
            << browser.GetError().text;
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
        EXPECT_EQ(CountLeftOvers(), 0u);
        EXPECT_TRUE(EndsProcessesWith(options.program));
    }
}

TEST_F(BrowserTest, NamesTheProgramThatIsMissing) {
    LaunchOptions options;
    options.program = folder_ / "none";
    const auto browser = Browser::Launch(options);
    ASSERT_FALSE(browser);
    EXPECT_NE(browser.GetError().text.find("no browser at " + options.program), std::string::npos);
    EXPECT_EQ(CountLeftOvers(), 0u);
}

TEST_F(BrowserTest, ClearsTheFolderOfAKilledOwnerAndNoOther) {
    fs::create_directories(folder_ / "quvada-browser-dead00/profile");
    std::ofstream(folder_ / "quvada-browser-dead00/lock");
    fs::create_directories(folder_ / "quvada-browser-nolock");
    const auto living = PrivateFolder::Create();
    ASSERT_TRUE(living);
    EXPECT_FALSE(fs::exists(folder_ / "quvada-browser-dead00"));
    EXPECT_TRUE(fs::exists(folder_ / "quvada-browser-nolock"));
    const auto second = PrivateFolder::Create();
    ASSERT_TRUE(second);
    EXPECT_TRUE(fs::exists(living->Path()));
}

TEST_F(BrowserTest, LeavesNothingBehind) {
    QVD_NEED_BROWSER();
    std::string profile;
    {
        auto browser = Browser::Launch();
        ASSERT_TRUE(browser) << browser.GetError().text;
        profile = (*browser)->Folder();
        EXPECT_TRUE(RunsProcessWith(profile));
        const auto version = (*browser)->Call({}, "Browser.getVersion");
        ASSERT_TRUE(version);
        EXPECT_EQ((*version)["protocolVersion"].Text(), "1.3");
    }
    EXPECT_EQ(CountLeftOvers(), 0u);
    EXPECT_TRUE(EndsProcessesWith(profile));
}

TEST_F(BrowserTest, EndsWithItsKilledOwner) {
    QVD_NEED_BROWSER();
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t owner = fork();
    if (owner == 0) {
        auto browser = Browser::Launch();
        const std::string profile = browser ? (*browser)->Folder() : std::string("failed");
        (void)!write(ready[1], profile.data(), profile.size());
        pause();
        _exit(0);
    }
    char text[512];
    const ssize_t count = read(ready[0], text, sizeof text);
    ASSERT_GT(count, 0);
    const std::string profile(text, static_cast<std::size_t>(count));
    ASSERT_TRUE(RunsProcessWith(profile)) << profile;
    kill(owner, SIGKILL);
    waitpid(owner, nullptr, 0);
    EXPECT_TRUE(EndsProcessesWith(profile));
    close(ready[0]);
    close(ready[1]);
    EXPECT_TRUE(PrivateFolder::Create());
    EXPECT_FALSE(fs::exists(profile)) << "the next start clears the folder";
}

TEST_F(BrowserTest, SurvivesTheDeathOfTheBrowser) {
    QVD_NEED_BROWSER();
    auto browser = Browser::Launch();
    ASSERT_TRUE(browser) << browser.GetError().text;
    const auto crash = (*browser)->Call({}, "Browser.crash", {}, Milliseconds(10'000));
    ASSERT_FALSE(crash);
    EXPECT_NE(crash.GetError().text.find("ended unexpectedly"), std::string::npos);
    const auto after = (*browser)->Call({}, "Browser.getVersion");
    EXPECT_FALSE(after);
    browser->reset();
    EXPECT_EQ(CountLeftOvers(), 0u);
}

TEST_F(BrowserTest, StopsWaitingWhenCancelled) {
    QVD_NEED_BROWSER();
    std::atomic<bool> cancel = false;
    LaunchOptions options;
    options.cancel = &cancel;
    auto browser = Browser::Launch(options);
    ASSERT_TRUE(browser) << browser.GetError().text;
    auto page = Page::Create(**browser);
    ASSERT_TRUE(page);
    std::thread canceller([&] { cancel = true; });
    const auto never = (*page)->Evaluate("new Promise(() => {})");
    canceller.join();
    ASSERT_FALSE(never);
    EXPECT_NE(never.GetError().text.find("cancelled"), std::string::npos);
    page->reset();
    browser->reset();
    EXPECT_EQ(CountLeftOvers(), 0u);
}

TEST_F(BrowserTest, CarriesLargeMessagesBothWaysAndRefusesTheTooLarge) {
    QVD_NEED_BROWSER();
    auto browser = Browser::Launch();
    ASSERT_TRUE(browser) << browser.GetError().text;
    auto page = Page::Create(**browser);
    ASSERT_TRUE(page);
    const std::string text(std::size_t{8} << 20, 'x');
    const auto echoed = (*page)->Evaluate("'" + text + "' + 'y'");
    ASSERT_TRUE(echoed) << echoed.GetError().text;
    EXPECT_EQ(echoed->Text(), text + "y");
    const auto refused = (*page)->Evaluate("'" + std::string(std::size_t{97} << 20, 'x') + "'");
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.GetError().text.find("larger than"), std::string::npos);
    EXPECT_TRUE((*page)->Evaluate("1"));
}

}  // namespace
}  // namespace chromium
