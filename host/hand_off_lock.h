#pragma once

#include <chrono>

#include "host/progress.h"
#include "platform/files.h"

namespace host {

/// The shared memory of a job has one name for all tabs: a second host that published before the
/// first one's converter has fetched its job would replace that job. So hosts of one profile take
/// turns from the press of the button on. The lock ends with its holder, however that ends.
class HandOffLock {
public:
    /// Waits for the turn. Where no lock can be had (a read-only profile) the host goes on without.
    /// \return false when the time is over or a signal has come.
    [[nodiscard]] bool Take(std::chrono::milliseconds timeout, Progress& progress);

private:
    platform::FileHandle file_;  // open for this process alone
};

}  // namespace host
