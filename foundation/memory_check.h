#pragma once

#include <cstddef>

/// A debugging aid for the allocator. Costs nothing unless it is called.
namespace AUX {

/// What the allocator's memory holds, or the first thing that is wrong with it.
struct HeapReport {
    const char* fault = nullptr;  // constant text; null if all is well
    const void* where = nullptr;  // the heap, region, page or block that it was seen in
    unsigned regions = 0;         // seen so far; RegionCount() if no thread allocates
    std::size_t smallBlocks = 0;  // handed out, as seen so far
};

/// Walks all heaps of the process with their regions, pages and free blocks, and compares lists,
/// states and counts. Threads may go on allocating meanwhile; those wait that need the global heap
/// or the one that is looked at. Memory that is overwritten badly enough can make it fault itself.
[[nodiscard]] HeapReport CheckHeap() noexcept;

/// How many regions the heaps of the process hold; 0 while the allocator has no heaps.
[[nodiscard]] unsigned RegionCount() noexcept;

}  // namespace AUX
