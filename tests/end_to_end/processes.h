#pragma once

#include "tests/end_to_end/programs.h"

namespace end_to_end {

/// A program that runs beside the test, started like one of RunProgram. Killed at the end of this
/// object, if it still runs.
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

/// The command lines of all running processes that name `text`.
std::vector<std::string> ProcessesNaming(const std::string& text);

}  // namespace end_to_end
