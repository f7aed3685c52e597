#include "foundation/memory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "foundation/memory_check.h"
#include "foundation/memory_layout.h"
#include "foundation/memory_testing.h"
#include "foundation/system_facts.h"
#include "platform/memory.h"
#include "platform/system.h"
#include "platform/testing.h"

namespace {

using namespace AUX::memory;
using AUX::testing::AllocationWatch;
using platform::testing::InjectedFault;

void ExpectSoundHeap() {
    const AUX::HeapReport report = AUX::CheckHeap();
    EXPECT_EQ(report.fault, nullptr) << report.fault << " at " << report.where;
    EXPECT_EQ(report.regions, AUX::RegionCount());
}

std::uint16_t MarkerOf(void* block) { return static_cast<std::uint16_t*>(block)[-2]; }
std::uint16_t KindOf(void* block) { return static_cast<std::uint16_t*>(block)[-1]; }

// Made in static initialisation, before the library's files have their turn by the order of
// linking.
const struct EarlyBlock {
    void* block = AUX::Alloc(10);
    ~EarlyBlock() { AUX::Free(block); }
} early;

TEST(Memory, ServesOtherStaticObjects) { EXPECT_EQ(MarkerOf(early.block), kSmallMarker); }

TEST(Memory, RefusesNothingAndTooMuch) {
    EXPECT_EQ(AUX::Alloc(0), nullptr);
    EXPECT_EQ(AUX::Alloc(AUX::kMaxRequest + 1), nullptr);
    AUX::Free(nullptr);
    for (const std::size_t size : {std::size_t{40}, std::size_t{4000}, std::size_t{4000000}}) {
        void* const block = AUX::Alloc(size);
        ASSERT_NE(block, nullptr);
        std::memset(block, 'x', size);
        EXPECT_EQ(AUX::Realloc(block, AUX::kMaxRequest + 1), nullptr);
        EXPECT_EQ(AUX::Resize(block, AUX::kMaxRequest), nullptr);
        EXPECT_EQ(static_cast<char*>(block)[size - 1], 'x');
        AUX::Free(block);
    }
}

TEST(Memory, PutsEachSizeWhereItBelongs) {
    // Stride 0: a large block.
    const struct {
        std::size_t size;
        std::uint16_t stride, sizeClass, kind;
    } cases[] = {{1, 16, 0, 0},     {12, 16, 0, 0},     {13, 32, 1, 0},     {268, 272, 16, 0},
                 {269, 288, 17, 0}, {284, 288, 17, 0},  {285, 320, 18, 0},  {1052, 1056, 41, 0},
                 {1053, 0, 0, 2},   {0xFFFF0, 0, 0, 2}, {0xFFFF1, 0, 0, 3}, {0x100000, 0, 0, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        void* const block = AUX::Alloc(c.size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
        if (c.stride == 0) {
            EXPECT_EQ(MarkerOf(block), 0xFFFF);
            EXPECT_EQ(KindOf(block), c.kind);
            std::uint64_t usable = 0;
            std::memcpy(&usable, static_cast<char*>(block) - 12, sizeof(usable));
            const std::size_t total = ((c.size + 15) / 16 + 1) * 16;
            EXPECT_EQ(usable, (c.kind == 2 ? total : (total + 0xFFFF) / 0x10000 * 0x10000) - 16);
        } else {
            EXPECT_EQ(MarkerOf(block), 0);
            const auto* const page = reinterpret_cast<const std::uint16_t*>(
                reinterpret_cast<std::uintptr_t>(block) & ~std::uintptr_t{0xFFFF});
            EXPECT_EQ(page[17], c.stride);
            EXPECT_EQ(page[19], c.sizeClass);
            EXPECT_EQ(page[14], (page[18] ? 65492 : 65460) / c.stride) << "blocks in a page";
            EXPECT_EQ(page[16], c.stride - 4 < 540 ? 8 : (c.stride + 4091) / (c.stride - 4));
        }
        AUX::Free(block);
    }
}

TEST(Memory, ChangesSizesInPlaceOrNot) {
    // Whether the block may not move, by Resize and by Realloc.
    const struct {
        std::size_t from, to;
        bool resizeStays;
        std::uint16_t kind;  // afterwards; 0 for a small block
    } cases[] = {{100, 100, false, 0},           {100, 0, false, 0},
                 {1052, 1053, false, 2},         {100000, 99500, true, 2},
                 {100000, 98900, false, 2},      {5000, 500, false, 2},
                 {0x200000, 0x1FFFF0, true, 3},  {0x800000, 0x200000, true, 3},
                 {0x200000, 0x300000, false, 3}, {0x200000, 0x1000, false, 2}};
    for (const auto& c : cases) {
        for (auto* const change : {&AUX::Resize, &AUX::Realloc}) {
            SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
            auto* const block = static_cast<unsigned char*>(AUX::Alloc(c.from));
            ASSERT_NE(block, nullptr);
            for (std::size_t i = 0; i < c.from; ++i) block[i] = static_cast<unsigned char>(i * 7);
            auto* const changed = static_cast<unsigned char*>(change(block, c.to));
            ASSERT_NE(changed, nullptr);
            EXPECT_TRUE(changed == block || change == &AUX::Realloc || !c.resizeStays);
            EXPECT_EQ(MarkerOf(changed), c.kind ? 0xFFFF : 0);
            EXPECT_TRUE(c.kind == 0 || c.kind == KindOf(changed));
            std::size_t same = 0;
            while (same < std::min(c.from, c.to) && changed[same] == (same * 7 & 0xFF)) ++same;
            EXPECT_EQ(same, std::min(c.from, c.to));
            AUX::Free(changed);
        }
    }
}

TEST(Memory, KeepsEveryBlockApart) {
    std::mt19937 random(5);
    struct Live {
        unsigned char* block;
        std::size_t size;
    };
    std::vector<Live> live;
    const std::size_t before = AUX::CheckHeap().smallBlocks;
    for (int step = 0; step < 60000; ++step) {
        // Phases of growth and of decline, so that pages fill, empty and go back.
        const bool grows = step / 15000 % 2 == 0;
        const std::size_t size = 1 + random() % (random() % 50 == 0 ? 3000 : 1100);
        if (live.empty() || random() % 10 < (grows ? 7u : 2u)) {
            auto* const block = static_cast<unsigned char*>(AUX::Alloc(size));
            ASSERT_NE(block, nullptr);
            std::memset(block, static_cast<int>(size), size);
            live.push_back({block, size});
            continue;
        }
        Live& any = live[random() % live.size()];
        ASSERT_EQ(any.block[0], any.size & 0xFF);
        ASSERT_EQ(std::memcmp(any.block, any.block + 1, any.size - 1), 0) << "overwritten";
        if (random() % 3) {
            AUX::Free(any.block);
            any = live.back();
            live.pop_back();
        } else {
            any = {static_cast<unsigned char*>(AUX::Realloc(any.block, size)), size};
            ASSERT_NE(any.block, nullptr);
            std::memset(any.block, static_cast<int>(size), size);
        }
        if (step % 6000 == 0) ExpectSoundHeap();
    }
    for (const Live& each : live) AUX::Free(each.block);
    ExpectSoundHeap();
    EXPECT_EQ(AUX::CheckHeap().smallBlocks, before);
}

TEST(CheckHeap, NamesWhatIsWrong) {
    void* const first = AUX::Alloc(700);
    void* const second = AUX::Alloc(700);  // whose page no other test's block shares
    AUX::Free(second);
    ExpectSoundHeap();
    MemPage& page = PageOf(first);
    MemRegion& region = RegionOf(page);
    const struct {
        void* at;
        std::uint16_t flipped;
        const char* fault;
    } cases[] = {{&page.freeWord, 1, "a page's count of free blocks"},
                 {reinterpret_cast<char*>(&page) + 26, 4, "a page's list of free blocks"},
                 {static_cast<char*>(second) - 2, 4, "a page's list of free blocks"},
                 {static_cast<char*>(second) - 4, 1, "a free block's header"},
                 {&page.sizeClass, 1, "a page's class"},
                 {&page.index, 64, "a page's index"},
                 {&page.state, 1, "a page on the wrong list"},
                 {&page.owner, 16, "a page's owner"},
                 {&page.previous, 16, "a page's links"},
                 {&region.freePages, 1, "a region's count of free pages"},
                 {&region.pagesInUse, 0x80, "a region's pages in use"}};
    for (const auto& c : cases) {
        const auto flip = [&c] {
            std::uint16_t value = 0;
            std::memcpy(&value, c.at, sizeof(value));
            value = static_cast<std::uint16_t>(value ^ c.flipped);
            std::memcpy(c.at, &value, sizeof(value));
        };
        flip();
        EXPECT_STREQ(AUX::CheckHeap().fault, c.fault);
        flip();
    }
    ExpectSoundHeap();
    AUX::Free(first);
}

TEST(Memory, LeavesBlocksAsTheyWereWhenTheSystemFails) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "calls cannot be made to fail";
    const AUX::HeapReport before = AUX::CheckHeap();
    unsigned failures = 0;
    for (unsigned n = 1;; ++n) {
        SCOPED_TRACE(n);
        const InjectedFault fault("*", n, ERROR_NOT_ENOUGH_MEMORY);
        std::vector<char*> blocks;
        // More than the regions at hand can hold, and each kind of block.
        for (int i = 0; i < 9000; ++i) blocks.push_back(static_cast<char*>(AUX::Alloc(1052)));
        for (const std::size_t size : {5000u, 2000000u}) {
            for (const std::size_t changed : {6000u, 3000000u, 100u}) {
                auto* const block = static_cast<char*>(AUX::Alloc(size));
                if (!block) continue;
                block[0] = block[99] = 'x';
                auto* const moved = static_cast<char*>(AUX::Realloc(block, changed));
                char* const kept = moved ? moved : block;
                EXPECT_TRUE(kept[0] == 'x' && kept[99] == 'x');
                blocks.push_back(kept);
            }
        }
        for (char* const block : blocks) AUX::Free(block);
        ExpectSoundHeap();
        EXPECT_EQ(AUX::CheckHeap().smallBlocks, before.smallBlocks);
        if (!fault.HasFired()) break;
        ++failures;
    }
    EXPECT_GE(failures, 8u);
}

// What another module of the process finds, byte by byte.
TEST(Memory, IsFoundByItsName) {
    char name[64];
    (void)std::snprintf(name, sizeof(name), "m.dscrt.mks.--.2.0.%X",
                        static_cast<unsigned>(GetCurrentProcessId()));
    const platform::MappingHandle mapping(
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4272, name));
    ASSERT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, 4272));
    const auto* const bytes = static_cast<const std::byte*>(view.Get());
    ASSERT_NE(bytes, nullptr);
    const auto at = [&]<class T>(std::size_t offset, T value) {
        std::memcpy(&value, bytes + offset, sizeof(value));
        return value;
    };
    const auto firstView = at(0, std::uint64_t{});
    EXPECT_NE(firstView, 0u);
    EXPECT_NE(at(16, std::uint64_t{}), 0u) << "the global heap";
    EXPECT_EQ(at(24, std::uint16_t{}), 12);
    EXPECT_EQ(at(24 + 41 * 2, std::uint16_t{}), 1052);
    EXPECT_EQ(at(108 + 67 * 4, std::uint32_t{}), 16u) << "the class of 268 bytes";
    EXPECT_EQ(at(108 + 263 * 4, std::uint32_t{}), 41u);
    EXPECT_GE(at(1164, std::uint32_t{}), 1u) << "modules";
    EXPECT_EQ(at(1168, std::uint32_t{}), AUX::RegionCount());
    EXPECT_EQ(at(1184, std::uint32_t{}), 256u);
    EXPECT_EQ(at(1192, std::uint64_t{}), firstView + 2224);
    AUX::Free(AUX::Alloc(1));
    const auto* const keys = reinterpret_cast<const std::uint32_t*>(bytes + 1200);
    const auto* const end = keys + at(1188, std::uint32_t{});
    EXPECT_TRUE(std::binary_search(keys, end, GetCurrentThreadId()));
}

TEST(Memory, LearnsOfTheSystemAtTheStart) {
    const AUX::SystemFacts& facts = AUX::Facts();
    EXPECT_GE(facts.version.dwMajorVersion, 6u);
    EXPECT_EQ(facts.version.dwPlatformId, DWORD{VER_PLATFORM_WIN32_NT});
    EXPECT_EQ(facts.machine.dwAllocationGranularity, 0x10000u);
    EXPECT_EQ(facts.machine.dwPageSize, 0x1000u);
    EXPECT_GE(facts.machine.dwNumberOfProcessors, 1u);
    EXPECT_TRUE(facts.hasPopcnt || !facts.hasAvx2);
}

TEST(Memory, AWatchFailsTheRequestThatItIsTold) {
    AllocationWatch watch;
    watch.FailOnce(2);
    void* const first = AUX::Alloc(8);
    EXPECT_EQ(AUX::Realloc(first, 16), nullptr);
    void* const grown = AUX::Realloc(first, 16);
    EXPECT_NE(grown, nullptr);
    EXPECT_EQ(watch.LiveBlocks(), 1);
    watch.FailFrom(1);
    EXPECT_EQ(AUX::Alloc(8), nullptr);
    EXPECT_EQ(AUX::Resize(nullptr, 8), nullptr);
    AUX::Free(grown);
    EXPECT_EQ(watch.LiveBlocks(), 0);
    EXPECT_EQ(watch.Requests(), 5u);
    EXPECT_EQ(watch.Failures(), 3u);
}

}  // namespace
