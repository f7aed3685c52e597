#include "converter/output_file.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>

#include "converter/run_app.h"

namespace converter {
namespace {

namespace fs = std::filesystem;
using platform::WideView;

class OutputFileTest : public testing::Test {
protected:
    OutputFileTest() {
        std::string name = fs::temp_directory_path() / "output-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(name.data()));
    }
    ~OutputFileTest() override { fs::remove_all(folder_); }

    static std::string Read(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    std::ptrdiff_t CountFiles() const {
        return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
    }

    fs::path folder_;
};

TEST_F(OutputFileTest, ReplacesInOneStepAndKeepsWhatItReplacesOtherwise) {
    const fs::path path = folder_ / "a b.pdf";
    ASSERT_TRUE(WriteOutputFile(path, "first", nullptr));
    EXPECT_EQ(Read(path), "first");
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(path, folder_ / "link.pdf");
    ASSERT_TRUE(WriteOutputFile(folder_ / "link.pdf", "second", nullptr));
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.pdf"));
    EXPECT_EQ(Read(path), "second");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    const std::atomic<bool> cancel = true;
    EXPECT_FALSE(WriteOutputFile(path, "third", &cancel));
    EXPECT_FALSE(WriteOutputFile(folder_, "third", nullptr));
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_FALSE(WriteOutputFile(path, "third", nullptr)) << "write-protected";
    EXPECT_FALSE(WriteOutputFile(folder_ / "none/a.pdf", "third", nullptr));
    EXPECT_EQ(Read(path), "second");
    EXPECT_EQ(CountFiles(), 2);
}

TEST_F(OutputFileTest, LeavesNothingHalfWrittenOnAFullDisk) {
    const fs::path path = folder_ / "a.pdf";
    ASSERT_TRUE(WriteOutputFile(path, "kept", nullptr));
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 1000;  // bytes; stands for a disk that fills up in the middle
    setrlimit(RLIMIT_FSIZE, &small);
    const Outcome written = WriteOutputFile(path, std::string(5000, 'x'), nullptr);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_FALSE(written);
    EXPECT_NE(written.GetError().text.find("can't be written"), std::string::npos);
    EXPECT_EQ(Read(path), "kept");
    EXPECT_EQ(CountFiles(), 1);
}

TEST(FileName, ComesFromAnyTitle) {
    struct Case {
        WideView title;
        WideView name;
    };
    constexpr Case kCases[] = {{TEXT("Plain title"), TEXT("Plain title")},
                               {TEXT("a/b\\c:d*e?\"<>|f"), TEXT("a b c d e     f")},
                               {TEXT(" ..hidden. "), TEXT("hidden")},
                               {TEXT(""), TEXT("Web page")},
                               {TEXT("..."), TEXT("Web page")},
                               {TEXT("\x1\x7F"), TEXT("Web page")}};
    for (const Case& c : kCases) {
        EXPECT_TRUE(FileNameOf(platform::WideString(c.title)) == c.name)
            << platform::ToUtf8(c.title);
    }
    EXPECT_EQ(FileNameOf(platform::WideString(500, WCHAR{'x'})).size(), 80u);
}

TEST(AppArguments, PutThePathInWithoutSplittingIt) {
    using List = std::vector<std::string>;
    struct Case {
        const char* parameters;
        List arguments;
    };
    const Case kCases[] = {
        {"%f", {"/a b.pdf"}},
        {"\"%f\"", {"/a b.pdf"}},
        {"-o  %f  --x=\"1 2\"", {"-o", "/a b.pdf", "--x=1 2"}},
        {"file=%f,%f", {"file=/a b.pdf,/a b.pdf"}},
        {"\"\"", {""}},
        {"", {}},
        {"100% %F", {"100%", "%F"}},
        {"\"open %f", {"open /a b.pdf"}},
    };
    for (const Case& c : kCases) EXPECT_EQ(MakeArguments(c.parameters, "/a b.pdf"), c.arguments);
    EXPECT_EQ(MakeArguments("%f", "/%f"), List{"/%f"}) << "a path is not looked through again";
}

TEST_F(OutputFileTest, StartsTheJobsOwnApplication) {
    const fs::path program = folder_ / "my app";
    const fs::path record = folder_ / "record";
    ASSERT_EQ(mkfifo(record.c_str(), 0600), 0);
    std::ofstream(program) << "#!/bin/sh\nprintf '%s|' \"$@\" > '" << record.string() << "'\n";
    fs::permissions(program, fs::perms::owner_all);
    RunApp app;
    app.useCustomApp = true;
    app.appPath = platform::FromUtf8(program.string());
    app.appParameters = TEXT("-v %f");
    unsetenv("QUVADA_NO_OPEN");
    const Outcome started = StartApp(app, "/tmp/x y.pdf");
    ASSERT_TRUE(started) << started.GetError().text;
    EXPECT_EQ(Read(record), "-v|/tmp/x y.pdf|");

    app.appPath = TEXT("C:\\none\\none.exe");
    EXPECT_FALSE(StartApp(app, "/tmp/x.pdf"));
    setenv("QUVADA_NO_OPEN", "1", 1);
    EXPECT_TRUE(StartApp(app, "/tmp/x.pdf"));
    unsetenv("QUVADA_NO_OPEN");
}

}  // namespace
}  // namespace converter
