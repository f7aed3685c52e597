#pragma once

/// The state of the user's profile, for programs that have to explain a failure.

#include <string>

namespace platform {

/// Whether settings can be read and saved. If not, `problem` gets sentences for the user, in
/// English and UTF-8: what is wrong with which file, and what to do; else it stays. Reads the whole
/// registry file, so it is for start-up and for failures. On Windows the system answers for its
/// registry: always true.
bool CheckProfile(std::string& problem);

}  // namespace platform
