#pragma once

#include <sys/types.h>

#include "platform/base.h"

namespace platform {

/// Notes a child that runs on its own. It is waited for in the background, so that it leaves no
/// zombie.
void WatchProgram(pid_t child) noexcept;

/// Waits until no watched program runs. `exitCode` (may be null) gets the code of the one that was
/// noted last, 128 + the signal for one that was killed, if any was noted since the last call that
/// gave a code. \return false when the time is over first.
bool WaitForWatchedPrograms(DWORD timeoutMs, DWORD* exitCode) noexcept;

/// How many programs were noted so far.
unsigned CountWatchedPrograms() noexcept;

}  // namespace platform
