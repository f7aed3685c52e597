#pragma once

/// Message boxes, windows, cursors and the case of letters, as far as the code needs them.

#include "platform/unique_handle.h"

#ifndef _WIN32

#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/menu_calls.h"
#include "platform/posix/user/window_calls.h"

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_ICONERROR = 0x10;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

/// Writes the message to the standard error output and gives IDOK, or what a test has installed.
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) noexcept;

/// Turns a terminated text into capitals where it stands, or gives the capital of the single
/// character that stands in place of the pointer.
LPWSTR CharUpperW(LPWSTR text) noexcept;
/// Turns `length` units into capitals where they stand. \return `length`.
DWORD CharUpperBuffW(LPWSTR text, DWORD length) noexcept;

#define IDC_ARROW (reinterpret_cast<LPCWSTR>(UINT_PTR{32512}))
#define IDC_WAIT (reinterpret_cast<LPCWSTR>(UINT_PTR{32514}))

/// One of the system's cursors, by number (`module` null); there are no others here.
/// \return null with ERROR_RESOURCE_NAME_NOT_FOUND.
HCURSOR LoadCursorW(HINSTANCE module, LPCWSTR name) noexcept;
/// Sets the calling thread's cursor, which nobody sees here. Null hides it. \return the old one.
HCURSOR SetCursor(HCURSOR cursor) noexcept;

#endif

namespace platform {

struct MenuTraits {
    using Value = HMENU;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DestroyMenu(value); }
};
using MenuHandle = UniqueHandle<MenuTraits>;

}  // namespace platform
