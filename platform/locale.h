#pragma once

/// The thread's locale, and what the user's says.

#include "platform/base.h"

#ifndef _WIN32

inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;

/// What the thread set last; before that LOCALE_USER_DEFAULT (0x0400). Nothing here depends on it.
LCID GetThreadLocale() noexcept;
/// FALSE with ERROR_INVALID_PARAMETER for 0.
BOOL SetThreadLocale(LCID locale) noexcept;

inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
using LCTYPE = DWORD;
/// The usual sheet of paper: 1 letter, 5 legal, 8 A3, 9 A4.
inline constexpr LCTYPE LOCALE_IPAPERSIZE = 0x0000100A;
/// The answer is a DWORD, two characters wide, and no text.
inline constexpr LCTYPE LOCALE_RETURN_NUMBER = 0x20000000;

/// Tells LOCALE_IPAPERSIZE as a number, from LC_PAPER of the environment, in any locale asked for.
/// \return the characters written, 0 with ERROR_INSUFFICIENT_BUFFER if there is no room for them,
///         ERROR_INVALID_FLAGS for another question. With a length of 0 only the room is told.
int GetLocaleInfoW(LCID locale, LCTYPE question, LPWSTR answer, int length) noexcept;

#endif
