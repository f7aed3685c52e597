#pragma once

/// Copying where memory can vanish: a view of a file whose bytes are no longer there when the copy
/// reaches them, since the file was cut, its network or its disk has gone, or the disk is full.

#include <cstddef>

namespace platform {

enum class CopyOutcome : int { Done = 0, SourceLost = 1, TargetLost = 2 };

/// Copies bytes between places that do not overlap. A fault of this copy is its outcome, which
/// tells the side that could not be reached; a part may have been copied then. Any other fault goes
/// where it would go without this.
///
/// On Windows the system finds the handler by the code that faults, and nothing is set up. Natively
/// the first copy puts a handler of SIGBUS and SIGSEGV in front of the process's own, which it
/// calls for any fault outside of such copies; a program that sets its own later and does not call
/// the one it found, and a thread that blocks these signals, are not guarded.
[[nodiscard]] CopyOutcome GuardedCopy(void* to, const void* from, std::size_t size) noexcept;

}  // namespace platform
