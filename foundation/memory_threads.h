#pragma once

#include "foundation/memory_layout.h"

/// The map from thread ids to heaps: the node in the shared block, and further nodes when it is
/// full. Every call needs the global heap's lock.
namespace AUX::memory {

/// Sets up the first node.
void InitThreads(MemRoot& root) noexcept;

/// The heap of a thread; null if it has none.
[[nodiscard]] MemHeap* FindThread(MemRoot& root, std::uint32_t threadId) noexcept;

/// Enters a thread that has no entry. \return false, with nothing changed, if memory runs out.
[[nodiscard]] bool EnterThread(MemRoot& root, std::uint32_t threadId, MemHeap* heap) noexcept;

/// Takes a thread's entry out, if there is one.
void RemoveThread(MemRoot& root, std::uint32_t threadId) noexcept;

/// Gives back all nodes but the first.
void FreeThreadNodes(MemRoot& root) noexcept;

}  // namespace AUX::memory
