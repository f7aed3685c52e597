#include "host/converter_wait.h"

#include <algorithm>
#include <string>

#include "host/interrupt.h"
#include "platform/testing.h"

namespace host {
namespace {

using platform::testing::Programs;
using std::chrono::milliseconds;

// STILL_ACTIVE: what no program ends with.
constexpr DWORD kNoCode = 259;
// A program that a signal has ended has this and the signal's number, as in a shell.
constexpr DWORD kKilled = 128;
constexpr milliseconds kSlice{100};

struct Ending {
    Programs programs = Programs::StillRunning;
    DWORD code = kNoCode;
};

/// In slices, so that a signal is noticed; but where the code of a program that ends between two of
/// them would be lost, in one.
Ending WaitFor(milliseconds limit) {
    const milliseconds part = platform::testing::kOwnsTheSystem ? std::min(limit, kSlice) : limit;
    const auto until = std::chrono::steady_clock::now() + limit;
    Ending ending;
    do {
        ending.programs = platform::testing::WaitForStartedPrograms(
            static_cast<DWORD>(part.count()), &ending.code);
    } while (ending.programs == Programs::StillRunning && !Interrupted() &&
             std::chrono::steady_clock::now() < until);
    return ending;
}

}  // namespace

ExitCode WaitForResult(milliseconds timeout, Progress& progress) {
    const Ending ending = WaitFor(timeout);
    if (ending.programs == Programs::StillRunning) {
        if (Interrupted()) {
            progress.Say("interrupted; the converter is not waited for");
            return ExitCode::Interrupted;
        }
        progress.Say("the converter has not ended in time; it goes on");
        return ExitCode::TimedOut;
    }
    if (ending.code == 0 || ending.code == kNoCode) return ExitCode::Ok;
    if (platform::testing::kOwnsTheSystem && ending.code > kKilled) {
        progress.Say("the converter was killed by signal " + std::to_string(ending.code - kKilled));
    } else {
        progress.Say("the converter failed with code " + std::to_string(ending.code));
    }
    return ExitCode::ConverterFailed;
}

ExitCode WaitForFetch(milliseconds limit) {
    const Ending ending = WaitFor(limit);
    // The converter may not have fetched its job yet, which ends with the tab.
    const bool cut = ending.programs == Programs::StillRunning && Interrupted();
    return cut ? ExitCode::Interrupted : ExitCode::Ok;
}

}  // namespace host
