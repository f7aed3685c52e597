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
using test_support::Exists;
using test_support::WriteWholeFile;

TEST(PathExists, FillsTheRecordOfWhatANameCanHold) {
    const test_support::TestProfile profile;
    const WideString file = profile.Path(TEXT("a.txt"));
    ASSERT_TRUE(WriteWholeFile(file, "hello"));
    ASSERT_TRUE(CreateDirectoryW(profile.Path(TEXT("dir")).c_str(), nullptr));
    const struct {
        WideString path;
        const WCHAR* name;  // null: there is no such thing
        bool isFolder;
    } kCases[] = {{file, TEXT("a.txt"), false},
                  {TEXT("\\\\?\\") + file, TEXT("a.txt"), false},
                  {profile.Path(TEXT("dir")), TEXT("dir"), true},
                  {profile.Path(TEXT("dir\\\\/\\")), TEXT("dir"), true},
                  {TEXT("c:"), TEXT("c"), true},
                  {TEXT("C:\\\\"), TEXT("C"), true},
                  {profile.Path(TEXT("none")), nullptr, false},
                  {file + TEXT("*"), nullptr, false},
                  {file + TEXT("\""), nullptr, false},
                  {file + TEXT(":b"), nullptr, false},
                  {file + TEXT("?\\"), nullptr, false},
                  {TEXT(""), nullptr, false},
                  {TEXT("\\\\/"), nullptr, false},
                  {TEXT("\\\\no.such.server\\share\\file"), nullptr, false}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(platform::ToUtf8(c.path));
        WIN32_FIND_DATAW found;
        ASSERT_EQ(PathExists(c.path.c_str(), &found), c.name != nullptr);
        EXPECT_EQ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0, c.isFolder);
        if (!c.name) continue;
        const WideString name = found.cFileName;
        EXPECT_EQ(name.size() == 1 ? found.cAlternateFileName : name, c.name);
        EXPECT_EQ(found.nFileSizeLow, c.isFolder ? found.nFileSizeLow : 5u);
    }
    EXPECT_FALSE(PathExists(nullptr));
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
        AUX::testing::AllocationWatch watch;
        watch.FailFrom(1);
        WString none;
        EXPECT_EQ(ToLongPathForm(c.path.c_str(), none), c.path.c_str());
        EXPECT_EQ(ToLongPathForm(nullptr, none), nullptr);
    }
}

TEST(FolderTree, IsMadeAndDeletedWithAllButDotNames) {
    const test_support::TestProfile profile;
    const WideString tree = profile.Path(TEXT("tree"));
    WideString deep = tree;
    while (deep.size() < 400) deep += TEXT("\\a folder with a name of some length");
    for (const WideString& path : {deep, deep, tree + TEXT("\\d\\e\\"), tree + TEXT("\\f\\\\g")}) {
        EXPECT_EQ(CreateDirectoryTree(path.c_str()), 0) << platform::ToUtf8(path);
        EXPECT_TRUE(PathExists(path.c_str())) << platform::ToUtf8(path);
    }
    const WideString file = tree + TEXT("\\d\\file");
    ASSERT_TRUE(WriteWholeFile(file, "x"));
    EXPECT_EQ(CreateDirectoryTree((file + TEXT("\\a")).c_str()),
              StatusFromSystemError(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(CreateDirectoryTree(nullptr), static_cast<Status>(0x83FF00A1));
    ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(WriteWholeFile(tree + TEXT("\\.keep"), "x"));
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_EQ(test_support::ListFolder(tree + TEXT("\\")), std::vector<WideString>{TEXT(".keep")});
    EXPECT_EQ(DeleteFileForced((tree + TEXT("\\.keep")).c_str()), 0u);
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), 0u);
    EXPECT_FALSE(Exists(tree));
    EXPECT_EQ(DeleteFolderTree(tree.c_str()), 0u);
    EXPECT_EQ(DeleteFolderTree(TEXT("")), 0u);
    EXPECT_EQ(DeleteFileForced(tree.c_str()), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

}  // namespace
