#include "foundation/memory_heap.h"

#include <exception>
#include <new>
#include <xmmintrin.h>

#include "platform/memory.h"
#include "platform/sanitizer.h"

namespace AUX::memory {
namespace {

constexpr DWORD kSpinCount = 128;

// A block's header shares its unit of 8 bytes with the end of the block before. Both borders of a
// block stay open to access, once and for all: blocks side by side belong to different threads,
// which could not change the access to one unit at the same time.
void OpenBorders(void* block, std::uint32_t stride) noexcept {
    constexpr std::uint32_t kUnit = 8;
    platform::AllowAccess(static_cast<std::byte*>(block) - kUnit, kUnit);
    platform::AllowAccess(static_cast<std::byte*>(block) + stride - kUnit, kUnit);
}

// Makes a page ready for blocks of a class. Nothing of it was handed out.
void Format(const MemRoot& root, MemPage& page, std::uint32_t sizeClass) noexcept {
    const std::uint32_t blockSize = root.blockSizes[sizeClass];
    const std::uint32_t stride = blockSize + std::uint32_t{sizeof(SmallHeader)};
    const std::uint32_t header = page.FirstBlock() - std::uint32_t{sizeof(SmallHeader)};
    const auto count = static_cast<std::uint16_t>((kPageSize - header) / stride);
    page.sizeClass = static_cast<std::uint16_t>(sizeClass);
    page.stride = static_cast<std::uint16_t>(stride);
    page.returnThreshold = ReturnThreshold(blockSize);
    page.blockCount = count;
    page.carvedCount = 0;
    page.freeWord.store(MemPage::FreeWord(0, count), std::memory_order_relaxed);
    page.state.store(PageState::Available, std::memory_order_relaxed);
    platform::ForbidAccess(page.At(page.FirstBlock()), kPageSize - page.FirstBlock());
}

// Hands out a block of a page that has one. With the lock held no other thread changes the word,
// and this one is here, so a plain store does where rivals would need an exchange.
void* TakeBlock(MemPage& page) noexcept {
    const std::uint32_t word = page.freeWord.load(std::memory_order_acquire);
    const std::uint32_t count = MemPage::FreeCount(word) - 1;
    void* block = nullptr;
    std::uint32_t head = MemPage::FreeHead(word);
    if (head) {
        block = page.At(head);
        head = HeaderOf(block).nextFree;
        // The next taker begins by reading the next block's header. With many live blocks that lies
        // outside the caches, and is fetched meanwhile.
        if (head) {
            const void* const header = &HeaderOf(page.At(head));
            _mm_prefetch(static_cast<const char*>(header), _MM_HINT_T0);
        }
    } else {
        block = page.At(page.FirstBlock() + page.carvedCount * std::uint32_t{page.stride});
        ++page.carvedCount;
        OpenBorders(block, page.stride);
        HeaderOf(block) = {kSmallMarker, 0};
    }
    page.freeWord.store(MemPage::FreeWord(head, count), std::memory_order_relaxed);
    return block;
}

// Takes a free page out of a region that has one.
MemPage& TakeFreePage(MemRegion& region) noexcept {
    const bool isBelowUsed = region.pagesInUse + region.freePages != kPagesPerRegion;
    --region.freePages;
    if (isBelowUsed) {
        std::uint32_t i = 0;
        while (PageOf(region, i).state.load(std::memory_order_relaxed) != PageState::Free) ++i;
        return PageOf(region, i);
    }
    MemPage& page = PageOf(region, region.pagesInUse);
    page.owner.store(PageOf(region, 0).owner.load(std::memory_order_relaxed),
                     std::memory_order_relaxed);
    page.index = static_cast<std::uint16_t>(region.pagesInUse);
    ++region.pagesInUse;
    return page;
}

void SetOwner(MemRegion& region, MemHeap& owner) noexcept {
    for (std::uint32_t i = 0; i < region.pagesInUse; ++i) {
        PageOf(region, i).owner.store(&owner, std::memory_order_relaxed);
    }
}

}  // namespace

MemHeap* MemHeap::Make(std::uint32_t threadId) noexcept {
    void* const memory = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(MemHeap));
    if (!memory) return nullptr;
    MemHeap* const heap = new (memory) MemHeap{};
    // Without its lock the heap would be corrupted sooner or later, and all that is in it.
    if (!InitializeCriticalSectionAndSpinCount(&heap->lock, kSpinCount)) std::terminate();
    heap->threadId = threadId;
    heap->refCount.store(1, std::memory_order_relaxed);
    return heap;
}

void MemHeap::Delete() noexcept {
    DeleteCriticalSection(&lock);
    (void)HeapFree(GetProcessHeap(), 0, this);
}

ListHead<MemPage>& MemHeap::ListOf(const MemPage& page) noexcept {
    const bool isFull = page.state.load(std::memory_order_relaxed) == PageState::Full;
    return isFull ? fullPages : bins[page.sizeClass];
}

void* MemHeap::Allocate(MemRoot& root, std::uint32_t sizeClass) noexcept {
    // Pages begin where few sets of a cache keep their headers: this one is fetched while the lock
    // is taken. Without a page the hint does nothing.
    _mm_prefetch(reinterpret_cast<const char*>(First(bins[sizeClass])), _MM_HINT_T0);
    for (;;) {
        {
            const HeapLock held(*this);
            MemPage* page = First(bins[sizeClass]);
            if (!page) page = TakePage(root, sizeClass);
            if (page) {
                void* const block = TakeBlock(*page);
                const std::uint32_t word = page->freeWord.load(std::memory_order_relaxed);
                if (MemPage::FreeCount(word) == 0) {
                    Unlink(bins[sizeClass], *page);
                    page->state.store(PageState::Full, std::memory_order_relaxed);
                    PushFront(fullPages, *page);
                }
                return block;
            }
            // A guess, without the lock that could only be taken before this heap's.
            const MemHeap& global = *root.globalHeap;
            if (!First(global.bins[sizeClass]) && !First(global.regions)) {
                if (!MakeRegion(root, sizeClass)) return nullptr;
                continue;
            }
        }
        if (!Refill(root, sizeClass)) return nullptr;
    }
}

// Looks for a region with both locks held, taken in their order, hence with this heap's own given
// up before. Something may have come back to this heap meanwhile.
bool MemHeap::Refill(MemRoot& root, std::uint32_t sizeClass) noexcept {
    MemHeap& global = *root.globalHeap;
    EnterCriticalSection(&global.lock);
    const HeapLock held(*this);
    const bool isRefilled =
        First(bins[sizeClass]) || First(regions) || StealFrom(global, sizeClass);
    LeaveCriticalSection(&global.lock);
    return isRefilled || MakeRegion(root, sizeClass);
}

// Takes a page for the class out of the heap's first region; null if the heap has no free page.
MemPage* MemHeap::TakePage(MemRoot& root, std::uint32_t sizeClass) noexcept {
    MemRegion* const region = First(regions);
    if (!region) return nullptr;
    MemPage& page = TakeFreePage(*region);
    --freePages;
    if (region->freePages == 0) {
        Unlink(regions, *region);
        PushFront(exhaustedRegions, *region);
    }
    Format(root, page, sizeClass);
    PushFront(bins[sizeClass], page);
    return &page;
}

// Adds a region and takes its first page. Null if memory runs out.
MemPage* MemHeap::MakeRegion(MemRoot& root, std::uint32_t sizeClass) noexcept {
    void* const memory = VirtualAlloc(nullptr, kRegionSize, MEM_COMMIT, PAGE_READWRITE);
    if (!memory) return nullptr;
    platform::LookForPointersIn(memory, kRegionSize);
    root.regionCount.fetch_add(1, std::memory_order_relaxed);
    MemPage& first = *static_cast<MemPage*>(memory);
    first.owner.store(this, std::memory_order_relaxed);
    first.index = 0;
    first.state.store(PageState::Free, std::memory_order_relaxed);
    MemRegion& region = RegionOf(first);
    region.pagesInUse = 1;
    region.freePages = kPagesPerRegion;
    freePages += kPagesPerRegion;
    InsertByFreePages(region, nullptr, First(regions));
    return TakePage(root, sizeClass);
}

bool MemHeap::StealFrom(MemHeap& global, std::uint32_t sizeClass) noexcept {
    MemRegion* region = First(global.regions);
    if (MemPage* const page = First(global.bins[sizeClass])) {
        MemRegion& ofPage = RegionOf(*page);
        const std::uint32_t word = page->freeWord.load(std::memory_order_relaxed);
        if (MemPage::FreeCount(word) > 0 || ofPage.freePages > 0) region = &ofPage;
    }
    if (!region) return false;
    for (std::uint32_t i = 0; i < region->pagesInUse; ++i) {
        MemPage& page = PageOf(*region, i);
        page.owner.store(this, std::memory_order_relaxed);
        if (page.state.load(std::memory_order_relaxed) == PageState::Free) continue;
        Unlink(global.ListOf(page), page);
        PushFront(ListOf(page), page);
    }
    if (region->freePages > 0) {
        Unlink(global.regions, *region);
        InsertByFreePages(*region, nullptr, First(regions));
    } else {
        Unlink(global.exhaustedRegions, *region);
        PushFront(exhaustedRegions, *region);
    }
    global.freePages -= region->freePages;
    freePages += region->freePages;
    // Without a page of the class there is a free page now, and the caller's next look takes it.
    return true;
}

void MemHeap::TakeBack(MemRoot& root, MemPage& page, void* block) noexcept {
    const auto offset =
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block) & (kPageSize - 1));
    std::uint32_t word = page.freeWord.load(std::memory_order_relaxed);
    for (;;) {
        HeaderOf(block).nextFree = static_cast<std::uint16_t>(MemPage::FreeHead(word));
        const std::uint32_t count = MemPage::FreeCount(word) + 1;
        const std::uint32_t changed = MemPage::FreeWord(offset, count);
        // A state that is out of date sends the block the slow way, where it is looked at again.
        if (count != page.blockCount &&
            (page.state.load(std::memory_order_relaxed) != PageState::Full ||
             count < page.returnThreshold)) {
            // Another thread may give a block back at this moment, with the lock that this one
            // saves; and what this thread wrote to the block must be out before the block is.
            if (page.freeWord.compare_exchange_weak(word, changed, std::memory_order_release,
                                                    std::memory_order_relaxed)) {
                return;
            }
            continue;
        }
        const HeapLock held(*this);
        if (page.freeWord.compare_exchange_strong(word, changed, std::memory_order_release,
                                                  std::memory_order_relaxed)) {
            ChangeList(root, page, count);
            return;
        }
    }
}

// Puts a page on the list where it belongs with this count of free blocks.
void MemHeap::ChangeList(MemRoot& root, MemPage& page, std::uint32_t freeCount) noexcept {
    const bool isWhollyFree = freeCount == page.blockCount;
    const bool isFull = page.state.load(std::memory_order_relaxed) == PageState::Full;
    if (!isWhollyFree && (freeCount < page.returnThreshold || !isFull)) return;
    Unlink(ListOf(page), page);
    if (isWhollyFree) {
        GiveBackPage(root, page);
    } else {
        page.state.store(PageState::Available, std::memory_order_relaxed);
        PushFront(bins[page.sizeClass], page);
    }
}

void MemHeap::GiveBackPage(MemRoot& root, MemPage& page) noexcept {
    MemRegion& region = RegionOf(page);
    page.state.store(PageState::Free, std::memory_order_relaxed);
    ++region.freePages;
    ++freePages;
    if (region.freePages == 1) {
        Unlink(exhaustedRegions, region);
        PushFront(regions, region);
        if (freePages < kPagesToKeep) return;
        MemRegion* unused = region.next;
        while (unused && unused->freePages != kPagesPerRegion) unused = unused->next;
        if (unused) ReleaseRegion(root, regions, *unused);
    } else if (region.freePages == kPagesPerRegion && freePages >= kPagesToKeep) {
        ReleaseRegion(root, regions, region);
    } else if (region.next && region.next->freePages < region.freePages) {
        MemRegion* const previous = region.previous;
        MemRegion* const next = region.next;
        Unlink(regions, region);
        InsertByFreePages(region, previous, next);
    }
}

// Puts a region into `regions` at its place, which is known to lie behind `previous`.
void MemHeap::InsertByFreePages(MemRegion& region, MemRegion* previous, MemRegion* next) noexcept {
    while (next && next->freePages < region.freePages) {
        previous = next;
        next = next->next;
    }
    Insert(regions, region, previous, next);
}

void MemHeap::ReleaseRegion(MemRoot& root, ListHead<MemRegion>& list, MemRegion& region) noexcept {
    Unlink(list, region);
    freePages -= region.freePages;
    root.regionCount.fetch_sub(1, std::memory_order_relaxed);
    MemPage& first = PageOf(region, 0);
    platform::AllowAccess(&first, kRegionSize);
    platform::LookNoMoreIn(&first, kRegionSize);
    (void)VirtualFree(&first, 0, MEM_RELEASE);
}

void MemHeap::MergeInto(MemRoot& root, MemHeap& global) noexcept {
    for (std::uint32_t i = 0; i < kClassCount; ++i) Prepend(global.bins[i], bins[i]);
    Prepend(global.fullPages, fullPages);
    for (MemRegion* region = First(regions); region; region = region->next) {
        SetOwner(*region, global);
    }
    for (MemRegion* region = First(exhaustedRegions); region; region = region->next) {
        SetOwner(*region, global);
    }
    while (MemRegion* const region = First(regions)) {
        if (region->freePages == kPagesPerRegion && First(global.regions)) {
            ReleaseRegion(root, regions, *region);
        } else {
            Unlink(regions, *region);
            global.InsertByFreePages(*region, nullptr, First(global.regions));
        }
    }
    Prepend(global.exhaustedRegions, exhaustedRegions);
    global.freePages += freePages;
    freePages = 0;
}

void MemHeap::ReleaseAllRegions(MemRoot& root) noexcept {
    while (MemRegion* const region = First(regions)) ReleaseRegion(root, regions, *region);
    while (MemRegion* const region = First(exhaustedRegions)) {
        ReleaseRegion(root, exhaustedRegions, *region);
    }
}

}  // namespace AUX::memory
