#include "host/converter_wait.h"

#include <algorithm>
#include <string>

#include "host/interrupt.h"
#include "platform/testing.h"

namespace host {
namespace {

using platform::testing::Programs;
using std::chrono::milliseconds;

// No program's code: programs have 0 to 255 natively, and Windows' status codes are no multiple of
// it.
constexpr DWORD kNoCode = 0xFFFFFFFE;
constexpr milliseconds kSlice{100};

struct Ending {
    Programs programs = Programs::StillRunning;
    DWORD code = kNoCode;
};

/// In slices, so that a signal is noticed.
Ending WaitFor(milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    Ending ending;
    do {
        const auto slice = static_cast<DWORD>(std::min(limit, kSlice).count());
        ending.programs = platform::testing::WaitForStartedPrograms(slice, &ending.code);
    } while (ending.programs == Programs::StillRunning && !Interrupted() &&
             std::chrono::steady_clock::now() < until);
    return ending;
}

/// Where the system is our own, a program that was started has left its code by now.
bool NothingStarted(const Ending& ending) {
    return platform::testing::kOwnsTheSystem && ending.programs == Programs::Ended &&
           ending.code == kNoCode;
}

ExitCode SayNothingStarted(Progress& progress) {
    progress.Say("the converter could not be started");
    return ExitCode::CommandEnded;
}

}  // namespace

ExitCode WaitForResult(milliseconds timeout, Progress& progress) {
    const Ending ending = WaitFor(timeout);
    if (ending.programs == Programs::StillRunning) {
        if (Interrupted()) return ExitCode::Interrupted;
        progress.Say("the converter has not ended in time; it goes on");
        return ExitCode::TimedOut;
    }
    if (NothingStarted(ending)) return SayNothingStarted(progress);
    if (ending.code == 0 || ending.code == kNoCode) return ExitCode::Ok;
    progress.Say("the converter failed with code " + std::to_string(ending.code));
    return ExitCode::ConverterFailed;
}

ExitCode WaitForFetch(Progress& progress) {
    return NothingStarted(WaitFor(kFetchLimit)) ? SayNothingStarted(progress) : ExitCode::Ok;
}

}  // namespace host
