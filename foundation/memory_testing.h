#pragma once

#include <cstddef>
#include <cstdint>

/// For tests only: makes requests to the allocator fail, and counts what is not given back.
namespace AUX::testing {

/// Watches every request of the process from its construction to its end; one at a time. Requests
/// are Alloc, Realloc and Resize that ask for bytes. Its operations may be called from any thread.
class AllocationWatch {
public:
    AllocationWatch() noexcept;
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    /// Lets the n-th request from now fail (1 is the next one), and no other.
    void FailOnce(std::uint64_t n) noexcept;

    /// Lets the n-th request from now fail, and every one after it.
    void FailFrom(std::uint64_t n) noexcept;

    /// No request fails any more.
    void FailNone() noexcept;

    /// Requests since construction, failed ones included.
    [[nodiscard]] std::uint64_t Requests() const noexcept;

    /// Requests that were made to fail.
    [[nodiscard]] std::uint64_t Failures() const noexcept;

    /// Blocks given out less blocks given back since construction: 0 when nothing leaked.
    [[nodiscard]] std::int64_t LiveBlocks() const noexcept;
};

}  // namespace AUX::testing
