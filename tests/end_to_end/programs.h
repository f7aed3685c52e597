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

}  // namespace end_to_end
