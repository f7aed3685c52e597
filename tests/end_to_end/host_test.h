#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/test_profile.h"

namespace end_to_end {

struct Finished {
    int code = -1;       // the exit code, natively 128 + the signal for a killed program
    std::string output;  // of both outputs
};

/// Runs a program to its end, a minute at most; it inherits the test's environment. Arguments are
/// UTF-8, without the program's name. The code is -1 if it does not end, and not 0 if it
/// cannot be started.
Finished RunProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments);

/// A program that runs beside the test, natively only. Killed at the end of this object, if it
/// still runs.
class Process {
public:
    Process(const std::filesystem::path& path, const std::vector<std::string>& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Waits for the end, a minute at most.
    Finished Wait();
    /// What it has written so far.
    const std::string& Output();
    /// Without a chance to tidy up, for SIGKILL. Of its children none ends.
    void Signal(int number) const;

private:
    int process_ = -1;
    std::string text_;
    int output_ = -1;  // our end of the pipe; does not block
};

/// The command lines of all running processes that name `text`. Natively only.
std::vector<std::string> ProcessesNaming(const std::string& text);

/// The host as a program, in a profile of its own that its children inherit.
class HostTest : public testing::Test {
protected:
    HostTest();
    ~HostTest() override;

    /// The folder of the programs: the host, the add-in and the real converter.
    static std::filesystem::path Programs();
    /// The same with the recording converter instead of the real one.
    static std::filesystem::path RecordingPrograms();
    /// The host's program in one of them, which is then the one whose add-in is registered.
    std::filesystem::path Host(const std::filesystem::path& programs) const;
    /// Has a host install or remove its add-in.
    void Install(const std::filesystem::path& programs,
                 const std::vector<std::string>& task = {"register"}) const;

    /// Writes a page. \return its path.
    std::string WritePage(const std::string& name, const std::string& markup) const;

    /// What the recording converter wrote; empty if it did not.
    [[nodiscard]] std::string Recorded(const char* name) const;

    const test_support::TestProfile profile_;
    const std::filesystem::path folder_;   // the test's own,
    const std::filesystem::path temp_;     // and below it the temporary folder,
    const std::filesystem::path records_;  // what the recording converter leaves,
    const std::filesystem::path pdf_;      // and where the PDF is to go

private:
    mutable std::filesystem::path registered_;  // the folder of the registered add-in
};

std::string ReadFile(const std::filesystem::path& path);
std::string Utf8(const std::filesystem::path& path);

/// The program ended with this code, and said this.
void ExpectEnd(const Finished& run, int code, const std::string& says);

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
