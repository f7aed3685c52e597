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
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::TestProfile;

TEST(HostPath, FollowsFromTheWindowsPath) {
    const TestProfile profile;
    const std::string drive = DriveFolder();
    struct Case {
        const char* path;
        std::string host;  // empty for a failure
        DWORD error;
    };
    const Case kCases[] = {
        {"Z:\\", "/", 0},
        {"z:/tmp/a b", "/tmp/a b", 0},
        {"Z:\\tmp\\..\\..\\etc", "/etc", 0},
        {"C:\\", drive, 0},
        {"c:\\x\\y.txt", drive + "/x/y.txt", 0},
        {"C:\\..\\..\\x", drive + "/x", 0},
        {"C:\\a\\.\\b\\\\c", drive + "/a/b/c", 0},
        {"C:\\a. . ", drive + "/a", 0},
        {"C:\\a.\\b", drive + "/a/b", 0},
        {"\\\\?\\C:\\a", drive + "/a", 0},
        {"\\\\?\\Z:\\tmp\\a.", "/tmp/a.", 0},
        {"\\\\?\\Z:\\tmp\\..\\a", "", ERROR_INVALID_NAME},
        {"\\\\?\\Z:\\tmp/a", "", ERROR_INVALID_NAME},
        {"\\\\?\\UNC\\server\\share", "", ERROR_BAD_NETPATH},
        {"\\\\server\\share", "", ERROR_BAD_NETPATH},
        {"\\\\.\\pipe\\x", "", ERROR_FILE_NOT_FOUND},
        {"D:\\a", "", ERROR_PATH_NOT_FOUND},
        {"C:\\a:b", "", ERROR_INVALID_NAME},
        {"C:\\a\x1F", "", ERROR_INVALID_NAME},
        {"", "", ERROR_PATH_NOT_FOUND},
        {"Z:\\\xC3\xA9\xF0\x9F\x98\x80", "/\xC3\xA9\xF0\x9F\x98\x80", 0},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.path);
        std::string host;
        EXPECT_EQ(ToHostPath(FromUtf8(c.path).c_str(), host), c.error);
        EXPECT_EQ(host, c.host);
    }
    std::string host;
    EXPECT_EQ(ToHostPath(nullptr, host), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(ToHostPath((TEXT("Z:\\") + WideString(32767, 'a')).c_str(), host),
              ERROR_FILENAME_EXCED_RANGE);
}

TEST(HostPath, StartsARelativeOneAtTheCurrentFolder) {
    const TestProfile profile;
    const std::filesystem::path before = std::filesystem::current_path();
    std::string host;
    std::filesystem::current_path("/usr");
    EXPECT_EQ(ToHostPath(TEXT("..\\a"), host), 0u);
    EXPECT_EQ(host, "/a");
    EXPECT_EQ(ToHostPath(TEXT("\\a"), host), 0u);
    EXPECT_EQ(host, "/a");
    EXPECT_EQ(ToHostPath(TEXT("Z:a"), host), 0u);
    EXPECT_EQ(host, "/usr/a");
    const std::string drive = DriveFolder();
    std::filesystem::create_directory(drive + "/sub");
    std::filesystem::current_path(drive + "/sub");
    EXPECT_EQ(ToHostPath(TEXT("a"), host), 0u);
    EXPECT_EQ(host, drive + "/sub/a");
    EXPECT_EQ(ToHostPath(TEXT("\\a"), host), 0u);
    EXPECT_EQ(host, drive + "/a");
    EXPECT_EQ(ToHostPath(TEXT("Z:a"), host), 0u);
    EXPECT_EQ(host, "/a");
    std::filesystem::current_path(before);
}

TEST(WindowsPath, FollowsFromTheHostsPathWhereItCan) {
    const TestProfile profile;
    struct Case {
        std::string host;
        const char* path;  // null where no path names it
    };
    const Case kCases[] = {
        {"/", "Z:\\"},
        {"/tmp//a b/", "Z:\\tmp\\a b"},
        {DriveFolder(), "C:\\"},
        {DriveFolder() + "/x/y", "C:\\x\\y"},
        {DriveFolder() + "x", nullptr},
        {"/tmp/a:b", nullptr},
        {"/tmp/a\\b", nullptr},
        {"/tmp/\xFF", nullptr},
        {"/tmp/\xED\xA0\x80", nullptr},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.host);
        WideString path;
        const bool isBesideTheDrive = c.host == DriveFolder() + "x";
        EXPECT_EQ(ToWindowsPath(c.host, path), c.path || isBesideTheDrive);
        if (c.path) {
            EXPECT_EQ(ToUtf8(path), c.path);
        }
        if (isBesideTheDrive) {
            EXPECT_TRUE(path.starts_with(TEXT("Z:\\")));
        }
    }
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
