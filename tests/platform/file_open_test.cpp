#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/sync.h"
#include "platform/testing.h"
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
        const char* why;
        DWORD disposition;
        DWORD access;
        bool exists;
        bool opens;
        DWORD error;
        const char* content;  // afterwards; null for no file
    };
    const Case kCases[] = {
        {"new, absent", CREATE_NEW, GENERIC_WRITE, false, true, 0, ""},
        {"new, there", CREATE_NEW, GENERIC_WRITE, true, false, ERROR_FILE_EXISTS, "old"},
        {"always, absent", CREATE_ALWAYS, kReadWrite, false, true, 0, ""},
        {"always, there", CREATE_ALWAYS, kReadWrite, true, true, ERROR_ALREADY_EXISTS, ""},
        {"always, there, to read", CREATE_ALWAYS, GENERIC_READ, true, true, ERROR_ALREADY_EXISTS,
         ""},
        {"existing, absent", OPEN_EXISTING, kReadWrite, false, false, ERROR_FILE_NOT_FOUND,
         nullptr},
        {"existing, there", OPEN_EXISTING, kReadWrite, true, true, 0, "old"},
        {"open always, absent", OPEN_ALWAYS, GENERIC_READ, false, true, 0, ""},
        {"open always, there", OPEN_ALWAYS, GENERIC_READ, true, true, ERROR_ALREADY_EXISTS, "old"},
        {"truncate, there", TRUNCATE_EXISTING, GENERIC_WRITE, true, true, 0, ""},
        {"truncate, absent", TRUNCATE_EXISTING, GENERIC_WRITE, false, false, ERROR_FILE_NOT_FOUND,
         nullptr},
        {"none", 0, GENERIC_READ, true, false, ERROR_INVALID_PARAMETER, "old"},
        {"six", 6, GENERIC_READ, true, false, ERROR_INVALID_PARAMETER, "old"},
    };
    const WideString path = profile_.Path(TEXT("file.bin"));
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        DeleteFileW(path.c_str());
        if (c.exists) {
            ASSERT_TRUE(WriteWholeFile(path, "old"));
        }
        {
            const FileHandle file = Open(path, c.access, FILE_SHARE_READ, c.disposition);
            const DWORD error = GetLastError();
            EXPECT_EQ(static_cast<bool>(file), c.opens);
            const bool noCode =
                c.opens && c.error == 0 && error == 4711;  // OPEN_EXISTING may leave it
            EXPECT_TRUE(error == c.error || noCode) << error;
        }
        EXPECT_EQ(test_support::Exists(path), c.content != nullptr);
        EXPECT_EQ(ReadWholeFile(path), c.content ? c.content : "");
    }
}

TEST_F(OpenFile, TellsWhyANameCannotBeOpened) {
    const WideString file = profile_.Path(TEXT("file"));
    ASSERT_TRUE(WriteWholeFile(file, ""));
    ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("locked")), ""));
    ASSERT_TRUE(SetFileAttributesW(profile_.Path(TEXT("locked")).c_str(), FILE_ATTRIBUTE_READONLY));
    struct Case {
        const char* why;
        WideString path;
        DWORD access;
        DWORD error;
        bool alsoUnderWine = true;
    };
    const Case kCases[] = {
        {"absent", profile_.Path(TEXT("none")), GENERIC_READ, ERROR_FILE_NOT_FOUND},
        {"folder absent", profile_.Path(TEXT("none\\none")), GENERIC_READ, ERROR_PATH_NOT_FOUND},
        {"file as a folder", file + TEXT("\\x"), GENERIC_READ, ERROR_PATH_NOT_FOUND},
        {"a folder", profile_.Folder().substr(0, profile_.Folder().size() - 1), GENERIC_READ,
         ERROR_ACCESS_DENIED},
        {"empty", TEXT(""), GENERIC_READ, ERROR_PATH_NOT_FOUND},
        {"less-than", profile_.Path(TEXT("a<b")), GENERIC_READ, ERROR_INVALID_NAME},
        {"star", profile_.Path(TEXT("a*b")), GENERIC_READ, ERROR_INVALID_NAME},
        {"question mark", profile_.Path(TEXT("a?b")), GENERIC_READ, ERROR_INVALID_NAME},
        {"quote", profile_.Path(TEXT("a\"b")), GENERIC_READ, ERROR_INVALID_NAME},
        {"bar", profile_.Path(TEXT("a|b")), GENERIC_READ, ERROR_INVALID_NAME},
        {"control character", profile_.Path(TEXT("a\x01") TEXT("b")), GENERIC_READ,
         ERROR_INVALID_NAME},
        {"no such drive", TEXT("Q:\\a"), GENERIC_READ, ERROR_PATH_NOT_FOUND, false},
        {"read-only, to write", profile_.Path(TEXT("locked")), GENERIC_WRITE, ERROR_ACCESS_DENIED,
         false},
        {"read-only, to read", profile_.Path(TEXT("locked")), GENERIC_READ, 0},
        {"long form", TEXT("\\\\?\\") + file, GENERIC_READ, 0},
        {"dots in the way", profile_.Path(TEXT(".\\temp\\..\\file")), GENERIC_READ, 0},
        {"slashes", profile_.Path(TEXT("temp/../file")), GENERIC_READ, 0},
        {"full stop at the end", file + TEXT("."), GENERIC_READ, 0},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        if (!c.alsoUnderWine && test_support::RunsUnderWine()) continue;
        const FileHandle opened = Open(c.path, c.access, kShareAll, OPEN_EXISTING);
        EXPECT_EQ(static_cast<bool>(opened), c.error == 0);
        if (c.error) {
            EXPECT_EQ(GetLastError(), c.error);
        }
    }
}

TEST_F(OpenFile, RefusesALoneSurrogate) {
    if (!testing::kOwnsTheSystem) GTEST_SKIP() << "Windows' names are any 16-bit units";
    WideString path = profile_.Path(TEXT("x"));
    for (const WCHAR unit : {WCHAR{0xD800}, WCHAR{0xDC00}}) {
        path.back() = unit;
        EXPECT_FALSE(Open(path, GENERIC_WRITE, 0, CREATE_NEW));
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
