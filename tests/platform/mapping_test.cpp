#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/guarded_copy.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

constexpr std::size_t kPage = 4096;

MappingHandle Create(const WideString& name, DWORD size) {
    return MappingHandle(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name.c_str()));
}

MappingHandle Open(const WideString& name, DWORD access = FILE_MAP_WRITE) {
    return MappingHandle(OpenFileMappingW(access, FALSE, name.c_str()));
}

MappedView Map(const MappingHandle& mapping, SIZE_T size, DWORD access = FILE_MAP_WRITE) {
    return MappedView(MapViewOfFile(mapping.Get(), access, 0, 0, size));
}

bool IsFilledWith(const MappedView& view, std::size_t size, unsigned char byte) {
    const auto* const bytes = static_cast<const unsigned char*>(view.Get());
    return std::all_of(bytes, bytes + size, [byte](unsigned char b) { return b == byte; });
}

int RunSecondProcess(const std::string& job, const WideString& name, std::size_t size) {
    const std::string command =
        std::string(SECOND_PROCESS) + ' ' + job + ' ' + ToUtf8(name) + ' ' + std::to_string(size);
    return std::system(command.c_str());
}

/// A name that no other test of this program uses: under Wine all of them meet.
class MappingTest : public ::testing::Test {
protected:
    const test_support::TestProfile profile_;
    const WideString name_ = FromUtf8(
        std::string("QVD:test:") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(MappingTest, ASecondMakerGetsTheSameMemoryInItsSize) {
    const MappingHandle first = Create(name_, 2 * kPage + 1);  // three pages
    ASSERT_TRUE(first);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    const MappedView view = Map(first, 0);
    ASSERT_TRUE(view);
    EXPECT_TRUE(IsFilledWith(view, 3 * kPage, 0));
    static_cast<char*>(view.Get())[3 * kPage - 1] = 'x';

    const MappingHandle second = Create(name_, 100 * kPage);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    const MappedView other = Map(second, 3 * kPage);
    ASSERT_TRUE(other);
    EXPECT_EQ(static_cast<char*>(other.Get())[3 * kPage - 1], 'x');
    EXPECT_FALSE(Map(second, 3 * kPage + 1));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));

    const MappingHandle opened = Open(TEXT("Local\\") + name_, FILE_MAP_READ);
    EXPECT_FALSE(Map(opened, 0, FILE_MAP_WRITE));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    const MappedView read = Map(opened, 0, FILE_MAP_READ);
    ASSERT_TRUE(read);
    EXPECT_EQ(static_cast<char*>(read.Get())[3 * kPage - 1], 'x');
}

TEST_F(MappingTest, TheNameEndsWithTheLastHandle) {
    MappingHandle mapping = Create(name_, 10);
    const MappedView view = Map(mapping, 10);
    static_cast<char*>(view.Get())[0] = 'v';
    mapping.Reset();
    EXPECT_FALSE(Open(name_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    mapping = Create(name_, 10);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_TRUE(IsFilledWith(Map(mapping, 10), 10, 0));
    EXPECT_EQ(*static_cast<char*>(view.Get()), 'v');
}

TEST_F(MappingTest, ChecksNames) {
    const struct {
        const WCHAR* name;
        DWORD error;
    } kCases[] = {
        {TEXT("Local\\qvd name"), ERROR_SUCCESS},      {TEXT("Global\\qvd name"), ERROR_SUCCESS},
        {TEXT("qvd../..:*?<>\"|%"), ERROR_SUCCESS},    {TEXT("qvd zwölf €"), ERROR_SUCCESS},
        {TEXT("local\\qvd"), ERROR_PATH_NOT_FOUND},    {TEXT("qvd\\x"), ERROR_PATH_NOT_FOUND},
        {TEXT("Local\\qvd\\x"), ERROR_PATH_NOT_FOUND}, {TEXT("\\qvd"), ERROR_BAD_PATHNAME},
        {TEXT("Local\\"), ERROR_INVALID_NAME},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.name));
        const MappingHandle mapping = Create(c.name, 10);
        EXPECT_EQ(GetLastError(), c.error);
        EXPECT_EQ(static_cast<bool>(mapping), c.error == ERROR_SUCCESS);
    }
}

TEST_F(MappingTest, NamesAreDifferentInEveryLetter) {
    const MappingHandle mapping = Create(TEXT("Qvd a%b"), 10);
    for (const WCHAR* other : {TEXT("qvd a%b"), TEXT("Qvd a%25b"), TEXT("Qvd a%b "),
                               TEXT("Qvd a_b"), TEXT("Global\\Qvd a%b")}) {
        EXPECT_FALSE(Open(other)) << ToUtf8(other);
    }
    EXPECT_TRUE(Open(TEXT("Qvd a%b")));
}

TEST_F(MappingTest, ChecksArguments) {
    const auto errorOf = [&](DWORD protection, DWORD high, DWORD low) {
        SetLastError(77);
        const MappingHandle mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, protection,
                                                       high, low, name_.c_str()));
        EXPECT_FALSE(mapping);
        return GetLastError();
    };
    EXPECT_EQ(errorOf(PAGE_READWRITE, 0, 0), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(errorOf(0, 0, 10), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    // No machine has room for this; the code differs between systems.
    EXPECT_NE(errorOf(PAGE_READWRITE, 0x7FFFFFFF, 0), 77u);
    EXPECT_FALSE(Open(name_)) << "nothing may be left of the failure";

    EXPECT_FALSE(MapViewOfFile(nullptr, FILE_MAP_WRITE, 0, 0, 0));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(OpenFileMappingW(FILE_MAP_WRITE, FALSE, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(UnmapViewOfFile(nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_ADDRESS));
    void* view = Map(Create(name_, 10), 0).Detach();
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_ADDRESS));
}

TEST_F(MappingTest, AnotherProcessSharesTheBytes) {
    constexpr std::size_t kSize = 300'000;
    const MappingHandle mapping = Create(name_, kSize);
    const MappedView view = Map(mapping, kSize);
    ASSERT_TRUE(view);
    std::fill_n(static_cast<unsigned char*>(view.Get()), kSize, 0x11);
    EXPECT_EQ(RunSecondProcess("exchange", name_, kSize), 0);
    EXPECT_TRUE(IsFilledWith(view, kSize, 0x22));
}

TEST_F(MappingTest, MemoryOfAnEndedProcessIsGone) {
    EXPECT_EQ(RunSecondProcess("abandon", name_, kPage), 0);
    EXPECT_FALSE(Open(name_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(RunSecondProcess("abandon", name_, kPage), 0);
    const MappingHandle mapping = Create(name_, 2 * kPage);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_TRUE(IsFilledWith(Map(mapping, 2 * kPage), 2 * kPage, 0));
    // A process that only opened it does not take it away by its end.
    EXPECT_NE(RunSecondProcess("exchange", name_, kPage), 0);
    EXPECT_NE(RunSecondProcess("absent", name_, 0), 0);
    EXPECT_TRUE(Open(name_));
}

TEST_F(MappingTest, MakersRaceForOneObject) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 150;
    for (int round = 0; round < kRounds; ++round) {
        std::vector<MappingHandle> made(kThreads);
        std::vector<DWORD> errors(kThreads);
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                made[t] = Create(name_, 10);
                errors[t] = GetLastError();
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(std::count(errors.begin(), errors.end(), static_cast<DWORD>(ERROR_SUCCESS)), 1);
        const MappedView first = Map(made.front(), 1);
        const MappedView last = Map(made.back(), 1);
        ASSERT_TRUE(first && last);
        *static_cast<char*>(first.Get()) = 'r';
        EXPECT_EQ(*static_cast<char*>(last.Get()), 'r');
    }
}

TEST_F(MappingTest, AFileIsMemory) {
    constexpr DWORD kGranule = 0x10000;
    const WideString path = profile_.Path(TEXT("mapped"));
    ASSERT_TRUE(test_support::WriteWholeFile(path, "hello"));
    const auto open = [&](DWORD access) {
        return FileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    const auto map = [](const FileHandle& file, DWORD protection, DWORD size) {
        return MappingHandle(CreateFileMappingW(file.Get(), nullptr, protection, 0, size, nullptr));
    };
    const FileHandle reader = open(GENERIC_READ);
    const FileHandle writer = open(GENERIC_READ | GENERIC_WRITE);
    EXPECT_FALSE(map(reader, PAGE_READWRITE, 0));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(map(reader, PAGE_READONLY, 6));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
    const MappingHandle whole = map(reader, PAGE_READONLY, 0);
    const MappedView hello = Map(whole, 5, FILE_MAP_READ);
    ASSERT_TRUE(hello);
    EXPECT_EQ(std::string(static_cast<char*>(hello.Get()), 5), "hello");
    EXPECT_FALSE(Map(whole, 5, FILE_MAP_WRITE));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));

    const MappingHandle longer = map(writer, PAGE_READWRITE, 2 * kGranule + 5);
    const auto mapAt = [&](DWORD offset, SIZE_T size) {
        return MappedView(MapViewOfFile(longer.Get(), FILE_MAP_WRITE, 0, offset, size));
    };
    MappedView first = mapAt(kGranule, kGranule + 5);
    const MappedView second = mapAt(kGranule, 1);
    ASSERT_TRUE(first && second);
    static_cast<char*>(first.Get())[kGranule + 4] = '!';
    EXPECT_TRUE(FlushViewOfFile(first.Get(), 0));
    first.Reset();
    *static_cast<char*>(second.Get()) = '?';
    const struct {
        DWORD offset;
        SIZE_T size;
        LSTATUS error;
    } kRefused[] = {{4096, 1, ERROR_MAPPED_ALIGNMENT}, {2 * kGranule, 6, ERROR_ACCESS_DENIED}};
    for (const auto& c : kRefused) {
        EXPECT_FALSE(mapAt(c.offset, c.size));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(c.error));
    }
    const std::string content = test_support::ReadWholeFile(path);
    ASSERT_EQ(content.size(), 2 * kGranule + 5);
    EXPECT_EQ(content.substr(0, 6), std::string("hello\0", 6));
    EXPECT_EQ(content[kGranule], '?');
    EXPECT_EQ(content.back(), '!');
    ASSERT_TRUE(test_support::WriteWholeFile(profile_.Path(TEXT("empty")), ""));
    const FileHandle empty(CreateFileW(profile_.Path(TEXT("empty")).c_str(), GENERIC_READ, 0,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(map(empty, PAGE_READONLY, 0));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_INVALID));
}

TEST(GuardedCopy, TellsWhichSideIsLost) {
    volatile std::uintptr_t unmapped = 64;  // The compiler knows nothing about it.
    char* const nowhere = reinterpret_cast<char*>(unmapped);
    std::vector<char> from(100'000, 'x');
    std::vector<char> to(100'000);
    const auto work = [&](std::size_t size) {
        for (int round = 0; round < 300; ++round) {
            EXPECT_EQ(GuardedCopy(nowhere, from.data(), 1), CopyOutcome::TargetLost);
            EXPECT_EQ(GuardedCopy(&size, nowhere, sizeof size), CopyOutcome::SourceLost);
        }
    };
    std::thread other(work, 1);
    work(2);
    other.join();
    EXPECT_EQ(GuardedCopy(to.data(), from.data(), from.size()), CopyOutcome::Done);
    EXPECT_EQ(to, from);
    EXPECT_EQ(GuardedCopy(nowhere, nowhere, 0), CopyOutcome::Done);
    // A fault elsewhere ends the process, as ever.
    EXPECT_DEATH(*static_cast<volatile char*>(nowhere) = 'x', "");
}

}  // namespace
}  // namespace platform
