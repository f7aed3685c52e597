#include "foundation/memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>

#include "foundation/memory_testing.h"

namespace AUX {
namespace {

// What a watch sees. With no watch only `on` is read, a constant to every processor's cache.
struct Watch {
    std::atomic<bool> on{false};
    std::atomic<std::uint64_t> requests{0};
    std::atomic<std::uint64_t> failures{0};
    std::atomic<std::uint64_t> failFirst{0};
    std::atomic<std::uint64_t> failLast{0};
    std::atomic<std::int64_t> liveBlocks{0};
};
constinit Watch watch;

bool MustFail() noexcept {
    const std::uint64_t number = watch.requests.fetch_add(1) + 1;
    if (number < watch.failFirst || number > watch.failLast) return false;
    watch.failures.fetch_add(1);
    return true;
}

bool IsWatched() noexcept { return watch.on.load(std::memory_order_relaxed); }

}  // namespace

void* Alloc(std::size_t size) noexcept {
    if (size == 0 || size > kMaxRequest) return nullptr;
    if (!IsWatched()) return std::malloc(size);
    if (MustFail()) return nullptr;
    void* const block = std::malloc(size);
    if (block) watch.liveBlocks.fetch_add(1);
    return block;
}

void* Realloc(void* block, std::size_t size) noexcept {
    if (!block) return Alloc(size);
    if (size > kMaxRequest) return nullptr;
    if (IsWatched() && MustFail()) return nullptr;
    // The run-time's realloc would free the block for a size of 0.
    return std::realloc(block, size ? size : 1);
}

void* Resize(void* block, std::size_t size) noexcept { return Realloc(block, size); }

void Free(void* block) noexcept {
    if (block && IsWatched()) watch.liveBlocks.fetch_sub(1);
    std::free(block);
}

namespace testing {
namespace {

void FailBetween(std::uint64_t first, std::uint64_t last) noexcept {
    watch.failLast = 0;  // Nothing fails while the two limits do not belong together.
    watch.failFirst = first;
    watch.failLast = last;
}

}  // namespace

AllocationWatch::AllocationWatch() noexcept {
    FailNone();
    watch.requests = 0;
    watch.failures = 0;
    watch.liveBlocks = 0;
    watch.on = true;
}

AllocationWatch::~AllocationWatch() { watch.on = false; }

void AllocationWatch::FailOnce(std::uint64_t n) noexcept {
    const std::uint64_t number = watch.requests + n;
    FailBetween(number, number);
}

void AllocationWatch::FailFrom(std::uint64_t n) noexcept {
    FailBetween(watch.requests + n, std::numeric_limits<std::uint64_t>::max());
}

void AllocationWatch::FailNone() noexcept { FailBetween(0, 0); }

std::uint64_t AllocationWatch::Requests() const noexcept { return watch.requests; }
std::uint64_t AllocationWatch::Failures() const noexcept { return watch.failures; }
std::int64_t AllocationWatch::LiveBlocks() const noexcept { return watch.liveBlocks; }

}  // namespace testing
}  // namespace AUX
