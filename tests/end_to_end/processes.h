#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace end_to_end {

struct Finished {
    int code = -1;       // the exit code, natively 128 + the signal for a killed program
    std::string output;  // of both outputs
};

/// Runs a program to its end, a minute at most; it inherits the test's environment. Arguments are
/// UTF-8, without the program's name. The code is -1 if it cannot be started or does not end.
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

}  // namespace end_to_end
