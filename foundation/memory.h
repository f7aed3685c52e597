#pragma once

#include <cstddef>
#include <cstdint>

/// The library's allocator. It serves the library's strings, arrays, streams and objects; a block
/// goes back through AUX::Free, never to the run-time's `free`, nor the other way round. Any thread
/// may free or resize a block of another. Nothing here throws: exhaustion is null.
namespace AUX {

/// The largest request, in bytes; a larger one gives null.
inline constexpr std::size_t kMaxRequest = static_cast<std::size_t>(-1) / 2;

/// Gives a block of at least `size` bytes, aligned to 16, its content undefined.
/// \return null for a size of 0, and when memory runs out.
[[nodiscard]] void* Alloc(std::size_t size) noexcept;

/// Changes a block's size, keeping the content up to the smaller one; the block may move. A null
/// block acts as Alloc; a block brought to size 0 stays a block.
/// \return null when memory runs out; `block` is then untouched and still the caller's.
[[nodiscard]] void* Realloc(void* block, std::size_t size) noexcept;

/// As Realloc, but prefers to leave the block where it is: a block whose room is close enough
/// comes back unchanged. For what grows step by step.
[[nodiscard]] void* Resize(void* block, std::size_t size) noexcept;

/// Gives a block back; null does nothing.
void Free(void* block) noexcept;

/// How many requests of this process could not be granted. For callers of operations that only tell
/// whether they worked: a failure during which this has risen may be one of memory.
[[nodiscard]] std::uint32_t RefusedRequests() noexcept;

}  // namespace AUX
