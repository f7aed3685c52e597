#include "foundation/memory_large.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/memory.h"

namespace AUX::memory {
namespace {

constexpr std::size_t kPageGranularity = 0x10000;

void* WithHeader(void* memory, std::size_t total, BlockKind kind) noexcept {
    if (!memory) return nullptr;
    return new (memory) LargeHeader{0, total - sizeof(LargeHeader), kLargeMarker, kind} + 1;
}

void* AllocatePages(std::size_t total) noexcept {
    const std::size_t size = (total + kPageGranularity - 1) & ~(kPageGranularity - 1);
    return WithHeader(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE), size,
                      BlockKind::Pages);
}

}  // namespace

void* AllocateLarge(std::size_t size) noexcept {
    const std::size_t total = LargeTotal(size);
    if (KindOfTotal(total) == BlockKind::Pages) return AllocatePages(total);
    return WithHeader(HeapAlloc(GetProcessHeap(), 0, total), total, BlockKind::ProcessHeap);
}

void* ReallocateLarge(void* block, std::size_t size) noexcept {
    const LargeHeader header = LargeHeaderOf(block);
    const std::size_t total = LargeTotal(size);
    if (header.kind == BlockKind::ProcessHeap) {
        void* const memory = &LargeHeaderOf(block);
        return WithHeader(HeapReAlloc(GetProcessHeap(), 0, memory, total), total,
                          BlockKind::ProcessHeap);
    }
    void* const moved = AllocatePages(total);
    if (!moved) return nullptr;
    const std::size_t usable = header.usableSize;
    std::memcpy(moved, block, std::min(usable, size));
    FreeLarge(block);
    return moved;
}

void FreeLarge(void* block) noexcept {
    LargeHeader& header = LargeHeaderOf(block);
    if (header.kind == BlockKind::ProcessHeap) {
        (void)HeapFree(GetProcessHeap(), 0, &header);
    } else {
        (void)VirtualFree(&header, 0, MEM_RELEASE);
    }
}

}  // namespace AUX::memory
