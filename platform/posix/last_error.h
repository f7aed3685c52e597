#pragma once

/// How the layer turns errno values into Win32 error codes, in one place.

#include "platform/base.h"

namespace platform {

/// The Win32 code for an errno value; ERROR_GEN_FAILURE where none fits.
DWORD ErrorFromErrno(int error) noexcept;

/// Sets the thread's error code and gives FALSE, for `return Fail(...)`.
BOOL Fail(DWORD error) noexcept;
BOOL FailErrno() noexcept;

}  // namespace platform
