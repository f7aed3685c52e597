#pragma once

#include <cstdint>
#include <gtest/gtest.h>

#include "foundation/memory_testing.h"

namespace test_support {

/// Runs `step` with its first request for memory failing, then with its second, and so on to the
/// first run that all requests of were granted. `step` takes a function that tells whether its run
/// has met the failure yet, and gives back all memory that it takes. \return the failed runs.
template <class Step>
std::uint64_t FailEachAllocation(Step step) {
    AUX::testing::AllocationWatch watch;
    constexpr std::uint64_t kMostRuns = 300;
    for (std::uint64_t n = 1; n < kMostRuns; ++n) {
        const std::uint64_t before = watch.Failures();
        const auto hasFailed = [&] { return watch.Failures() > before; };
        SCOPED_TRACE(n);
        watch.FailOnce(n);
        step(hasFailed);
        watch.FailNone();
        EXPECT_EQ(watch.LiveBlocks(), 0) << "not given back";
        if (!hasFailed()) return n - 1;
    }
    ADD_FAILURE() << "no end";
    return 0;
}

}  // namespace test_support
