#pragma once

/// The checkpoint that every call of the layer passes which a test can make fail.

#include <atomic>

#include "platform/base.h"

namespace platform {

extern std::atomic<bool> faultsArmed;
bool HitFault(const char* call) noexcept;

/// Whether this call has to fail: the thread's error code is set then. Costs one load when no test
/// has armed a fault. \param call  The name of the call as its callers write it, such as
/// "CreateFileW".
[[nodiscard]] inline bool InjectFault(const char* call) noexcept {
    return faultsArmed.load(std::memory_order_relaxed) && HitFault(call);
}

}  // namespace platform
