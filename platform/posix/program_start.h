#pragma once

#include <string>

#include "platform/base.h"

namespace platform {

/// Starts a program in a session of its own, with no input and this process's output, and watches
/// it (WatchProgram). Texts are the host's. \param parameters  One argument, raw; empty: none.
/// \param folder  Where it starts; empty: the current folder. \return 0, or a code of 32 or less as
/// ShellExecuteW gives it.
[[nodiscard]] DWORD StartProgram(const std::string& program, const std::string& parameters,
                                 const std::string& folder);

}  // namespace platform
