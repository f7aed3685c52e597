#include <utility>

#include "platform/posix/last_error.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

/// Sets WS_VISIBLE and tells whether it was set.
bool SetVisible(HWND handle, bool isVisible) {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return false;
    const bool was = window->style & WS_VISIBLE;
    window->style = isVisible ? window->style | WS_VISIBLE : window->style & ~WS_VISIBLE;
    if (was == isVisible) return was;
    if (isVisible) Invalidate(*window, nullptr, true);
    if (window->parent) Invalidate(*window->parent, &window->place, true);
    return was;
}

bool IsDisabled(const Window* window) {
    while (window && !(window->style & WS_DISABLED)) window = window->parent;
    return window != nullptr;
}

/// The window that a thread's input may go to; null with the error code set.
Window* FindOwn(HWND handle) {
    Window* window = FindWindow(handle);
    if (window && window->thread != &ThisThread()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return window;
}

HWND ExchangeFocus(HWND to) {
    const Lock lock(UserLock());
    return std::exchange(ThisThread().focus, to);
}

/// Moves the focus and tells both windows.
HWND MoveFocus(HWND to) {
    const HWND from = ExchangeFocus(to);
    if (from == to) return from;
    if (from) SendMessageW(from, WM_KILLFOCUS, reinterpret_cast<WPARAM>(to), 0);
    if (to && GetFocus() == to) SendMessageW(to, WM_SETFOCUS, reinterpret_cast<WPARAM>(from), 0);
    return from;
}

/// Activates a window, or none, and tells both.
HWND Activate(HWND to) {
    HWND from = nullptr;
    {
        const Lock lock(UserLock());
        from = std::exchange(ThisThread().active, to);
    }
    if (from == to) return from;
    if (from && IsWindow(from)) {
        SendMessageW(from, WM_NCACTIVATE, FALSE, reinterpret_cast<LPARAM>(to));
        SendMessageW(from, WM_ACTIVATE, WA_INACTIVE, reinterpret_cast<LPARAM>(to));
    }
    if (to && IsWindow(to)) {
        SendMessageW(to, WM_NCACTIVATE, TRUE, reinterpret_cast<LPARAM>(from));
        SendMessageW(to, WM_ACTIVATE, WA_ACTIVE, reinterpret_cast<LPARAM>(from));
    }
    return from;
}

/// The window that becomes active when another goes: its owner, else the topmost one left.
HWND NextActive(const Window& leaving) {
    if (leaving.owner && IsShown(*leaving.owner) && !IsDisabled(leaving.owner)) {
        return leaving.owner->handle;
    }
    for (const Window* other : TopLevels()) {
        const bool isPossible = other != &leaving && other->thread == leaving.thread &&
                                !other->isDestroying && IsShown(*other) && !IsDisabled(other);
        if (isPossible) return other->handle;
    }
    return nullptr;
}

}  // namespace

bool IsShown(const Window& window) noexcept {
    const Window* above = &window;
    while (above && above->style & WS_VISIBLE) above = above->parent;
    return above == nullptr;
}

void LeaveInput(HWND handle) noexcept {
    HWND nextFocus = nullptr;
    HWND nextActive = nullptr;
    bool hasFocus = false;
    bool isActive = false;
    {
        const Lock lock(UserLock());
        Window* window = FindWindow(handle);
        if (!window) return;
        Thread& thread = *window->thread;
        if (&thread != &ThisThread()) return;
        if (thread.capture == handle) thread.capture = nullptr;
        isActive = thread.active == handle;
        if (isActive) nextActive = NextActive(*window);
        hasFocus = thread.focus && IsInside(*window, FindWindow(thread.focus));
        if (window->parent) nextFocus = window->parent->handle;
    }
    if (isActive) Activate(nextActive);
    if (!hasFocus || GetFocus() == nextActive) return;
    MoveFocus(isActive ? nextActive : nextFocus);
}

}  // namespace platform::user

using namespace platform::user;

BOOL ShowWindow(HWND handle, int command) noexcept {
    const bool show = command != SW_HIDE;
    bool isVisible = false;
    bool isChild = false;
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return FALSE;
        isVisible = window->style & WS_VISIBLE;
        isChild = window->parent != nullptr;
    }
    if (isVisible != show) {
        SendMessageW(handle, WM_SHOWWINDOW, show, 0);
        (void)SetVisible(handle, show);
    }
    if (!show) {
        LeaveInput(handle);
    } else if (!isChild) {
        SetWindowPos(handle, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOREDRAW);
    }
    return isVisible;
}

BOOL IsWindowVisible(HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window && IsShown(*window);
}

BOOL EnableWindow(HWND handle, BOOL enable) noexcept {
    bool wasDisabled = false;
    bool hasFocus = false;
    {
        const Lock lock(UserLock());
        Window* window = FindWindow(handle);
        if (!window) return FALSE;
        wasDisabled = window->style & WS_DISABLED;
        window->style = enable ? window->style & ~WS_DISABLED : window->style | WS_DISABLED;
        Thread& thread = *window->thread;
        hasFocus =
            &thread == &ThisThread() && thread.focus && IsInside(*window, FindWindow(thread.focus));
    }
    if (!enable && hasFocus) MoveFocus(nullptr);
    if (wasDisabled == (enable != FALSE)) SendMessageW(handle, WM_ENABLE, enable != FALSE, 0);
    return wasDisabled;
}

BOOL IsWindowEnabled(HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window && !(window->style & WS_DISABLED);
}

HWND SetFocus(HWND handle) noexcept {
    if (!handle) return MoveFocus(nullptr);
    HWND top = nullptr;
    {
        const Lock lock(UserLock());
        Window* window = FindOwn(handle);
        if (!window) return nullptr;
        if (IsDisabled(window)) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        top = TopOf(*window).handle;
    }
    const HWND from = GetFocus();
    if (GetActiveWindow() != top) Activate(top);
    if (IsWindow(handle)) MoveFocus(handle);
    return from;
}

HWND GetFocus() noexcept {
    const Lock lock(UserLock());
    return ThisThread().focus;
}

HWND SetActiveWindow(HWND handle) noexcept {
    {
        const Lock lock(UserLock());
        const Window* window = handle ? FindOwn(handle) : nullptr;
        if (handle && (!window || window->parent || window->style & WS_DISABLED)) return nullptr;
    }
    return Activate(handle);
}

HWND GetActiveWindow() noexcept {
    const Lock lock(UserLock());
    return ThisThread().active;
}

HWND SetCapture(HWND handle) noexcept {
    const Lock lock(UserLock());
    return FindOwn(handle) ? std::exchange(ThisThread().capture, handle) : nullptr;
}

HWND GetCapture() noexcept {
    const Lock lock(UserLock());
    return ThisThread().capture;
}

BOOL ReleaseCapture() noexcept {
    HWND from = nullptr;
    {
        const Lock lock(UserLock());
        from = std::exchange(ThisThread().capture, nullptr);
    }
    if (from) SendMessageW(from, WM_CAPTURECHANGED, 0, 0);
    return TRUE;
}
