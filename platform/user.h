#pragma once

/// Message boxes and windows as far as the command needs them.

#include "platform/base.h"

#ifndef _WIN32

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_ICONERROR = 0x10;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

/// Writes the message to the standard error output and gives IDOK, or what a test has installed.
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) noexcept;
/// The active window of the calling thread, or null.
HWND GetActiveWindow() noexcept;

#endif
