#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/program.h"
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

    /// The test's own folder, and one below it where the recording converter leaves what it found.
    [[nodiscard]] const std::filesystem::path& Folder() const { return folder_; }
    [[nodiscard]] const std::filesystem::path& Records() const { return records_; }
    [[nodiscard]] std::filesystem::path TempFolder() const;

    /// Writes a page. \return its path.
    std::filesystem::path WritePage(const std::string& name, const std::string& markup) const;

    /// Starts or runs the host of `programs` on a page with further options.
    std::unique_ptr<test_support::Program> StartHost(const std::filesystem::path& programs,
                                                     const std::filesystem::path& page,
                                                     std::vector<std::string> options) const;
    test_support::Finished RunHost(const std::filesystem::path& programs,
                                   const std::filesystem::path& page,
                                   std::vector<std::string> options) const;

    /// What the recording converter wrote; empty if it did not.
    [[nodiscard]] std::string Recorded(const char* name) const;

private:
    test_support::TestProfile profile_;
    std::filesystem::path folder_;
    std::filesystem::path records_;
};

std::string ReadFile(const std::filesystem::path& path);

/// Waits until `condition` holds, half a minute at most. \return whether it does.
template <class Condition>
bool Eventually(Condition condition);

/// Sleeps for the moment between two looks of Eventually.
void Pause();

template <class Condition>
bool Eventually(Condition condition) {
    for (int look = 0; look < 6'000; ++look) {
        if (condition()) return true;
        Pause();
    }
    return false;
}

}  // namespace end_to_end
