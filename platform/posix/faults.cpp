#include "platform/posix/faults.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/testing.h"

namespace platform {

std::atomic<bool> faultsArmed{false};

namespace testing {

struct InjectedFault::State {
    const char* call;  // borrowed from the test for as long as the fault is armed
    unsigned first;    // the calls of this name that fail, counted from 1
    unsigned last;
    DWORD error;
    unsigned calls = 0;
    unsigned fired = 0;
};

}  // namespace testing

namespace {

using Fault = testing::InjectedFault::State;

std::mutex faultMutex;
constinit std::vector<Fault*> armed;

/// Whether a fault wants this call to fail.
bool Count(Fault& fault, const char* call) {
    if (std::strcmp(fault.call, "*") != 0 && std::strcmp(fault.call, call) != 0) return false;
    ++fault.calls;
    if (fault.calls < fault.first || fault.calls > fault.last) return false;
    ++fault.fired;
    return true;
}

}  // namespace

bool HitFault(const char* call) noexcept {
    const std::lock_guard lock(faultMutex);
    bool mustFail = false;
    for (Fault* fault : armed) {
        if (!Count(*fault, call)) continue;
        SetLastError(fault->error);
        mustFail = true;
    }
    return mustFail;
}

namespace testing {

InjectedFault::InjectedFault(const char* call, unsigned nth, DWORD error, unsigned count)
    : state_(new State{call, nth, nth + count - 1, error}) {
    const std::lock_guard lock(faultMutex);
    armed.push_back(state_.get());
    faultsArmed = true;
}

InjectedFault::~InjectedFault() {
    const std::lock_guard lock(faultMutex);
    armed.erase(std::find(armed.begin(), armed.end(), state_.get()));
    faultsArmed = !armed.empty();
}

unsigned InjectedFault::Times() const {
    const std::lock_guard lock(faultMutex);
    return state_->fired;
}

}  // namespace testing
}  // namespace platform
