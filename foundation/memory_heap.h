#pragma once

#include "foundation/memory_layout.h"
#include "foundation/memory_list.h"
#include "platform/sync.h"

namespace AUX::memory {

/// The small blocks of one thread, or (the global heap) those that ended threads left. Its fields
/// change under its lock; the order of locks is the global heap's, then another's.
///
/// Who changes a page's free word: the owning thread takes blocks, with the lock; it gives blocks
/// back without; every other thread gives them back with the lock. So a taker has no rival but
/// itself, while a giver without the lock may have one on another thread.
struct MemHeap {
    ListHead<MemPage> bins[kClassCount];  // available pages by class
    ListHead<MemPage> fullPages;          // of all classes
    ListHead<MemRegion> regions;          // with free pages, those with the fewest first
    ListHead<MemRegion> exhaustedRegions;
    std::uint32_t freePages;  // of all regions
    CRITICAL_SECTION lock;
    std::uint32_t threadId;               // 0 for the global heap
    std::atomic<std::uint32_t> refCount;  // grows from 0 and falls to it under the global lock only

    /// Makes a heap with one reference. \return null if memory runs out.
    static MemHeap* Make(std::uint32_t threadId) noexcept;
    /// Gives back the heap's own memory, not its pages.
    void Delete() noexcept;

    /// Hands out a block, for the thread that owns this heap. Null if memory runs out.
    [[nodiscard]] void* Allocate(MemRoot& root, std::uint32_t sizeClass) noexcept;

    /// Takes a block of this heap back: on the thread that owns the heap, or with its lock held.
    void TakeBack(MemRoot& root, MemPage& page, void* block) noexcept;

    /// Moves all pages to the global heap. Both locks are held.
    void MergeInto(MemRoot& root, MemHeap& global) noexcept;

    /// Gives all regions back, whatever is in them.
    void ReleaseAllRegions(MemRoot& root) noexcept;

private:
    [[nodiscard]] bool Refill(MemRoot& root, std::uint32_t sizeClass) noexcept;
    [[nodiscard]] bool StealFrom(MemHeap& global, std::uint32_t sizeClass) noexcept;
    MemPage* TakePage(MemRoot& root, std::uint32_t sizeClass) noexcept;
    MemPage* MakeRegion(MemRoot& root, std::uint32_t sizeClass) noexcept;
    void ChangeList(MemRoot& root, MemPage& page, std::uint32_t freeCount) noexcept;
    void GiveBackPage(MemRoot& root, MemPage& page) noexcept;
    void InsertByFreePages(MemRegion& region, MemRegion* previous, MemRegion* next) noexcept;
    void ReleaseRegion(MemRoot& root, ListHead<MemRegion>& list, MemRegion& region) noexcept;
    [[nodiscard]] ListHead<MemPage>& ListOf(const MemPage& page) noexcept;
};

/// Holds a heap's lock.
class HeapLock {
public:
    explicit HeapLock(MemHeap& heap) noexcept : heap_(heap) { EnterCriticalSection(&heap.lock); }
    ~HeapLock() { LeaveCriticalSection(&heap_.lock); }
    HeapLock(const HeapLock&) = delete;
    HeapLock& operator=(const HeapLock&) = delete;

private:
    MemHeap& heap_;
};

}  // namespace AUX::memory
