#include "foundation/paths.h"

#include <gtest/gtest.h>
#include <string>

#include "foundation/file_removal.h"
#include "foundation/memory_testing.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using platform::testing::InjectedFault;
using test_support::Exists;
using test_support::TestProfile;
using test_support::WriteWholeFile;

TEST(PathExists, RefusesWhatNoNameCanHold) {
    TestProfile profile;
    ASSERT_TRUE(WriteWholeFile(profile.Path(TEXT("a.txt")), "x"));
    const WideString file = profile.Path(TEXT("a.txt"));
    for (const WCHAR* bad :
         {TEXT("\""), TEXT("*"), TEXT("<"), TEXT(">"), TEXT("|"), TEXT(":b"), TEXT("?\\")}) {
        EXPECT_FALSE(PathExists((file + bad).c_str())) << platform::ToUtf8(bad);
    }
    EXPECT_FALSE(PathExists(nullptr));
    EXPECT_FALSE(PathExists(TEXT("")));
    EXPECT_FALSE(PathExists(TEXT("\\\\/")));
    EXPECT_FALSE(PathExists(TEXT("\\\\no.such.server\\share\\file")));
}

TEST(PathExists, FillsTheRecord) {
    TestProfile profile;
    ASSERT_TRUE(WriteWholeFile(profile.Path(TEXT("a.txt")), "hello"));
    ASSERT_TRUE(CreateDirectoryW(profile.Path(TEXT("dir")).c_str(), nullptr));
    WIN32_FIND_DATAW found;
    ASSERT_TRUE(PathExists(profile.Path(TEXT("a.txt")).c_str(), &found));
    EXPECT_EQ(found.nFileSizeLow, 5u);
    EXPECT_EQ(WideString(found.cFileName), TEXT("a.txt"));
    for (const WCHAR* name : {TEXT("dir"), TEXT("dir\\"), TEXT("dir\\\\/\\")}) {
        ASSERT_TRUE(PathExists(profile.Path(name).c_str(), &found)) << platform::ToUtf8(name);
        EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
        EXPECT_EQ(WideString(found.cFileName), TEXT("dir"));
    }
    for (const WCHAR* root : {TEXT("C:"), TEXT("c:\\"), TEXT("C:\\\\")}) {
        ASSERT_TRUE(PathExists(root, &found)) << platform::ToUtf8(root);
        EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
        EXPECT_EQ(WideString(found.cAlternateFileName), WideString(1, root[0]));
    }
    EXPECT_FALSE(PathExists(profile.Path(TEXT("none")).c_str(), &found));
    EXPECT_EQ(found.dwFileAttributes, 0u);
    EXPECT_TRUE(PathExists((TEXT("\\\\?\\") + profile.Path(TEXT("a.txt"))).c_str()));
}

TEST(ToLongPathForm, TakesLongPathsOnly) {
    const WideString tail(245, TEXT('x'));
    const struct {
        WideString path;
        WideString expected;
    } kCases[] = {
        {TEXT("C:") + tail, {}},  // 247 characters.
        {TEXT("C:\\") + tail, TEXT("\\\\?\\C:\\") + tail},
        {TEXT("\\\\s\\") + tail, TEXT("\\\\?\\UNC\\s\\") + tail},
        {TEXT("\\d\\") + tail, TEXT("\\\\?\\UNC\\d\\") + tail},
        {TEXT("C:/a/") + tail, TEXT("\\\\?\\C:\\a\\") + tail},
        {TEXT("\\\\?\\C:\\") + tail, {}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(platform::ToUtf8(c.path));
        WString scratch;
        const WCHAR* const form = ToLongPathForm(c.path.c_str(), scratch);
        EXPECT_EQ(WideString(form), c.expected.empty() ? c.path : c.expected);
        EXPECT_EQ(form, c.expected.empty() ? c.path.c_str() : scratch.Text());
        EXPECT_EQ(ToLongPathForm(form, scratch), form);
        AUX::testing::AllocationWatch watch;
        watch.FailFrom(1);
        WString none;
        EXPECT_EQ(ToLongPathForm(c.path.c_str(), none), c.path.c_str());
    }
    WString scratch;
    EXPECT_EQ(ToLongPathForm(nullptr, scratch), nullptr);
}

TEST(CreateDirectoryTree, MakesWhatIsMissing) {
    TestProfile profile;
    WideString deep = TEXT("deep");
    while (deep.size() < 400) deep += TEXT("\\a folder with a name of some length");
    for (const WideString& name : {WideString(TEXT("a\\b\\c")), WideString(TEXT("a\\b\\c")),
                                   WideString(TEXT("d\\e\\")), WideString(TEXT("f\\\\g")), deep}) {
        const WideString path = profile.Path(name);
        EXPECT_EQ(CreateDirectoryTree(path.c_str()), 0) << platform::ToUtf8(name);
        EXPECT_TRUE(PathExists(path.c_str())) << platform::ToUtf8(name);
    }
    EXPECT_EQ(DeleteFolderTree(profile.Path(TEXT("deep")).c_str()), 0u);
    EXPECT_FALSE(Exists(profile.Path(TEXT("deep"))));
}

TEST(CreateDirectoryTree, TellsTheFirstErrorThatCounts) {
    TestProfile profile;
    EXPECT_EQ(CreateDirectoryTree(nullptr), static_cast<Status>(0x83FF00A1));
    ASSERT_TRUE(WriteWholeFile(profile.Path(TEXT("file")), "x"));
    EXPECT_EQ(CreateDirectoryTree(profile.Path(TEXT("file\\a")).c_str()),
              StatusFromSystemError(ERROR_PATH_NOT_FOUND));
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_EQ(CreateDirectoryTree(profile.Path(TEXT("b")).c_str()), kStatusInsufficientMemory);
    watch.FailNone();
    if (!platform::testing::kOwnsTheSystem) return;
    InjectedFault full("CreateDirectoryW", 2, ERROR_DISK_FULL);
    EXPECT_EQ(CreateDirectoryTree(profile.Path(TEXT("c\\d")).c_str()),
              StatusFromSystemError(ERROR_DISK_FULL));
}

TEST(DeleteFolderTree, DeletesAllButDotNames) {
    TestProfile profile;
    const WideString tree = profile.Path(TEXT("tree"));
    ASSERT_EQ(CreateDirectoryTree((tree + TEXT("\\sub\\empty")).c_str()), 0);
    ASSERT_TRUE(WriteWholeFile(tree + TEXT("\\sub\\a.txt"), "x"));
    ASSERT_TRUE(SetFileAttributesW((tree + TEXT("\\sub\\a.txt")).c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), 0u);
    EXPECT_FALSE(Exists(tree));
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), 0u);
    EXPECT_EQ(DeleteFolderTree(TEXT("")), 0u);
    EXPECT_EQ(DeleteFileForced(tree.c_str()), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));

    ASSERT_EQ(CreateDirectoryTree(tree.c_str()), 0);
    ASSERT_TRUE(WriteWholeFile(tree + TEXT("\\.keep"), "x"));
    ASSERT_TRUE(WriteWholeFile(tree + TEXT("\\gone"), "x"));
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_TRUE(Exists(tree + TEXT("\\.keep")));
    EXPECT_FALSE(Exists(tree + TEXT("\\gone")));
}

TEST(DeleteFolderTree, EndsAtTheFirstError) {
    TestProfile profile;
    const WideString tree = profile.Path(TEXT("tree"));
    ASSERT_EQ(CreateDirectoryTree((tree + TEXT("\\sub")).c_str()), 0);
    ASSERT_TRUE(WriteWholeFile(tree + TEXT("\\sub\\a"), "x"));
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
    watch.FailNone();
    EXPECT_TRUE(Exists(tree + TEXT("\\sub\\a")));
    if (!platform::testing::kOwnsTheSystem) return;
    for (const char* call : {"DeleteFileW", "FindNextFileW", "RemoveDirectoryW"}) {
        SCOPED_TRACE(call);
        InjectedFault refused(call, 1, ERROR_WRITE_PROTECT);
        EXPECT_EQ(DeleteFolderTree(tree.c_str()), static_cast<DWORD>(ERROR_WRITE_PROTECT));
        EXPECT_TRUE(Exists(tree));
    }
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), 0u);
}

}  // namespace
