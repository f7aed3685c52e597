#pragma once

#include <string>
#include <vector>

namespace end_to_end {

/// The command lines of all running processes that name `text`, but this one's.
std::vector<std::string> ProcessesNaming(const std::string& text);

}  // namespace end_to_end
