#pragma once

#include <gtest/gtest.h>

#include "tests/end_to_end/processes.h"
#include "tests/support/test_profile.h"

namespace end_to_end {

/// The host as a program, in a profile of its own that its children inherit.
class HostTest : public testing::Test {
protected:
    HostTest();

    /// The folder of the programs: the host, the add-in and the real converter.
    static std::filesystem::path Programs();
    /// The same with the recording converter instead of the real one.
    static std::filesystem::path RecordingPrograms();
    /// The host's program in one of them.
    static std::filesystem::path Host(const std::filesystem::path& programs);

    /// Writes a page. \return its path.
    std::string WritePage(const std::string& name, const std::string& markup) const;

    /// What the recording converter wrote; empty if it did not.
    [[nodiscard]] std::string Recorded(const char* name) const;

    const test_support::TestProfile profile_;
    const std::filesystem::path folder_;   // the test's own,
    const std::filesystem::path temp_;     // and below it the temporary folder,
    const std::filesystem::path records_;  // what the recording converter leaves,
    const std::filesystem::path pdf_;      // and where the PDF is to go
};

std::string ReadFile(const std::filesystem::path& path);
std::string Utf8(const std::filesystem::path& path);

/// Sleeps for the moment between two looks of Eventually.
void Pause();

/// Waits until `condition` holds, a minute at most. \return whether it does.
template <class Condition>
bool Eventually(Condition condition) {
    for (int look = 0; look < 12'000; ++look) {
        if (condition()) return true;
        Pause();
    }
    return false;
}

}  // namespace end_to_end
