#pragma once

#include "host/exit_codes.h"
#include "host/options.h"

namespace host {

/// Does what the options say: loads the page and the add-in, presses the button, answers what the
/// add-in asks, waits if told to. Errors go to the standard error output.
ExitCode Run(const Options& options);

}  // namespace host
