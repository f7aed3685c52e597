#include "foundation/memory.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <xmmintrin.h>

#include "foundation/memory_large.h"
#include "foundation/memory_manager.h"
#include "foundation/memory_watch.h"
#include "platform/sanitizer.h"

namespace AUX {
namespace {

using namespace memory;

constinit std::atomic<std::uint32_t> refusedRequests = 0;

void* Refuse() noexcept {
    refusedRequests.fetch_add(1, std::memory_order_relaxed);
    return nullptr;
}

void* AllocateSmall(MemRoot& root, std::size_t size) noexcept {
    MemHeap* heap = Manager().Heap();
    if (!heap) heap = Manager().AttachThread();
    if (!heap) return nullptr;
    void* const block = heap->Allocate(root, root.classes[(size + 3) / 4]);
    if (block) platform::AllowAccess(block, size);
    return block;
}

// As Alloc, but a size of 0 gets a block too.
void* Allocate(std::size_t size) noexcept {
    MemRoot* const root = Manager().Root();
    return root && size <= kLargestSmall ? AllocateSmall(*root, size) : AllocateLarge(size);
}

void FreeSmall(void* block) noexcept {
    MemManager& manager = Manager();
    MemPage& page = PageOf(block);
    MemHeap* const heap = manager.Heap();
    platform::ForbidAccess(block, page.stride - 2 * sizeof(SmallHeader));
    // Nobody but this thread makes this thread's heap an owner, or takes that away.
    if (heap && page.owner.load(std::memory_order_relaxed) == heap) {
        heap->TakeBack(*manager.Root(), page, block);
    } else {
        manager.TakeBackForeign(page, block);
    }
}

void FreeAny(void* block) noexcept {
    if (IsLarge(block)) {
        FreeLarge(block);
    } else if (Manager().Root()) {
        FreeSmall(block);
    }
    // Without a root it is another module's block, and the locks to give it back are out of reach.
}

std::size_t UsableSize(void* block) noexcept {
    return IsLarge(block) ? static_cast<std::size_t>(LargeHeaderOf(block).usableSize)
                          : PageOf(block).stride - sizeof(SmallHeader);
}

void* Move(void* block, std::size_t usable, std::size_t size) noexcept {
    void* const moved = Allocate(size);
    if (!moved) return Refuse();
    const std::size_t kept = std::min(usable, size);
    if (!IsLarge(block)) platform::AllowAccess(block, kept);
    std::memcpy(moved, block, kept);
    FreeAny(block);
    return moved;
}

void* Reallocate(void* block, std::size_t size, bool mayStay) noexcept {
    if (!block) return Alloc(size);
    if (size > kMaxRequest || Manager().HasEnded()) return nullptr;
    if (watch.IsOn() && watch.MustFail()) return Refuse();
    const std::size_t usable = UsableSize(block);
    if (!IsLarge(block)) return Move(block, usable, size);
    const BlockKind kind = LargeHeaderOf(block).kind;
    const std::size_t total = LargeTotal(size);
    if (mayStay) {
        const std::size_t slack = kind == BlockKind::Pages ? 65536 : 1024;
        const bool isCloseEnough = usable >= size && usable - size <= slack;
        const bool hasItsPages = kind == BlockKind::Pages && KindOfTotal(total) == kind &&
                                 total <= usable + sizeof(LargeHeader);
        if (isCloseEnough || hasItsPages) return block;
    }
    return KindOfTotal(total) == kind ? ReallocateLarge(block, size) : Move(block, usable, size);
}

}  // namespace

void* Alloc(std::size_t size) noexcept {
    if (size == 0 || size > kMaxRequest) return nullptr;
    if (watch.IsOn() && watch.MustFail()) return Refuse();
    void* const block = Allocate(size);
    if (!block) return Refuse();
    if (watch.IsOn()) watch.liveBlocks.fetch_add(1);
    return block;
}

void* Realloc(void* block, std::size_t size) noexcept { return Reallocate(block, size, false); }

void* Resize(void* block, std::size_t size) noexcept { return Reallocate(block, size, true); }

void Free(void* block) noexcept {
    // After the module's end the blocks may be gone, even the bytes that tell their kind.
    if (!block) return;
    // Both the block's header and the page's are often outside the caches: one is fetched while the
    // other is waited for. Of a large block there is no page, and the hint does nothing.
    _mm_prefetch(reinterpret_cast<const char*>(&PageOf(block)), _MM_HINT_T0);
    if (Manager().HasEnded()) return;
    if (watch.IsOn()) watch.liveBlocks.fetch_sub(1);
    FreeAny(block);
}

std::uint32_t RefusedRequests() noexcept { return refusedRequests.load(std::memory_order_relaxed); }

}  // namespace AUX
