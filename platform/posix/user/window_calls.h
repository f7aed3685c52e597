#pragma once

/// Windows without a screen: a tree of windows for each thread, over a screen of 1024 x 768 pixels
/// that nobody sees. A window belongs to the thread that made it; its procedure runs there only.
/// A handle that is not (or no longer) a window's gives ERROR_INVALID_WINDOW_HANDLE.

#include "platform/posix/user/window_types.h"

// Classes. A class with CS_GLOBALCLASS and those of the system are found from every module; a null
// module is the program.

/// \return the class's atom; 0 with ERROR_CLASS_ALREADY_EXISTS, or ERROR_INVALID_PARAMETER for a
///         wrong size or a missing name or procedure.
ATOM RegisterClassExW(const WNDCLASSEXW* info) noexcept;
/// ERROR_CLASS_HAS_WINDOWS while there is a window of it, ERROR_CLASS_DOES_NOT_EXIST.
BOOL UnregisterClassW(LPCWSTR name, HINSTANCE instance) noexcept;
/// Gives what a class was registered with; lpszClassName becomes `name`.
/// \param instance  Null asks for the system's classes.
BOOL GetClassInfoExW(HINSTANCE instance, LPCWSTR name, WNDCLASSEXW* info) noexcept;
/// \return the units written without the terminator; 0 on failure.
int GetClassNameW(HWND window, LPWSTR buffer, int size) noexcept;
LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                        LPARAM lParam) noexcept;
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

// Life.

/// Sends WM_NCCREATE, WM_NCCALCSIZE, WM_CREATE, WM_SIZE, WM_MOVE, and, for WS_VISIBLE, shows it.
/// \param name    The class, by name or atom.
/// \param parent  The parent of a child (WS_CHILD), which needs one; else the owner, or null.
/// \param menu    The id of a child; else the menu, which the window then owns.
/// \return null with ERROR_CANNOT_FIND_WND_CLASS, ERROR_TLW_WITH_WSCHILD,
///         ERROR_INVALID_WINDOW_HANDLE (the parent), or when the window refuses in WM_NCCREATE
///         (0) or WM_CREATE (-1).
HWND CreateWindowExW(DWORD exStyle, LPCWSTR name, LPCWSTR text, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter) noexcept;
/// Sends WM_DESTROY to the window and those below it, then WM_NCDESTROY; windows that it owns go
/// with it. ERROR_ACCESS_DENIED for a window of another thread.
BOOL DestroyWindow(HWND window) noexcept;
BOOL IsWindow(HWND window) noexcept;

// Words and text.

/// \param index  GWLP_... and GWL_..., or an offset into the extra bytes of the class;
///               ERROR_INVALID_INDEX outside them.
LONG_PTR GetWindowLongPtrW(HWND window, int index) noexcept;
/// \return the old value. A change of style sends WM_STYLECHANGING and WM_STYLECHANGED.
LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) noexcept;
BOOL SetWindowTextW(HWND window, LPCWSTR text) noexcept;
/// In the system's narrow code page.
BOOL SetWindowTextA(HWND window, LPCSTR text) noexcept;
/// \return the units written without the terminator.
int GetWindowTextW(HWND window, LPWSTR buffer, int size) noexcept;
int GetWindowTextLengthW(HWND window) noexcept;

// The tree.

HWND GetParent(HWND window) noexcept;
HWND GetWindow(HWND window, UINT relation) noexcept;
BOOL IsChild(HWND parent, HWND window) noexcept;
/// ERROR_CONTROL_ID_NOT_FOUND.
HWND GetDlgItem(HWND window, int id) noexcept;
int GetDlgCtrlID(HWND window) noexcept;
DWORD GetWindowThreadProcessId(HWND window, LPDWORD process) noexcept;

// Place. Rectangles are in pixels; of a child relative to its parent's client area.

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height,
                  UINT flags) noexcept;
BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint) noexcept;
BOOL GetWindowRect(HWND window, RECT* rect) noexcept;
BOOL GetClientRect(HWND window, RECT* rect) noexcept;
BOOL ClientToScreen(HWND window, POINT* point) noexcept;
BOOL ScreenToClient(HWND window, POINT* point) noexcept;
/// Null windows stand for the screen. \return the way moved: x below, y above 16 bits.
int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count) noexcept;
/// Makes a client rectangle the window's, by its frame.
BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL hasMenu, DWORD exStyle) noexcept;

/// The screen, for any window; null for none if nothing else is wanted.
HMONITOR MonitorFromWindow(HWND window, DWORD otherwise) noexcept;
/// ERROR_INVALID_MONITOR_HANDLE; ERROR_INVALID_PARAMETER for a wrong size.
BOOL GetMonitorInfoW(HMONITOR monitor, MONITORINFO* info) noexcept;

// Showing, input.

/// \return whether it was visible before.
BOOL ShowWindow(HWND window, int command) noexcept;
/// Whether it and all its parents have WS_VISIBLE.
BOOL IsWindowVisible(HWND window) noexcept;
/// \return whether it was disabled before.
BOOL EnableWindow(HWND window, BOOL enable) noexcept;
BOOL IsWindowEnabled(HWND window) noexcept;
/// \return the window that had the thread's focus. A disabled window gets none.
HWND SetFocus(HWND window) noexcept;
HWND GetFocus() noexcept;
/// The calling thread's active window; null if there is none.
HWND GetActiveWindow() noexcept;
HWND SetActiveWindow(HWND window) noexcept;
HWND SetCapture(HWND window) noexcept;
HWND GetCapture() noexcept;
BOOL ReleaseCapture() noexcept;

/// Below 0 if the key is down, as the messages of the calling thread's queue tell it.
SHORT GetKeyState(int key) noexcept;
/// Sets all 256 keys for the calling thread; 0x80 is down.
BOOL SetKeyboardState(BYTE* keys) noexcept;
BOOL GetKeyboardState(BYTE* keys) noexcept;

// What has to be painted is kept as one rectangle of each window's client area.

/// \param area  In the client area; null is all of it.
BOOL InvalidateRect(HWND window, const RECT* area, BOOL erase) noexcept;
/// \param area  An area that leaves a rest invalid changes nothing.
BOOL ValidateRect(HWND window, const RECT* area) noexcept;
/// Sends WM_PAINT at once if there is something to paint.
BOOL UpdateWindow(HWND window) noexcept;

// Messages.

/// Runs the window's procedure on its own thread and gives its result; a caller of another thread
/// waits, and answers what is sent to it meanwhile. 0 if the window goes before.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
/// Texts of WM_SETTEXT, WM_GETTEXT and WM_GETTEXTLENGTH are in the system's narrow code page; other
/// messages go as they are.
LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
/// A null window means the calling thread.
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
void PostQuitMessage(int exitCode) noexcept;
/// Gives, in this order: what was posted, WM_QUIT, WM_PAINT of invalid windows, WM_TIMER. Messages
/// that were sent run inside. Waits until there is one.
/// \param window  Null means all of the thread. \return 0 for WM_QUIT, -1 for a wrong window.
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) noexcept;
BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT flags) noexcept;
/// Posts the WM_CHAR of a WM_KEYDOWN: of digits, letters (small ones), space and the keys for
/// return, escape, tab and backspace; there is no keyboard of which others could be read.
BOOL TranslateMessage(const MSG* message) noexcept;
LRESULT DispatchMessageW(const MSG* message) noexcept;

/// \param elapseMs  At least USER_TIMER_MINIMUM counts. \param procedure  Null: WM_TIMER.
/// \return the timer's id, for a null window a new one; 0 on failure.
UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapseMs, TIMERPROC procedure) noexcept;
BOOL KillTimer(HWND window, UINT_PTR id) noexcept;
