#include "platform/posix/paths.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/files.h"
#include "platform/posix/profile.h"
#include "platform/shell.h"
#include "platform/testing.h"
#include "tests/platform/error_names.h"
#include "tests/support/case_table.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::TestProfile;

TEST(HostPath, FollowsFromTheWindowsPath) {
    const TestProfile profile;
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "host_paths.tsv", 3)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        std::string expected = ToUtf8(row[1]);
        if (expected.starts_with("drive")) expected.replace(0, 5, DriveFolder());
        std::string host;
        EXPECT_EQ(ToHostPath(row[0].c_str(), host), ErrorNamed(row[2]));
        EXPECT_EQ(host, expected);
    }
    std::string host;
    EXPECT_EQ(ToHostPath(nullptr, host), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(ToHostPath((TEXT("Z:\\") + WideString(32767, 'a')).c_str(), host),
              ERROR_FILENAME_EXCED_RANGE);
}

TEST(HostPath, StartsARelativeOneAtTheCurrentFolder) {
    const TestProfile profile;
    const std::filesystem::path before = std::filesystem::current_path();
    const std::string drive = DriveFolder();
    std::filesystem::create_directory(drive + "/sub");
    struct Case {
        std::string folder;
        const WCHAR* path;
        std::string host;
    };
    const Case kCases[] = {{"/usr", TEXT("..\\a"), "/a"},
                           {"/usr", TEXT("\\a"), "/a"},
                           {"/usr", TEXT("Z:a"), "/usr/a"},
                           {drive + "/sub", TEXT("a"), drive + "/sub/a"},
                           {drive + "/sub", TEXT("\\a"), drive + "/a"},
                           {drive + "/sub", TEXT("Z:a"), "/a"}};
    for (const Case& c : kCases) {
        std::filesystem::current_path(c.folder);
        std::string host;
        EXPECT_EQ(ToHostPath(c.path, host), 0u);
        EXPECT_EQ(host, c.host);
    }
    std::filesystem::current_path(before);
}

TEST(WindowsPath, FollowsFromTheHostsPathWhereItCan) {
    const TestProfile profile;
    struct Case {
        std::string host;
        const char* path;  // null where no path names it
    };
    const Case kCases[] = {
        {"/", "Z:\\"},           {"/tmp//a b/", "Z:\\tmp\\a b"},
        {DriveFolder(), "C:\\"}, {DriveFolder() + "/x/y", "C:\\x\\y"},
        {"/tmp/a:b", nullptr},   {"/tmp/a\\b", nullptr},
        {"/tmp/\xFF", nullptr},  {"/tmp/\xED\xA0\x80", nullptr},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.host);
        WideString path;
        EXPECT_EQ(ToWindowsPath(c.host, path), c.path != nullptr);
        EXPECT_TRUE(!c.path || ToUtf8(path) == c.path) << ToUtf8(path);
    }
    WideString beside;
    EXPECT_TRUE(ToWindowsPath(DriveFolder() + "x", beside));
    EXPECT_TRUE(beside.starts_with(TEXT("Z:\\")));
}

TEST(Links, AreRemovedAndNotFollowed) {
    const TestProfile profile;
    std::string host;
    ASSERT_EQ(ToHostPath(profile.Folder().c_str(), host), 0u);
    std::filesystem::create_directory(host + "target");
    std::ofstream(host + "target/kept") << "x";
    std::filesystem::create_directory_symlink(host + "target", host + "link");
    std::filesystem::create_symlink(host + "nowhere", host + "dangling");
    const DWORD attributes = GetFileAttributesW(profile.Path(TEXT("link")).c_str());
    EXPECT_TRUE(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(RemoveDirectoryW(profile.Path(TEXT("link")).c_str()));
    EXPECT_TRUE(DeleteFileW(profile.Path(TEXT("dangling")).c_str()));
    EXPECT_TRUE(std::filesystem::exists(host + "target/kept"));
    EXPECT_FALSE(std::filesystem::is_symlink(host + "link"));
}

TEST(MoveBetweenDevices, CopiesInOneStepOrLeavesAllAsItWas) {
    const std::string memory = "/dev/shm/quvada-move-" + std::to_string(getpid());
    const TestProfile profile;
    std::ofstream(memory) << "new";
    WideString from;
    ASSERT_TRUE(ToWindowsPath(memory, from));
    std::string host;
    ASSERT_EQ(ToHostPath(profile.Folder().c_str(), host), 0u);
    struct stat here {};
    struct stat there {};
    ASSERT_EQ(stat(host.c_str(), &here), 0);
    ASSERT_EQ(stat(memory.c_str(), &there), 0);
    if (here.st_dev == there.st_dev) {
        std::filesystem::remove(memory);
        GTEST_SKIP() << "both folders lie on one device";
    }
    const WideString to = profile.Path(TEXT("to"));
    ASSERT_TRUE(test_support::WriteWholeFile(to, "old"));
    EXPECT_FALSE(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SAME_DEVICE);
    EXPECT_FALSE(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_COPY_ALLOWED));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(test_support::ReadWholeFile(to), "old");
    EXPECT_TRUE(std::filesystem::exists(memory));
    EXPECT_TRUE(
        MoveFileExW(from.c_str(), to.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH));
    EXPECT_EQ(test_support::ReadWholeFile(to), "new");
    EXPECT_FALSE(std::filesystem::exists(memory));
    EXPECT_EQ(test_support::ListFolder(profile.Folder()).size(), 3u) << "no copy is left";
}

TEST(StartedPrograms, LeaveNoZombie) {
    EXPECT_GT(reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, nullptr, TEXT("Z:\\bin\\false"),
                                                      nullptr, nullptr, SW_SHOW)),
              32);
    DWORD exitCode = 0;
    EXPECT_EQ(testing::WaitForStartedPrograms(60000, &exitCode), testing::Programs::Ended);
    EXPECT_EQ(exitCode, 1u);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace platform
