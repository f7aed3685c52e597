#pragma once

#include "platform/posix/base_types.h"

namespace platform::user {

/// The screen that nobody sees, in pixels.
inline constexpr LONG kScreenWidth = 1024;
inline constexpr LONG kScreenHeight = 768;

}  // namespace platform::user
