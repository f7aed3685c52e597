#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/base.h"

/// How the allocator's memory is laid out. These are formats: every module of the process that
/// carries the library reads and writes them, whichever build of it made them.
namespace AUX::memory {

struct MemHeap;

inline constexpr std::size_t kLargestSmall = 1052;  // bytes of a request
inline constexpr std::size_t kPageSize = 0x10000;   // pages begin at multiples of it
inline constexpr std::uint32_t kPagesPerRegion = 64;
inline constexpr std::size_t kRegionSize = kPageSize * kPagesPerRegion;
inline constexpr std::uint32_t kClassCount = 42;
inline constexpr std::size_t kSizeSlots = kLargestSmall / 4 + 1;
inline constexpr std::uint32_t kPagesToKeep = 128;  // a heap with as many free ones gives some back

/// The class of a size, which is a multiple of 4 up to kLargestSmall.
constexpr std::uint32_t ClassOfSize(std::uint32_t size) noexcept {
    return size <= 268 ? (size + 3) >> 4 : ((size + 3) >> 5) + 9;
}

/// The largest size of a class, in bytes: what each of its blocks can hold.
constexpr std::uint16_t BlockSizeOfClass(std::uint32_t sizeClass) noexcept {
    const std::uint32_t size = sizeClass <= 16 ? 12 + 16 * sizeClass : 284 + 32 * (sizeClass - 17);
    return static_cast<std::uint16_t>(size);
}

/// How many blocks of a full page must be free again before blocks are taken from it.
constexpr std::uint16_t ReturnThreshold(std::uint32_t blockSize) noexcept {
    const std::uint32_t threshold = blockSize * 8 > 4096 ? (blockSize + 4095) / blockSize : 8;
    return static_cast<std::uint16_t>(threshold);
}

static_assert(ClassOfSize(12) == 0 && ClassOfSize(16) == 1 && ClassOfSize(268) == 16);
static_assert(ClassOfSize(272) == 17 && ClassOfSize(1052) == kClassCount - 1);
static_assert(BlockSizeOfClass(kClassCount - 1) == kLargestSmall);

enum class BlockKind : std::uint16_t { Small = 1, ProcessHeap = 2, Pages = 3 };

inline constexpr std::uint16_t kSmallMarker = 0;
inline constexpr std::uint16_t kLargeMarker = 0xFFFF;

/// What stands right in front of the bytes that a caller gets.
struct SmallHeader {
    std::uint16_t marker;
    std::uint16_t nextFree;  // while free: offset in the page of the next free block, or 0
};
static_assert(sizeof(SmallHeader) == 4);

#pragma pack(push, 4)
struct LargeHeader {
    std::uint32_t unused;
    std::uint64_t usableSize;  // bytes behind this header
    std::uint16_t marker;
    BlockKind kind;  // never Small
};
#pragma pack(pop)
static_assert(sizeof(LargeHeader) == 16 && offsetof(LargeHeader, usableSize) == 4);
static_assert(offsetof(LargeHeader, marker) == 12 && offsetof(LargeHeader, kind) == 14);

inline SmallHeader& HeaderOf(void* block) noexcept { return static_cast<SmallHeader*>(block)[-1]; }
inline LargeHeader& LargeHeaderOf(void* block) noexcept {
    return static_cast<LargeHeader*>(block)[-1];
}
inline bool IsLarge(void* block) noexcept { return HeaderOf(block).marker == kLargeMarker; }

enum class PageState : std::uint16_t { Full = 0, Available = 1, Free = 2 };

/// The header of a page. Links and state change under the lock of the owner.
struct MemPage {
    std::atomic<MemHeap*> owner;
    MemPage* next;  // on the owner's list for the page's state; a free page is on none
    MemPage* previous;
    std::atomic<std::uint32_t> freeWord;  // FreeCount and FreeHead
    std::uint16_t blockCount;
    std::uint16_t carvedCount;  // blocks handed out at least once; those behind them were never
    std::uint16_t returnThreshold;
    std::uint16_t stride;  // from block to block
    std::uint16_t index;   // in the region
    std::uint16_t sizeClass;
    std::atomic<PageState> state;

    /// The blocks that are free, with those not carved yet.
    static constexpr std::uint32_t FreeCount(std::uint32_t word) noexcept { return word & 0xFFFF; }
    /// The offset in the page of the first free block that was carved, or 0.
    static constexpr std::uint32_t FreeHead(std::uint32_t word) noexcept { return word >> 16; }
    static constexpr std::uint32_t FreeWord(std::uint32_t head, std::uint32_t count) noexcept {
        return head << 16 | count;
    }

    /// The offset in the page of the first block.
    [[nodiscard]] std::uint32_t FirstBlock() const noexcept { return index == 0 ? 80 : 48; }
    [[nodiscard]] void* At(std::uint32_t offset) noexcept {
        return reinterpret_cast<std::byte*>(this) + offset;
    }
};
static_assert(offsetof(MemPage, next) == 8 && offsetof(MemPage, previous) == 16);
static_assert(offsetof(MemPage, freeWord) == 24 && offsetof(MemPage, blockCount) == 28);
static_assert(offsetof(MemPage, carvedCount) == 30 && offsetof(MemPage, returnThreshold) == 32);
static_assert(offsetof(MemPage, stride) == 34 && offsetof(MemPage, index) == 36);
static_assert(offsetof(MemPage, sizeClass) == 38 && offsetof(MemPage, state) == 40);
static_assert(sizeof(std::atomic<MemHeap*>) == 8 && sizeof(std::atomic<PageState>) == 2);
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

/// The header of a region, behind that of its first page.
#pragma pack(push, 2)
struct MemRegion {
    MemRegion* next;
    MemRegion* previous;
    std::uint32_t pagesInUse;  // by index: the pages behind these were never touched
    std::uint32_t freePages;   // these, and those given back
};
#pragma pack(pop)
inline constexpr std::size_t kRegionOffset = 42;
static_assert(offsetof(MemRegion, previous) == 50 - kRegionOffset);
static_assert(offsetof(MemRegion, pagesInUse) == 58 - kRegionOffset);
static_assert(offsetof(MemRegion, freePages) == 62 - kRegionOffset);
static_assert(kRegionOffset + sizeof(MemRegion) <= 80 - sizeof(SmallHeader));

inline MemPage& PageOf(const void* block) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    return *reinterpret_cast<MemPage*>(address & ~(kPageSize - 1));
}
inline MemPage& PageOf(MemRegion& region, std::uint32_t index) noexcept {
    std::byte* const first = reinterpret_cast<std::byte*>(&region) - kRegionOffset;
    return *reinterpret_cast<MemPage*>(first + index * kPageSize);
}
inline MemRegion& RegionOf(MemPage& page) noexcept {
    std::byte* const first = reinterpret_cast<std::byte*>(&page) - page.index * kPageSize;
    return *reinterpret_cast<MemRegion*>(first + kRegionOffset);
}

/// A node of the map from thread ids to heaps: its head, then `capacity` ids, ascending, then the
/// heaps, in the same order.
struct MemThreadNode {
    MemThreadNode* next;
    std::uint32_t capacity;
    std::uint32_t used;
    MemHeap** values;

    [[nodiscard]] std::uint32_t* Keys() noexcept {
        return reinterpret_cast<std::uint32_t*>(this + 1);
    }
};
static_assert(sizeof(MemThreadNode) == 24);
inline constexpr std::uint32_t kFirstNodeThreads = 256;
inline constexpr std::uint32_t kOverflowNodeThreads = 5459;
inline constexpr std::size_t kOverflowNodeSize = 0x10000;
inline constexpr std::size_t kOverflowNodeValues = 21864;
static_assert(sizeof(MemThreadNode) + kOverflowNodeThreads * 4 <= kOverflowNodeValues);
static_assert(kOverflowNodeValues + kOverflowNodeThreads * 8 == kOverflowNodeSize);

/// What all modules of the process share.
struct MemRoot {
    MemHeap* globalHeap;
    std::uint16_t blockSizes[kClassCount];
    std::uint32_t classes[kSizeSlots];  // by (size + 3) / 4
    std::uint32_t moduleCount;
    std::atomic<std::uint32_t> regionCount;
    std::uint32_t unused;
    MemThreadNode threads;
    std::uint32_t firstKeys[kFirstNodeThreads];
    MemHeap* firstValues[kFirstNodeThreads];
};

/// The named block of memory.
struct MemShared {
    MemShared* view;  // the address in this process; null while nobody has set it up
    HANDLE mapping;   // stays open
    MemRoot root;
};
static_assert(offsetof(MemShared, mapping) == 8 && offsetof(MemShared, root) == 16);
static_assert(offsetof(MemShared, root.blockSizes) == 24);
static_assert(offsetof(MemShared, root.classes) == 108);
static_assert(offsetof(MemShared, root.moduleCount) == 1164);
static_assert(offsetof(MemShared, root.regionCount) == 1168);
static_assert(offsetof(MemShared, root.threads) == 1176);
static_assert(offsetof(MemShared, root.firstKeys) == 1200);
static_assert(offsetof(MemShared, root.firstValues) == 2224);
static_assert(sizeof(MemShared) == 4272);

}  // namespace AUX::memory
