#include "foundation/memory_testing.h"

#include <limits>

#include "foundation/memory_watch.h"

namespace AUX {

constinit memory::Watch memory::watch;

namespace testing {
using memory::watch;

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
