#include "host/interrupt.h"

#include <csignal>

namespace host {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set it");

extern "C" void OnSignal(int number) {
    interrupted = true;
    std::signal(number, SIG_DFL);
}

}  // namespace

void CatchInterrupts() {
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
}

const std::atomic<bool>& Interrupted() { return interrupted; }

}  // namespace host
