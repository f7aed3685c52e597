#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

#include "platform/files.h"
#include "platform/shell.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::Exists;
using test_support::ReadWholeFile;
using test_support::TestProfile;
using test_support::WriteWholeFile;

class FileNames : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("a")), "A"));
        ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("b")), "B"));
        ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("locked")), "L"));
        ASSERT_TRUE(
            SetFileAttributesW(profile_.Path(TEXT("locked")).c_str(), FILE_ATTRIBUTE_READONLY));
        ASSERT_TRUE(CreateDirectoryW(profile_.Path(TEXT("dir")).c_str(), nullptr));
        ASSERT_TRUE(CreateDirectoryW(profile_.Path(TEXT("full")).c_str(), nullptr));
        ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("full\\x")), "X"));
    }
    TestProfile profile_;
};

TEST_F(FileNames, MoveAsTheFlagsAllow) {
    constexpr DWORD kRename =
        MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
    struct Case {
        const char* why;
        LPCWSTR from;
        LPCWSTR to;
        DWORD flags;
        DWORD error;
        bool alsoUnderWine = true;
    };
    const Case kCases[] = {
        {"absent", TEXT("none"), TEXT("x"), kRename, ERROR_FILE_NOT_FOUND},
        {"folder of the source absent", TEXT("none\\a"), TEXT("x"), kRename, ERROR_PATH_NOT_FOUND},
        {"folder of the target absent", TEXT("a"), TEXT("none\\a"), kRename, ERROR_PATH_NOT_FOUND},
        {"taken", TEXT("a"), TEXT("b"), 0, ERROR_ALREADY_EXISTS},
        {"target is a folder", TEXT("a"), TEXT("dir"), kRename, ERROR_ACCESS_DENIED},
        {"target is read-only", TEXT("a"), TEXT("locked"), kRename, ERROR_ACCESS_DENIED, false},
        {"bad name", TEXT("a"), TEXT("x<"), kRename, ERROR_INVALID_NAME},
        {"replaces", TEXT("a"), TEXT("b"), kRename, 0},
        {"a folder", TEXT("full"), TEXT("dir2"), 0, 0},
        {"onto itself", TEXT("b"), TEXT("b"), 0, 0},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        if (!c.alsoUnderWine && test_support::RunsUnderWine()) continue;
        const BOOL moved =
            MoveFileExW(profile_.Path(c.from).c_str(), profile_.Path(c.to).c_str(), c.flags);
        EXPECT_EQ(moved != FALSE, c.error == 0);
        if (c.error) {
            EXPECT_EQ(GetLastError(), c.error);
        }
    }
    EXPECT_FALSE(Exists(profile_.Path(TEXT("a"))));
    EXPECT_EQ(ReadWholeFile(profile_.Path(TEXT("b"))), "A");
    EXPECT_EQ(ReadWholeFile(profile_.Path(TEXT("dir2\\x"))), "X");
}

TEST_F(FileNames, GoWhenTheyMay) {
    EXPECT_FALSE(DeleteFileW(profile_.Path(TEXT("locked")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeleteFileW(profile_.Path(TEXT("dir")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeleteFileW(profile_.Path(TEXT("none")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileW(profile_.Path(TEXT("none\\a")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_TRUE(SetFileAttributesW(profile_.Path(TEXT("locked")).c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(DeleteFileW(profile_.Path(TEXT("locked")).c_str()));

    EXPECT_FALSE(RemoveDirectoryW(profile_.Path(TEXT("full")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
    EXPECT_FALSE(RemoveDirectoryW(profile_.Path(TEXT("a")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
    EXPECT_FALSE(RemoveDirectoryW(profile_.Path(TEXT("none")).c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(RemoveDirectoryW(profile_.Path(TEXT("dir")).c_str()));
    EXPECT_FALSE(Exists(profile_.Path(TEXT("dir"))));
}

TEST_F(FileNames, NewFoldersNeedAParentAndAFreeName) {
    EXPECT_FALSE(CreateDirectoryW(profile_.Path(TEXT("none\\x")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(CreateDirectoryW(profile_.Path(TEXT("dir")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(CreateDirectoryW(profile_.Path(TEXT("a")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_TRUE(CreateDirectoryW(profile_.Path(TEXT("with slash\\")).c_str(), nullptr));
    EXPECT_FALSE(CreateDirectoryW(TEXT("C:\\"), nullptr)) << "a root is there already";
    const DWORD error = GetLastError();
    EXPECT_TRUE(error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED) << error;
}

TEST_F(FileNames, TellTheirAttributes) {
    const auto attributes = [&](LPCWSTR name) {
        return GetFileAttributesW(profile_.Path(name).c_str());
    };
    EXPECT_FALSE(attributes(TEXT("a")) & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(attributes(TEXT("locked")) & FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(attributes(TEXT("dir")) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(attributes(TEXT("dir\\")) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(SetFileAttributesW(profile_.Path(TEXT("dir")).c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(attributes(TEXT("none")), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(attributes(TEXT("none\\x")), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_TRUE(PathFileExistsW(profile_.Path(TEXT("dir")).c_str()));
    EXPECT_TRUE(PathFileExistsW(profile_.Path(TEXT("a")).c_str()));
    EXPECT_FALSE(PathFileExistsW(profile_.Path(TEXT("none")).c_str()));
    EXPECT_FALSE(PathFileExistsW(TEXT("")));
    EXPECT_TRUE(PathFileExistsW(TEXT("C:\\")));
}

TEST_F(FileNames, AreFoundByPattern) {
    for (LPCWSTR name : {TEXT("page.html"), TEXT("page.htm"), TEXT("page2.html"), TEXT(".hidden"),
                         TEXT("plain")}) {
        ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("full\\")) + name, "12345"));
    }
    struct Case {
        LPCWSTR pattern;
        std::vector<std::string> names;
    };
    const Case kCases[] = {
        {TEXT("*.html"), {"page.html", "page2.html"}},
        {TEXT("pag?2.html"), {"page2.html"}},
        {TEXT("p*e*.htm*"), {"page.htm", "page.html", "page2.html"}},
        {TEXT("*.*"), {".", "..", ".hidden", "page.htm", "page.html", "page2.html", "plain", "x"}},
        {TEXT("*"), {".", "..", ".hidden", "page.htm", "page.html", "page2.html", "plain", "x"}},
        {TEXT("plain"), {"plain"}},
        {TEXT("*.pdf"), {}},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.pattern));
        WIN32_FIND_DATAW found{};
        std::set<std::string> names;
        const FindHandle search(
            FindFirstFileW((profile_.Path(TEXT("full\\")) + c.pattern).c_str(), &found));
        EXPECT_EQ(static_cast<bool>(search), !c.names.empty());
        if (!search) {
            EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
            continue;
        }
        do {
            names.insert(ToUtf8(found.cFileName));
        } while (FindNextFileW(search.Get(), &found));
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
        EXPECT_EQ(names, std::set<std::string>(c.names.begin(), c.names.end()));
    }
}

TEST_F(FileNames, FillTheFindRecordAndTellWhyNothingIsFound) {
    WIN32_FIND_DATAW found{};
    {
        const FindHandle search(FindFirstFileW(profile_.Path(TEXT("locked")).c_str(), &found));
        ASSERT_TRUE(search);
    }
    EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(found.nFileSizeLow, 1u);
    EXPECT_NE(found.ftLastWriteTime.dwHighDateTime, 0u);
    struct Case {
        LPCWSTR pattern;
        DWORD error;
    };
    const Case kCases[] = {{TEXT("none"), ERROR_FILE_NOT_FOUND},
                           {TEXT("none\\*"), ERROR_PATH_NOT_FOUND},
                           {TEXT("none\\x"), ERROR_PATH_NOT_FOUND},
                           {TEXT("dir\\"), ERROR_FILE_NOT_FOUND}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.pattern));
        const FindHandle search(FindFirstFileW(profile_.Path(c.pattern).c_str(), &found));
        EXPECT_FALSE(search);
        EXPECT_EQ(GetLastError(), c.error);
    }
    EXPECT_FALSE(FindClose(INVALID_HANDLE_VALUE));
}

TEST_F(FileNames, OfTemporaryFilesAreMadeAndFree) {
    WCHAR folder[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    ASSERT_GT(length, 3u);
    EXPECT_EQ(folder[length - 1], WCHAR{'\\'});
    EXPECT_EQ(folder[length], 0);
    EXPECT_EQ(GetTempPathW(length, folder), length + 1) << "no room for the terminator";
    EXPECT_EQ(GetTempPathW(length + 1, folder), length);

    WCHAR name[MAX_PATH];
    WCHAR second[MAX_PATH];
    const UINT number = GetTempFileNameW(folder, TEXT("tiox"), 0, name);
    EXPECT_NE(number, 0u);
    EXPECT_NE(GetTempFileNameW(folder, TEXT("tio"), 0, second), 0u);
    EXPECT_NE(WideString(name), WideString(second));
    const std::string start = ToUtf8(folder) + "tio";
    const std::string text = ToUtf8(name);
    ASSERT_EQ(text.substr(0, start.size()), start);
    char* end = nullptr;
    EXPECT_EQ(std::strtoul(text.c_str() + start.size(), &end, 16), number);
    EXPECT_STREQ(end, ".tmp");
    EXPECT_TRUE(Exists(name));
    EXPECT_EQ(GetTempFileNameW(folder, TEXT("q"), 0xAB, name), 0xABu);
    EXPECT_EQ(ToUtf8(name).substr(0, length + 1), ToUtf8(folder) + "q");
    EXPECT_FALSE(Exists(name)) << "with a number only the name is made";
    EXPECT_EQ(GetTempFileNameW(profile_.Path(TEXT("none")).c_str(), TEXT("q"), 0, name), 0u);
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
}

}  // namespace
}  // namespace platform
