#pragma once

#include "platform/posix/user/window.h"

namespace platform::user {

/// Answers what other threads have sent to this one. The lock, held once, is let go meanwhile.
void RunSentMessages(Lock& lock) noexcept;

}  // namespace platform::user
