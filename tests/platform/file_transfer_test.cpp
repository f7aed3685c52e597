#include <gtest/gtest.h>
#include <string>

#include "platform/files.h"
#include "platform/sync.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::ReadWholeFile;
using test_support::TestProfile;
using test_support::WriteWholeFile;

OVERLAPPED At(ULONGLONG offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

LARGE_INTEGER Large(LONGLONG value) {
    LARGE_INTEGER large;
    large.QuadPart = value;
    return large;
}

class FileTransfer : public ::testing::Test {
protected:
    FileHandle Open(DWORD access, DWORD flags = FILE_ATTRIBUTE_NORMAL) {
        return FileHandle(CreateFileW(path_.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_ALWAYS, flags, nullptr));
    }
    static LONGLONG Position(const FileHandle& file) {
        LARGE_INTEGER place = Large(-1);
        EXPECT_TRUE(SetFilePointerEx(file.Get(), Large(0), &place, FILE_CURRENT));
        return place.QuadPart;
    }

    TestProfile profile_;
    const WideString path_ = profile_.Path(TEXT("file"));
    char buffer_[16] = {};
    DWORD count_ = 99;
};

TEST_F(FileTransfer, MovesTheFilePointer) {
    const FileHandle file = Open(GENERIC_READ | GENERIC_WRITE);
    EXPECT_TRUE(WriteFile(file.Get(), "0123456789", 10, &count_, nullptr));
    EXPECT_EQ(count_, 10u);
    EXPECT_EQ(Position(file), 10);
    EXPECT_TRUE(SetFilePointerEx(file.Get(), Large(-3), nullptr, FILE_END));
    EXPECT_TRUE(ReadFile(file.Get(), buffer_, sizeof buffer_, &count_, nullptr));
    EXPECT_EQ(std::string(buffer_, count_), "789");
    EXPECT_TRUE(ReadFile(file.Get(), buffer_, 1, &count_, nullptr)) << "the end is no error here";
    EXPECT_EQ(count_, 0u);
    EXPECT_FALSE(SetFilePointerEx(file.Get(), Large(-1), nullptr, FILE_BEGIN));
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(Position(file), 10);
    EXPECT_TRUE(SetFilePointerEx(file.Get(), Large(4), nullptr, FILE_BEGIN));
    EXPECT_TRUE(SetEndOfFile(file.Get()));
    EXPECT_EQ(ReadWholeFile(path_), "0123");
    EXPECT_TRUE(SetFilePointerEx(file.Get(), Large(6), nullptr, FILE_BEGIN));
    EXPECT_TRUE(SetEndOfFile(file.Get()));
    EXPECT_TRUE(FlushFileBuffers(file.Get()));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(file.Get(), &size));
    EXPECT_EQ(size.QuadPart, 6);
    EXPECT_EQ(ReadWholeFile(path_), std::string("0123\0\0", 6));
}

TEST_F(FileTransfer, GoesToThePlaceOfTheOverlapped) {
    for (const DWORD flags : {FILE_ATTRIBUTE_NORMAL, FILE_FLAG_OVERLAPPED}) {
        ASSERT_TRUE(WriteWholeFile(path_, "0123456789"));
        SCOPED_TRACE(flags);
        const FileHandle file = Open(GENERIC_READ | GENERIC_WRITE, flags);
        const KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const auto transfer = [&](BOOL done, OVERLAPPED& place) {
            if (!done && GetLastError() == ERROR_IO_PENDING) count_ = 0;
            return GetOverlappedResult(file.Get(), &place, &count_, TRUE);
        };
        // What is left before the end comes without an error.
        for (const auto& [offset, text] : {std::pair{2u, "234"}, {8u, "89"}}) {
            OVERLAPPED place = At(offset);
            place.hEvent = event.Get();
            const DWORD size = offset == 2 ? 3 : 9;
            EXPECT_TRUE(transfer(ReadFile(file.Get(), buffer_, size, &count_, &place), place));
            EXPECT_EQ(std::string(buffer_, count_), text);
            EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_OBJECT_0);
        }
        OVERLAPPED place = At(10);
        EXPECT_FALSE(transfer(ReadFile(file.Get(), buffer_, 9, &count_, &place), place));
        EXPECT_EQ(GetLastError(), ERROR_HANDLE_EOF);
        EXPECT_EQ(count_, 0u);
        place = At(4);
        EXPECT_TRUE(transfer(WriteFile(file.Get(), "xy", 2, &count_, &place), place));
        EXPECT_EQ(count_, 2u);
        EXPECT_EQ(ReadWholeFile(path_), "0123xy6789");
        if (flags == FILE_ATTRIBUTE_NORMAL) {
            EXPECT_EQ(Position(file), 6) << "the file pointer follows";
        }
    }
}

TEST_F(FileTransfer, GoesBeyondFourGigabytes) {
    constexpr ULONGLONG kFar = 0x1'2345'6789;
    const FileHandle file = Open(GENERIC_READ | GENERIC_WRITE);
    OVERLAPPED place = At(kFar);
    EXPECT_TRUE(WriteFile(file.Get(), "z", 1, &count_, &place));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(file.Get(), &size));
    EXPECT_EQ(size.QuadPart, static_cast<LONGLONG>(kFar + 1));
    place = At(kFar);
    EXPECT_TRUE(ReadFile(file.Get(), buffer_, 1, &count_, &place));
    EXPECT_EQ(buffer_[0], 'z');
}

TEST_F(FileTransfer, NeedsTheAccessThatTheHandleWasOpenedWith) {
    ASSERT_TRUE(WriteWholeFile(path_, "abc"));
    const FileHandle reader = Open(GENERIC_READ);
    EXPECT_FALSE(WriteFile(reader.Get(), "x", 1, &count_, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(count_, 0u);
    EXPECT_FALSE(SetEndOfFile(reader.Get()));
    const FileHandle writer = Open(GENERIC_WRITE);
    EXPECT_FALSE(ReadFile(writer.Get(), buffer_, 1, &count_, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadWholeFile(path_), "abc");
}

TEST_F(FileTransfer, TellsTwoFilesApartByTheirIdentity) {
    ASSERT_TRUE(WriteWholeFile(path_, "abc"));
    ASSERT_TRUE(WriteWholeFile(profile_.Path(TEXT("other")), "abc"));
    const auto identity = [](const FileHandle& file) {
        FILE_ID_INFO id{};
        EXPECT_TRUE(GetFileInformationByHandleEx(file.Get(), FileIdInfo, &id, sizeof id));
        return std::string(reinterpret_cast<const char*>(&id), sizeof id);
    };
    const FileHandle first = Open(GENERIC_READ);
    const FileHandle again = Open(GENERIC_READ);
    const FileHandle other(CreateFileW(profile_.Path(TEXT("other")).c_str(), GENERIC_READ, 0,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(identity(first), identity(again));
    EXPECT_NE(identity(first), identity(other));
    BYTE small[8];
    EXPECT_FALSE(GetFileInformationByHandleEx(first.Get(), FileIdInfo, small, sizeof small));
}

TEST_F(FileTransfer, ReportsAFaultOnceAndOnlyThere) {
    if (!testing::kOwnsTheSystem) GTEST_SKIP() << "no faults to inject";
    const FileHandle file = Open(GENERIC_WRITE);
    const testing::InjectedFault fault("WriteFile", 2, ERROR_DISK_FULL);
    EXPECT_TRUE(WriteFile(file.Get(), "a", 1, &count_, nullptr));
    EXPECT_FALSE(fault.HasFired());
    EXPECT_FALSE(WriteFile(file.Get(), "b", 1, &count_, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(count_, 0u);
    EXPECT_TRUE(fault.HasFired());
    EXPECT_TRUE(WriteFile(file.Get(), "c", 1, &count_, nullptr));
    EXPECT_EQ(ReadWholeFile(path_), "ac");
}

}  // namespace
}  // namespace platform
