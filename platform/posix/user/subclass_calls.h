#pragma once

/// Window procedures stacked on a window, and windows asked in narrow text.

#include "platform/posix/user/window_types.h"

using SUBCLASSPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);

/// Puts a procedure in front of a window's own; the one added last is asked first. A procedure that
/// is there with the same id only gets the new data.
BOOL SetWindowSubclass(HWND window, SUBCLASSPROC procedure, UINT_PTR id, DWORD_PTR data) noexcept;
/// Also from inside the procedure. \return FALSE if it was not there.
BOOL RemoveWindowSubclass(HWND window, SUBCLASSPROC procedure, UINT_PTR id) noexcept;
/// Asks the next procedure; only from inside one of the stacked ones.
LRESULT DefSubclassProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
