#include "foundation/memory_check.h"

#include "foundation/memory_manager.h"

namespace AUX {
namespace {

using namespace memory;

// Looks at one heap, whose lock is held. Each step gives false at the first fault.
class HeapCheck {
public:
    HeapCheck(MemHeap& heap, HeapReport& report) noexcept : heap_(heap), report_(report) {}

    bool Run() noexcept {
        return CheckRegions(heap_.regions, true) && CheckRegions(heap_.exhaustedRegions, false) &&
               Expect(heap_.freePages == freePages_, "a heap's count of free pages", &heap_) &&
               CheckLists();
    }

private:
    bool Expect(bool isRight, const char* what, const void* where) noexcept {
        if (!isRight) {
            report_.fault = what;
            report_.where = where;
        }
        return isRight;
    }

    bool CheckRegions(const ListHead<MemRegion>& list, bool haveFree) noexcept {
        const MemRegion* previous = nullptr;
        for (MemRegion* region = First(list); region; region = region->next) {
            const std::uint32_t before = previous ? previous->freePages : 0;
            if (!Expect(region->previous == previous, "a region's links", region) ||
                !Expect((region->freePages > 0) == haveFree, "a region on the wrong list",
                        region) ||
                !Expect(region->freePages >= before, "the order of regions", region) ||
                !CheckPagesOf(*region)) {
                return false;
            }
            previous = region;
            ++report_.regions;
            freePages_ += region->freePages;
        }
        return true;
    }

    bool CheckPagesOf(MemRegion& region) noexcept {
        if (!Expect(region.pagesInUse >= 1 && region.pagesInUse <= kPagesPerRegion,
                    "a region's pages in use", &region)) {
            return false;
        }
        std::uint32_t freePages = kPagesPerRegion - region.pagesInUse;
        for (std::uint32_t i = 0; i < region.pagesInUse; ++i) {
            MemPage& page = PageOf(region, i);
            const PageState state = page.state.load(std::memory_order_relaxed);
            if (!Expect(page.owner.load(std::memory_order_relaxed) == &heap_, "a page's owner",
                        &page) ||
                !Expect(page.index == i, "a page's index", &page) ||
                !Expect(state <= PageState::Free, "a page's state", &page)) {
                return false;
            }
            if (state == PageState::Free) {
                ++freePages;
            } else if (++listedPages_; !CheckBlocks(page)) {
                return false;
            }
        }
        return Expect(freePages == region.freePages, "a region's count of free pages", &region);
    }

    // The owner may give blocks back meanwhile, which only adds in front of what is walked here.
    bool CheckBlocks(MemPage& page) noexcept {
        const std::uint32_t word = page.freeWord.load(std::memory_order_acquire);
        if (!Expect(page.sizeClass < kClassCount &&
                        page.stride == BlockSizeOfClass(page.sizeClass) + sizeof(SmallHeader),
                    "a page's class", &page)) {
            return false;
        }
        std::uint32_t count = std::uint32_t{page.blockCount} - page.carvedCount;
        for (std::uint32_t at = MemPage::FreeHead(word); at != 0; ++count) {
            const std::uint32_t inBlocks = at - page.FirstBlock();
            if (!Expect(at >= page.FirstBlock() && inBlocks % page.stride == 0 &&
                            inBlocks / page.stride < page.carvedCount && count < page.blockCount,
                        "a page's list of free blocks", page.At(at)) ||
                !Expect(HeaderOf(page.At(at)).marker == kSmallMarker, "a free block's header",
                        page.At(at))) {
                return false;
            }
            at = HeaderOf(page.At(at)).nextFree;
        }
        report_.smallBlocks += page.blockCount - count;
        return Expect(count == MemPage::FreeCount(word), "a page's count of free blocks", &page);
    }

    bool CheckLists() noexcept {
        for (std::uint32_t i = 0; i < kClassCount; ++i) {
            if (!CheckList(heap_.bins[i], PageState::Available, i)) return false;
        }
        return CheckList(heap_.fullPages, PageState::Full, kClassCount) &&
               Expect(listedPages_ == 0, "a page on no list", &heap_);
    }

    bool CheckList(const ListHead<MemPage>& list, PageState state, std::uint32_t bin) noexcept {
        const MemPage* previous = nullptr;
        for (MemPage* page = First(list); page; page = page->next) {
            const bool isOfBin = bin == kClassCount || page->sizeClass == bin;
            if (!Expect(page->previous == previous, "a page's links", page) ||
                !Expect(isOfBin && page->state.load(std::memory_order_relaxed) == state,
                        "a page on the wrong list", page) ||
                !Expect(listedPages_-- > 0, "a page on two lists", page)) {
                return false;
            }
            previous = page;
        }
        return true;
    }

    MemHeap& heap_;
    HeapReport& report_;
    std::uint32_t freePages_ = 0;
    std::uint32_t listedPages_ = 0;  // seen in regions and not on a list yet
};

bool CheckOne(MemHeap& heap, HeapReport& report) noexcept {
    const HeapLock held(heap);
    return HeapCheck(heap, report).Run();
}

bool CheckThreads(MemRoot& root, HeapReport& report) noexcept {
    for (MemThreadNode* node = &root.threads; node; node = node->next) {
        for (std::uint32_t i = 0; i < node->used; ++i) {
            MemHeap& heap = *node->values[i];
            const bool isSorted = i == 0 || node->Keys()[i - 1] < node->Keys()[i];
            if (!isSorted || heap.threadId != node->Keys()[i]) {
                report.fault = "the map of threads";
                report.where = node;
                return false;
            }
            if (!CheckOne(heap, report)) return false;
        }
    }
    return true;
}

}  // namespace

HeapReport CheckHeap() noexcept {
    MemRoot* const root = Manager().Root();
    HeapReport report;
    if (!root) return report;
    const HeapLock held(*root->globalHeap);
    (void)(CheckOne(*root->globalHeap, report) && CheckThreads(*root, report));
    return report;
}

unsigned RegionCount() noexcept {
    const MemRoot* const root = Manager().Root();
    return root ? root->regionCount.load(std::memory_order_relaxed) : 0;
}

}  // namespace AUX
