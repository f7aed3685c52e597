#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/sync.h"
#include "platform/testing.h"
#include "tests/platform/error_names.h"
#include "tests/support/case_table.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::ReadWholeFile;
using test_support::TestProfile;
using test_support::WriteWholeFile;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

class OpenFile : public ::testing::Test {
protected:
    static FileHandle Open(const WideString& path, DWORD access, DWORD share, DWORD disposition) {
        SetLastError(4711);
        return FileHandle(CreateFileW(path.c_str(), access, share, nullptr, disposition,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    TestProfile profile_;
};

TEST_F(OpenFile, FollowsTheDisposition) {
    struct Case {
        DWORD disposition;
        DWORD access;
        bool exists;
        DWORD error;          // also of a success
        const char* content;  // afterwards; null for no file
    };
    const Case kCases[] = {
        {CREATE_NEW, GENERIC_WRITE, false, 0, ""},
        {CREATE_NEW, GENERIC_WRITE, true, ERROR_FILE_EXISTS, "old"},
        {CREATE_ALWAYS, kReadWrite, false, 0, ""},
        {CREATE_ALWAYS, GENERIC_READ, true, ERROR_ALREADY_EXISTS, ""},
        {OPEN_EXISTING, kReadWrite, false, ERROR_FILE_NOT_FOUND, nullptr},
        {OPEN_EXISTING, kReadWrite, true, 0, "old"},
        {OPEN_ALWAYS, GENERIC_READ, false, 0, ""},
        {OPEN_ALWAYS, GENERIC_READ, true, ERROR_ALREADY_EXISTS, "old"},
        {TRUNCATE_EXISTING, GENERIC_WRITE, true, 0, ""},
        {TRUNCATE_EXISTING, GENERIC_WRITE, false, ERROR_FILE_NOT_FOUND, nullptr},
        {0, GENERIC_READ, true, ERROR_INVALID_PARAMETER, "old"},
        {6, GENERIC_READ, true, ERROR_INVALID_PARAMETER, "old"},
    };
    const WideString path = profile_.Path(TEXT("file.bin"));
    for (const Case& c : kCases) {
        SCOPED_TRACE(::testing::Message() << c.disposition << ' ' << c.exists);
        DeleteFileW(path.c_str());
        if (c.exists) {
            ASSERT_TRUE(WriteWholeFile(path, "old"));
        }
        {
            const FileHandle file = Open(path, c.access, FILE_SHARE_READ, c.disposition);
            const DWORD error = GetLastError();
            EXPECT_EQ(static_cast<bool>(file), c.error == 0 || c.error == ERROR_ALREADY_EXISTS);
            // OPEN_EXISTING may leave the code as it was.
            EXPECT_TRUE(error == c.error || (file && c.error == 0 && error == 4711)) << error;
        }
        EXPECT_EQ(test_support::Exists(path), c.content != nullptr);
        EXPECT_EQ(ReadWholeFile(path), c.content ? c.content : "");
    }
}

TEST_F(OpenFile, TellsWhyANameCannotBeOpened) {
    ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("file")), ""));
    ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("locked")), ""));
    ASSERT_TRUE(SetFileAttributesW(profile_.Path(TEXT("locked")).c_str(), FILE_ATTRIBUTE_READONLY));
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "file_paths.tsv", 4)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        if (!row[3].empty() && test_support::RunsUnderWine()) continue;
        WideString path = row[0];
        const std::size_t folder = path.find('~');
        if (folder != WideString::npos) path.replace(folder, 1, profile_.Folder());
        const DWORD error = ErrorNamed(row[2]);
        const DWORD access = row[1] == TEXT("write") ? GENERIC_WRITE : GENERIC_READ;
        EXPECT_EQ(static_cast<bool>(Open(path, access, kShareAll, OPEN_EXISTING)), error == 0);
        EXPECT_TRUE(!error || GetLastError() == error) << GetLastError();
    }
    // Windows' names are any 16-bit units.
    const WideString surrogate = profile_.Path(TEXT("x")) + WCHAR{0xD800};
    if (testing::kOwnsTheSystem) {
        EXPECT_FALSE(Open(surrogate, GENERIC_WRITE, 0, CREATE_NEW));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME);
    }
}

TEST_F(OpenFile, HoldsTheShareModesBetweenHandles) {
    struct Case {
        const char* why;
        DWORD firstAccess, firstShare, access, share;
        bool opens;
    };
    const Case kCases[] = {
        {"two readers", GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
        {"reader beside alone", GENERIC_READ, 0, GENERIC_READ, kShareAll, false},
        {"alone beside reader", GENERIC_READ, kShareAll, GENERIC_READ, 0, false},
        {"reader beside writer that allows it", GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ,
         kShareAll, true},
        {"reader that allows no writer", GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ,
         FILE_SHARE_READ, false},
        {"two writers, all allowed", kReadWrite, kShareAll, kReadWrite, kShareAll, true},
        {"second writer refused", kReadWrite, FILE_SHARE_READ, GENERIC_WRITE, kShareAll, false},
        {"only the writer allowed", GENERIC_READ, FILE_SHARE_WRITE, GENERIC_READ, kShareAll, false},
    };
    const WideString path = profile_.Path(TEXT("shared"));
    ASSERT_TRUE(WriteWholeFile(path, "x"));
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const FileHandle first = Open(path, c.firstAccess, c.firstShare, OPEN_EXISTING);
        ASSERT_TRUE(first);
        FileHandle second = Open(path, c.access, c.share, OPEN_EXISTING);
        EXPECT_EQ(static_cast<bool>(second), c.opens);
        if (!c.opens) {
            EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        }
    }
    // Emptying is a matter of the share mode too, and nothing is lost where it is refused.
    const FileHandle reader = Open(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_FALSE(Open(path, GENERIC_WRITE, kShareAll, CREATE_ALWAYS));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(ReadWholeFile(path), "x");
}

TEST_F(OpenFile, KeepsAnOpenFileFromBeingDeletedOrMoved) {
    const WideString path = profile_.Path(TEXT("held"));
    const WideString other = profile_.Path(TEXT("other"));
    ASSERT_TRUE(WriteWholeFile(path, "x"));
    {
        const FileHandle held =
            Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
        EXPECT_FALSE(DeleteFileW(path.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        EXPECT_FALSE(MoveFileExW(path.c_str(), other.c_str(), 0));
        EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        ASSERT_TRUE(WriteWholeFile(other, "y"));
        EXPECT_FALSE(MoveFileExW(other.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    }
    const FileHandle shared = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

TEST(Handles, AreCheckedAtEachUse) {
    const TestProfile profile;
    const WideString path = profile.Path(TEXT("f"));
    FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    ASSERT_TRUE(file);
    const HANDLE stale = file.Detach();
    EXPECT_TRUE(CloseHandle(stale));
    DWORD count = 7;
    EXPECT_FALSE(WriteFile(stale, "x", 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(stale));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    const KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(event);
    EXPECT_FALSE(WriteFile(event.Get(), "x", 1, &count, nullptr)) << "an event is no file";
    SetLastError(55);
    file.Reset();
    EXPECT_EQ(GetLastError(), 55u);
}

}  // namespace
}  // namespace platform
