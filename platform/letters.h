#pragma once

/// Capitals and small letters.

#include "platform/base.h"

#ifndef _WIN32

/// Compares two texts without regard to case, a null pointer before all others. The order is that
/// of the capitals' units; the system's own follows its language and sees signs apart from letters.
/// \return below, at or above 0.
int lstrcmpiW(LPCWSTR a, LPCWSTR b) noexcept;

/// Turns capitals into small letters, unit by unit. \return `length`.
DWORD CharLowerBuffW(LPWSTR text, DWORD length) noexcept;

#endif
