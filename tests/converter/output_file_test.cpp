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
#include "tests/support/case_table.h"
#include "tests/support/scratch_folder.h"

namespace converter {
namespace {

namespace fs = std::filesystem;
using test_support::ReadHostFile;

class OutputFileTest : public testing::Test {
protected:
    std::ptrdiff_t CountFiles() const {
        return std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator());
    }

    test_support::ScratchFolder folder_;
};

TEST_F(OutputFileTest, ReplacesInOneStepAndKeepsWhatItReplacesOtherwise) {
    const fs::path path = folder_ / "a b.pdf";
    ASSERT_TRUE(WriteOutputFile(path, "first", nullptr));
    EXPECT_EQ(ReadHostFile(path), "first");
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(path, folder_ / "link.pdf");
    ASSERT_TRUE(WriteOutputFile(folder_ / "link.pdf", "second", nullptr));
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.pdf"));
    EXPECT_EQ(ReadHostFile(path), "second");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    const std::atomic<bool> cancel = true;
    EXPECT_FALSE(WriteOutputFile(path, "third", &cancel));
    EXPECT_FALSE(WriteOutputFile(folder_.Path(), "third", nullptr));
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_FALSE(WriteOutputFile(path, "third", nullptr)) << "write-protected";
    EXPECT_FALSE(WriteOutputFile(folder_ / "none/a.pdf", "third", nullptr));
    EXPECT_EQ(ReadHostFile(path), "second");
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
    EXPECT_EQ(ReadHostFile(path), "kept");
    EXPECT_EQ(CountFiles(), 1);
}

TEST(FileName, ComesFromAnyTitle) {
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "file_names.tsv", 2)) {
        EXPECT_EQ(platform::ToUtf8(FileNameOf(row[0])), platform::ToUtf8(row[1]));
    }
    EXPECT_EQ(FileNameOf(platform::WideString(500, WCHAR{'x'})).size(), 80u);
}

TEST(AppArguments, PutThePathInWithoutSplittingIt) {
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "arguments.tsv", 2)) {
        std::string made;
        for (const std::string& argument : MakeArguments(platform::ToUtf8(row[0]), "/a b.pdf")) {
            made += argument + '|';
        }
        EXPECT_EQ(made, platform::ToUtf8(row[1]));
    }
    EXPECT_EQ(MakeArguments("%f", "/%f"), std::vector<std::string>{"/%f"})
        << "a path is not looked through again";
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
    EXPECT_EQ(ReadHostFile(record), "-v|/tmp/x y.pdf|");

    app.appPath = TEXT("C:\\none\\none.exe");
    EXPECT_FALSE(StartApp(app, "/tmp/x.pdf"));
    setenv("QUVADA_NO_OPEN", "1", 1);
    EXPECT_TRUE(StartApp(app, "/tmp/x.pdf"));
    unsetenv("QUVADA_NO_OPEN");
}

}  // namespace
}  // namespace converter
