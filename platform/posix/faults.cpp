#include "platform/posix/faults.h"

#include <cstring>
#include <mutex>

#include "platform/testing.h"

namespace platform {

std::atomic<bool> faultsArmed{false};

namespace {

struct ArmedFault {
    std::mutex mutex;
    const char* call = "";  // borrowed from the test for as long as the fault is armed
    unsigned left = 0;      // calls until the one that fails, that one included; 0 is none
    DWORD error = 0;
    bool hasFired = false;
};

constinit ArmedFault armed;

}  // namespace

bool HitFault(const char* call) noexcept {
    const std::lock_guard lock(armed.mutex);
    if (armed.left == 0) return false;
    if (std::strcmp(armed.call, "*") != 0 && std::strcmp(armed.call, call) != 0) return false;
    if (--armed.left > 0) return false;
    armed.hasFired = true;
    SetLastError(armed.error);
    return true;
}

namespace testing {

InjectedFault::InjectedFault(const char* call, unsigned nth, DWORD error) {
    const std::lock_guard lock(armed.mutex);
    armed.call = call;
    armed.left = nth;
    armed.error = error;
    armed.hasFired = false;
    faultsArmed = true;
}

InjectedFault::~InjectedFault() {
    const std::lock_guard lock(armed.mutex);
    armed.left = 0;
    faultsArmed = false;
}

bool InjectedFault::HasFired() const {
    const std::lock_guard lock(armed.mutex);
    return armed.hasFired;
}

}  // namespace testing
}  // namespace platform
