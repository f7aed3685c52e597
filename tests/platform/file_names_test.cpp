#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

#include "platform/files.h"
#include "platform/shell.h"
#include "platform/testing.h"
#include "tests/platform/error_names.h"
#include "tests/support/case_table.h"
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

bool Call(const WideString& call, const WideString& name, const WideString& second) {
    constexpr DWORD kReplace =
        MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
    if (call == TEXT("move")) return MoveFileExW(name.c_str(), second.c_str(), kReplace);
    if (call == TEXT("keep")) return MoveFileExW(name.c_str(), second.c_str(), 0);
    if (call == TEXT("make")) return CreateDirectoryW(name.c_str(), nullptr);
    if (call == TEXT("delete")) return DeleteFileW(name.c_str());
    if (call == TEXT("remove")) return RemoveDirectoryW(name.c_str());
    if (call == TEXT("unlock")) return SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (call == TEXT("ask")) return GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
    WIN32_FIND_DATAW found{};
    return static_cast<bool>(FindHandle(FindFirstFileW(name.c_str(), &found)));
}

TEST_F(FileNames, DoWhatTheyMayAndTellWhatTheyMayNot) {
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "file_calls.tsv", 5)) {
        if (!row[4].empty() && test_support::RunsUnderWine()) continue;
        const DWORD error = ErrorNamed(row[3]);
        const bool done = Call(row[0], profile_.Path(row[1]), profile_.Path(row[2]));
        const DWORD last = GetLastError();
        const std::string why = ToUtf8(row[0]) + ' ' + ToUtf8(row[1]) + ' ' + ToUtf8(row[2]);
        EXPECT_EQ(done, error == 0) << why;
        EXPECT_TRUE(done || last == error) << why << ": " << last;
    }
    EXPECT_EQ(ReadWholeFile(profile_.Path(TEXT("b"))), "A");
    EXPECT_FALSE(CreateDirectoryW(TEXT("C:\\"), nullptr)) << "a root is there already";
}

TEST_F(FileNames, TellWhatTheyAre) {
    const auto attributes = [&](LPCWSTR name) {
        return GetFileAttributesW(profile_.Path(name).c_str());
    };
    EXPECT_FALSE(attributes(TEXT("a")) & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(attributes(TEXT("dir")) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(PathFileExistsW(profile_.Path(TEXT("dir")).c_str()));
    EXPECT_FALSE(PathFileExistsW(profile_.Path(TEXT("none")).c_str()));
    EXPECT_FALSE(PathFileExistsW(TEXT("")));
    EXPECT_TRUE(PathFileExistsW(TEXT("C:\\")));
    WIN32_FIND_DATAW found{};
    ASSERT_TRUE(FindHandle(FindFirstFileW(profile_.Path(TEXT("locked")).c_str(), &found)));
    EXPECT_TRUE(found.dwFileAttributes & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(found.nFileSizeLow, 1u);
    EXPECT_NE(found.ftLastWriteTime.dwHighDateTime, 0u);
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
