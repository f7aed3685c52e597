#pragma once

/// The thread's locale.

#include "platform/base.h"

#ifndef _WIN32

inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;

/// What the thread set last; before that LOCALE_USER_DEFAULT (0x0400). Nothing here depends on it.
LCID GetThreadLocale() noexcept;
/// FALSE with ERROR_INVALID_PARAMETER for 0.
BOOL SetThreadLocale(LCID locale) noexcept;

#endif
