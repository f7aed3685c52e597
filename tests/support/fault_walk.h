#pragma once

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/testing.h"
#include "tests/support/fail_each_allocation.h"

namespace test_support {

/// The files that this process has open, where it can tell; 0 elsewhere.
inline std::int64_t OpenFiles() {
    if (!platform::testing::kOwnsTheSystem) return 0;
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

/// Runs `work` once for each request for memory that it makes, with that one failing, and once for
/// each call of the system, with that one giving `error` (only where calls can be made to fail),
/// to the first run that nothing fails in. `work` takes a function that tells whether its run has
/// met the failure yet, and gives back all that it takes. \return the runs that met a failure.
template <class Work>
std::uint64_t WalkFaults(Work work, DWORD error = ERROR_GEN_FAILURE) {
    work([] { return false; });  // What is made at the first use only is made now.
    std::uint64_t failures = FailEachAllocation(work);
    constexpr unsigned kMostRuns = 1000;
    bool isMet = platform::testing::kOwnsTheSystem;
    for (unsigned n = 1; isMet && n < kMostRuns; ++n) {
        SCOPED_TRACE(testing::Message() << "call " << n);
        AUX::testing::AllocationWatch watch;
        const std::int64_t files = OpenFiles();
        {
            const platform::testing::InjectedFault fault("*", n, error);
            work([&] { return fault.HasFired(); });
            isMet = fault.HasFired();
        }
        failures += isMet;
        EXPECT_EQ(watch.LiveBlocks(), 0) << "not given back";
        EXPECT_EQ(OpenFiles(), files) << "not closed";
    }
    EXPECT_FALSE(isMet) << "no end";
    return failures;
}

}  // namespace test_support
