#pragma once

#include <chrono>

#include "host/exit_codes.h"
#include "host/progress.h"

namespace host {

/// How long a tab is kept for the converter to fetch a job from shared memory, when nobody waits
/// for its result. It reads the job first thing, and keeps the memory alive itself from then on.
inline constexpr std::chrono::milliseconds kFetchLimit{5'000};

/// Waits for the converter that the command has just started, tells how it ended.
/// \param timeout  When it passes, the converter goes on and TimedOut is given.
/// \return Ok, ConverterFailed, TimedOut or Interrupted.
ExitCode WaitForResult(std::chrono::milliseconds timeout, Progress& progress);

/// Waits until the converter has ended, at most `limit`; its result does not count.
/// \return Ok or Interrupted.
ExitCode WaitForFetch(std::chrono::milliseconds limit);

}  // namespace host
