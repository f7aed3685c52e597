#pragma once

#include <atomic>

namespace host {

/// Lets SIGINT and SIGTERM raise a flag instead of ending the program, so
/// that it can put away what it started. A second signal ends it at once.
void CatchInterrupts();

/// The flag; false until a signal comes.
const std::atomic<bool>& Interrupted();

}  // namespace host
