#include "platform/memory.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

#include "platform/sync.h"

namespace platform {
namespace {

TEST(VirtualAlloc, GivesZeroedPagesAtTheGranularity) {
    for (const SIZE_T size : {SIZE_T{1}, SIZE_T{0x10001}, SIZE_T{0x400000}}) {
        SCOPED_TRACE(size);
        auto* const pages =
            static_cast<char*>(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE));
        ASSERT_NE(pages, nullptr) << GetLastError();
        EXPECT_EQ(reinterpret_cast<UINT_PTR>(pages) % 0x10000, 0u);
        EXPECT_EQ(pages[0] | pages[size - 1], 0);
        std::memset(pages, 'x', size);
        EXPECT_FALSE(VirtualFree(pages, size, MEM_RELEASE));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_TRUE(VirtualFree(pages, 0, MEM_RELEASE));
    }
    EXPECT_EQ(VirtualAlloc(nullptr, 0, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(VirtualAlloc(nullptr, SIZE_T{1} << 60, MEM_COMMIT, PAGE_READWRITE), nullptr);
    static char notOurs[16];
    EXPECT_FALSE(VirtualFree(notOurs, 0, MEM_RELEASE));
}

TEST(ProcessHeap, KeepsContentAndAligns) {
    const HANDLE heap = GetProcessHeap();
    auto* block = static_cast<char*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, 100));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<UINT_PTR>(block) % 16, 0u);
    EXPECT_EQ(block[99], 0);
    block[99] = 'x';
    block = static_cast<char*>(HeapReAlloc(heap, 0, block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block[99], 'x');
    EXPECT_TRUE(HeapFree(heap, 0, block));
}

TEST(NamedMutex, IsOneForAllItsHandlesAndOfItsHolder) {
    const KernelHandle first(CreateMutexA(nullptr, FALSE, "platform-tests-mutex"));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    const KernelHandle second(CreateMutexA(nullptr, TRUE, "platform-tests-mutex"));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(WaitForSingleObject(first.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(second.Get(), 0), WAIT_OBJECT_0) << "taken twice";
    const auto onAnotherThread = [&](auto call) { std::thread(call).join(); };
    onAnotherThread([&] {
        EXPECT_EQ(WaitForSingleObject(second.Get(), 1), DWORD{WAIT_TIMEOUT});
        EXPECT_FALSE(ReleaseMutex(second.Get()));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_OWNER});
    });
    EXPECT_TRUE(ReleaseMutex(first.Get()));
    EXPECT_TRUE(ReleaseMutex(first.Get()));
    EXPECT_FALSE(ReleaseMutex(first.Get()));
    onAnotherThread([&] {
        EXPECT_EQ(WaitForSingleObject(first.Get(), INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(second.Get()));
    });
}

TEST(NamedMemory, IsOneForAllItsHandlesAndGoneWithTheLast) {
    const auto open = [] {
        return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4272,
                                  "platform-tests-memory");
    };
    for (int round = 0; round < 2; ++round) {
        const MappingHandle first(open());
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
        const MappingHandle second(open());
        EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
        const MappedView one(MapViewOfFile(first.Get(), FILE_MAP_WRITE, 0, 0, 4272));
        const MappedView two(MapViewOfFile(second.Get(), FILE_MAP_WRITE, 0, 0, 0));
        ASSERT_TRUE(one.Get() && two.Get());
        EXPECT_NE(one.Get(), two.Get());
        EXPECT_EQ(*static_cast<const int*>(two.Get()), 0);
        *static_cast<int*>(one.Get()) = 7;
        EXPECT_EQ(*static_cast<const int*>(two.Get()), 7);
    }
}

TEST(CriticalSection, KeepsThreadsOutAndWakesThem) {
    CRITICAL_SECTION section;
    ASSERT_TRUE(InitializeCriticalSectionAndSpinCount(&section, 4));
    int count = 0;
    constexpr int kSteps = 20000;
    const auto work = [&] {
        for (int i = 0; i < kSteps; ++i) {
            EnterCriticalSection(&section);
            EnterCriticalSection(&section);
            ++count;
            LeaveCriticalSection(&section);
            if (i % 1000 == 0) std::this_thread::yield();  // While the others wait.
            LeaveCriticalSection(&section);
        }
    };
    std::thread threads[] = {std::thread(work), std::thread(work), std::thread(work)};
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, 3 * kSteps);
    DeleteCriticalSection(&section);
}

}  // namespace
}  // namespace platform
