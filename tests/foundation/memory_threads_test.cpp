#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "foundation/memory.h"
#include "foundation/memory_check.h"
#include "platform/modules.h"
#include "platform/testing.h"
#include "platform/text.h"

namespace {

using platform::ModuleHandle;
using platform::ProcedureOf;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kStepsPerThread = 60'000;
#else
constexpr int kStepsPerThread = 1'000'000;
#endif

struct Block {
    unsigned char* bytes = nullptr;
    std::size_t size = 0;
};

// Blocks on their way from thread to thread.
class Exchange {
public:
    Block Swap(std::size_t place, Block block) {
        Shelf& shelf = shelves_[place % shelves_.size()];
        const std::lock_guard guard(shelf.lock);
        return std::exchange(shelf.block, block);
    }

private:
    struct Shelf {
        std::mutex lock;
        Block block;
    };
    std::array<Shelf, 512> shelves_;
};

void Check(const Block& block) {
    if (!block.bytes) return;
    ASSERT_EQ(block.bytes[0], block.size & 0xFF);
    ASSERT_EQ(block.bytes[block.size - 1], block.size & 0xFF);
}

void Mark(Block& block) {
    ASSERT_NE(block.bytes, nullptr);
    block.bytes[0] = block.bytes[block.size - 1] = static_cast<unsigned char>(block.size);
}

// Takes what another thread put there, resizes or frees it, and puts a block of its own.
void Trade(Exchange& exchange, unsigned seed, int steps) {
    std::mt19937 random(seed);
    for (int i = 0; i < steps; ++i) {
        Block block = exchange.Swap(random(), {});
        Check(block);
        const std::size_t size = 1 + random() % (random() % 100 ? 1052 : 5000);
        auto* const change = random() % 2 ? &AUX::Resize : &AUX::Realloc;
        if (block.bytes && random() % 4 == 0) {
            block = {static_cast<unsigned char*>(change(block.bytes, size)), size};
        } else {
            AUX::Free(block.bytes);
            block = {static_cast<unsigned char*>(AUX::Alloc(size)), size};
        }
        Mark(block);
        block = exchange.Swap(random(), block);
        Check(block);
        AUX::Free(block.bytes);
    }
}

void ExpectSoundHeap() {
    const AUX::HeapReport report = AUX::CheckHeap();
    EXPECT_EQ(report.fault, nullptr) << report.fault << " at " << report.where;
}

TEST(MemoryThreads, FreeAndResizeEachOthersBlocksWhileThreadsStartAndEnd) {
    constexpr unsigned kThreads = 8;
    constexpr int kLives = 10;  // threads that follow each other in each of the eight
    const std::size_t before = AUX::CheckHeap().smallBlocks;
    Exchange exchange;
    std::atomic<unsigned> running = kThreads;
    std::vector<std::thread> lines;
    for (unsigned line = 0; line < kThreads; ++line) {
        lines.emplace_back([&, line] {
            for (unsigned life = 0; life < kLives; ++life) {
                std::thread(Trade, std::ref(exchange), line * 100 + life, kStepsPerThread / kLives)
                    .join();
            }
            --running;
        });
    }
    // A look holds up whoever needs the global heap, so the threads get time between two of them.
    while (running > 0) {
        ExpectSoundHeap();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    for (std::thread& line : lines) line.join();
    for (std::size_t i = 0; i < 512; ++i) AUX::Free(exchange.Swap(i, {}).bytes);
    ExpectSoundHeap();
    EXPECT_EQ(AUX::CheckHeap().smallBlocks, before);
    EXPECT_EQ(AUX::CheckHeap().regions, AUX::RegionCount());
    EXPECT_LE(AUX::RegionCount(), 4u) << "what this thread's and the global heap may keep";
}

TEST(MemoryThreads, LeaveTheirBlocksBehindAndMoreThanTheMapHolds) {
    constexpr unsigned kThreads = 300;  // the first node of the map holds 256
    std::vector<void*> blocks(kThreads);
    std::atomic<unsigned> started = 0;
    std::atomic<bool> mayEnd = false;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            blocks[i] = AUX::Alloc(100);
            std::memset(blocks[i], 'x', 100);
            ++started;
            while (!mayEnd) std::this_thread::yield();
        });
    }
    while (started < kThreads) std::this_thread::yield();
    ExpectSoundHeap();
    mayEnd = true;
    for (std::thread& thread : threads) thread.join();
    for (void* const block : blocks) {
        EXPECT_EQ(static_cast<char*>(block)[99], 'x');
        AUX::Free(block);
    }
    ExpectSoundHeap();
    EXPECT_LE(AUX::RegionCount(), 4u);
}

TEST(MemoryThreads, DoWithoutAHeapWhenTheSystemFails) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "calls cannot be made to fail";
    const std::size_t before = AUX::CheckHeap().smallBlocks;
    unsigned failures = 0;
    for (bool hasFired = true; hasFired;) {
        std::thread([&] {
            const platform::testing::InjectedFault fault("*", failures + 1,
                                                         ERROR_NOT_ENOUGH_MEMORY);
            void* const first = AUX::Alloc(100);
            hasFired = fault.HasFired();
            EXPECT_EQ(first == nullptr, hasFired) << failures;
            void* const second = AUX::Alloc(100);
            EXPECT_NE(second, nullptr) << failures;
            AUX::Free(first);
            AUX::Free(second);
        }).join();
        ExpectSoundHeap();
        if (hasFired) ++failures;
    }
    EXPECT_GE(failures, 2u) << "the heap and its slot";
    EXPECT_EQ(AUX::CheckHeap().smallBlocks, before);
}

// A module with a library of its own in it.
class Module {
public:
    explicit Module(const platform::WideString& path) : handle_(LoadLibraryW(path.c_str())) {
        EXPECT_TRUE(handle_.Get()) << GetLastError();
    }
    void* Alloc(std::size_t size) const { return Call<void*(std::size_t)>("ModuleAlloc")(size); }
    void* Resize(void* block, std::size_t size) const {
        return Call<void*(void*, std::size_t)>("ModuleResize")(block, size);
    }
    void Free(void* block) const { Call<void(void*)>("ModuleFree")(block); }
    unsigned RegionCount() const { return Call<unsigned()>("ModuleRegionCount")(); }

private:
    template <class Function>
    Function* Call(const char* name) const {
        return ProcedureOf<Function>(handle_.Get(), name);
    }

    ModuleHandle handle_;
};

const platform::WideString kModules[] = {
    platform::FromUtf8(MEMORY_MODULES "\\memory_one.dll"),
    platform::FromUtf8(MEMORY_MODULES "\\memory_two.dll"),
};

TEST(MemoryModules, ShareOneRootWhicheverIsUnloadedFirst) {
    const std::size_t before = AUX::CheckHeap().smallBlocks;
    for (const int first : {0, 1}) {
        auto one = std::make_unique<Module>(kModules[first]);
        auto two = std::make_unique<Module>(kModules[1 - first]);
        EXPECT_EQ(one->RegionCount(), AUX::RegionCount());
        EXPECT_EQ(two->RegionCount(), AUX::RegionCount());
        void* const ofOne = one->Alloc(500);
        void* const ofTwo = two->Alloc(5000);
        void* ofThread = nullptr;
        // A thread that outlives a module it has allocated through.
        std::atomic<int> stage = 0;
        std::thread thread([&] {
            ofThread = one->Resize(two->Alloc(30), 300);
            stage = 1;
            while (stage != 2) std::this_thread::yield();
            AUX::Free(AUX::Alloc(20));
        });
        while (stage != 1) std::this_thread::yield();
        two->Free(one->Alloc(40));
        AUX::Free(two->Alloc(40));
        one.reset();
        two->Free(ofOne);
        AUX::Free(two->Resize(ofTwo, 50));
        stage = 2;
        thread.join();
        two->Free(ofThread);
        two.reset();
        ExpectSoundHeap();
        EXPECT_EQ(AUX::CheckHeap().smallBlocks, before);
    }
}

TEST(MemoryModules, DoWithoutARoot) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "calls cannot be made to fail";
    for (const char* const call : {"FlsAlloc", "CreateMutexA", "WaitForSingleObject",
                                   "CreateFileMappingA", "MapViewOfFile"}) {
        SCOPED_TRACE(call);
        const platform::testing::InjectedFault fault(call, 1, ERROR_NOT_ENOUGH_MEMORY);
        const Module module(kModules[0]);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(module.RegionCount(), 0u);
        void* const block = module.Resize(module.Alloc(10), 1000);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(static_cast<std::uint16_t*>(block)[-2], 0xFFFF) << "a large block";
        AUX::Free(block);
        void* const ours = AUX::Alloc(10);
        AUX::Free(ours);
    }
    ExpectSoundHeap();
}

}  // namespace
