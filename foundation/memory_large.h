#pragma once

#include <cstddef>

#include "foundation/memory_layout.h"

/// Blocks above the largest small request, and all blocks while there is no root: from the process
/// heap, or above 1 MiB as pages of their own. Sizes are at most kMaxRequest.
namespace AUX::memory {

/// The bytes of the whole allocation for a request, short of the rounding to pages.
constexpr std::size_t LargeTotal(std::size_t size) noexcept {
    return ((size + 15) & ~std::size_t{15}) + sizeof(LargeHeader);
}

/// Which kind of block serves a total size.
constexpr BlockKind KindOfTotal(std::size_t total) noexcept {
    return total <= 0x100000 ? BlockKind::ProcessHeap : BlockKind::Pages;
}

/// Null if memory runs out.
[[nodiscard]] void* AllocateLarge(std::size_t size) noexcept;

/// Gives a large block another size without changing its kind; the content stays, the block may
/// move. Null, with the block untouched, if memory runs out.
[[nodiscard]] void* ReallocateLarge(void* block, std::size_t size) noexcept;

void FreeLarge(void* block) noexcept;

}  // namespace AUX::memory
