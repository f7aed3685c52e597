#pragma once

#include <cstdint>
#include <gtest/gtest.h>

#include "foundation/memory.h"

namespace bag_test {

/// Which requests are counted and may fail: all, or those that are answered with null then. Code
/// that has no exceptions makes only these of its own; the native layer makes others.
enum class Requests { All, Nothrow };

/// The run-time's `operator new` of this program: lets the n-th request from now fail (0: none).
void FailNew(std::uint64_t n, Requests which = Requests::All) noexcept;
/// Whether the failure has been met since.
[[nodiscard]] bool HasNewFailed() noexcept;
/// Blocks given out less blocks given back.
[[nodiscard]] std::int64_t LiveNew() noexcept;

/// Runs `work` once for each request that it makes, with that one failing, to the first run that
/// nothing fails in. It gives back all that it takes. \return the failed runs.
template <class Work>
std::uint64_t FailEachNew(Work work, Requests which = Requests::All) {
    constexpr std::uint64_t kMostRuns = 500;
    AUX::Free(AUX::Alloc(1));  // A thread's first block brings what the thread keeps.
    for (std::uint64_t n = 1; n < kMostRuns; ++n) {
        SCOPED_TRACE(n);
        const std::int64_t live = LiveNew();
        FailNew(n, which);
        work();
        const bool hasFailed = HasNewFailed();
        FailNew(0);
        EXPECT_EQ(LiveNew(), live) << "not given back";
        if (!hasFailed) return n - 1;
    }
    ADD_FAILURE() << "no end";
    return 0;
}

}  // namespace bag_test
