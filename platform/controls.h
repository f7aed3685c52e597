#pragma once

/// The common controls, as far as the code uses them.

#include "platform/gdi.h"
#include "platform/user.h"

#ifdef _WIN32
// clang-format off: this header of the system wants the base types before it.
#include <commctrl.h>
// clang-format on
#else
#include "platform/posix/user/subclass_calls.h"
#include "platform/posix/user/tab_calls.h"
#include "platform/posix/user/toolbar_calls.h"
#include "platform/posix/user/up_down_calls.h"
#endif
