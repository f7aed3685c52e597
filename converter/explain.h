#pragma once

#include <string>

#include "converter/command_line.h"
#include "converter/job_block.h"

namespace converter {

enum class ShowPasswords { No, Yes };

/// Says what a command line means, a line for each switch, UTF-8.
std::string Explain(const CommandLine& line);

/// Says what a job holds, a line for each field in the block's order, UTF-8. Passwords appear by
/// their length only unless asked for.
std::string Explain(const Job& job, ShowPasswords show);

}  // namespace converter
