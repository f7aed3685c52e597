#pragma once

/// What sees the messages of dialogs and menus before they do.

#include "platform/posix/user/window_types.h"

struct HHOOK__;
using HHOOK = HHOOK__*;
using HOOKPROC = LRESULT(CALLBACK*)(int, WPARAM, LPARAM);

inline constexpr int WH_MSGFILTER = -1;
inline constexpr int MSGF_DIALOGBOX = 0;

/// Has a procedure asked about each message that a dialog of the calling thread is about to handle:
/// with MSGF_DIALOGBOX and the address of the MSG. What is not 0 means that it is handled. The one
/// set last is asked, and hands on by CallNextHookEx.
/// \param kind, module, thread  WH_MSGFILTER, null and the calling thread: there is nothing else.
/// \return null (ERROR_INVALID_PARAMETER, ERROR_NOT_ENOUGH_MEMORY) on failure.
HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread) noexcept;
/// On the thread that has set it; also from inside a procedure.
BOOL UnhookWindowsHookEx(HHOOK hook) noexcept;
/// Asks the procedure that was set before the one that runs.
LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam) noexcept;
/// Asks the calling thread's procedures. \return whether the message is handled.
BOOL CallMsgFilterW(MSG* message, int code) noexcept;
