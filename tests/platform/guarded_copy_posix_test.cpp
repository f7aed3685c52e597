#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/guarded_copy.h"

namespace platform {
namespace {

void ExitWith(int signal) { _exit(signal); }
void ExitWithCode(int, siginfo_t* information, void*) { _exit(100 + information->si_code); }

/// Sets a handler, lets the guard come in front of it, and then faults elsewhere.
void FaultBehind(struct sigaction action, bool isSent) {
    volatile std::uintptr_t unmapped = 64;  // The compiler knows nothing about it.
    char* const nowhere = reinterpret_cast<char*>(unmapped);
    char byte = 0;
    (void)sigaction(SIGSEGV, &action, nullptr);
    if (GuardedCopy(&byte, nowhere, 1) != CopyOutcome::SourceLost) _exit(99);
    if (isSent) {
        (void)raise(SIGSEGV);
    } else {
        *static_cast<volatile char*>(nowhere) = byte;
    }
    _exit(98);
}

// Each in a process of its own, which has no guard yet.
TEST(GuardedCopyDeathTest, LeavesOtherFaultsToTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct sigaction plain {};
    plain.sa_handler = ExitWith;
    struct sigaction full {};
    full.sa_flags = SA_SIGINFO;
    full.sa_sigaction = ExitWithCode;
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    struct sigaction none {};
    none.sa_handler = SIG_DFL;
    using ::testing::ExitedWithCode;
    using ::testing::KilledBySignal;
    EXPECT_EXIT(FaultBehind(plain, false), ExitedWithCode(SIGSEGV), "");
    EXPECT_EXIT(FaultBehind(full, false), ExitedWithCode(100 + SEGV_MAPERR), "");
    EXPECT_EXIT(FaultBehind(plain, true), ExitedWithCode(SIGSEGV), "");
    EXPECT_EXIT(FaultBehind(ignored, true), ExitedWithCode(98), "");
    EXPECT_EXIT(FaultBehind(ignored, false), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(FaultBehind(none, false), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(FaultBehind(none, true), KilledBySignal(SIGSEGV), "");
}

}  // namespace
}  // namespace platform
