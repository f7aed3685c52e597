#pragma once

#include <memory>

#include "platform/posix/user/window_calls.h"

namespace platform::user {

/// What a control keeps with its window; ends with it.
std::shared_ptr<void> ControlState(HWND window) noexcept;
void SetControlState(HWND window, std::shared_ptr<void> state) noexcept;

/// Sends the parent WM_COMMAND with a notification code.
void NotifyCommand(HWND control, WORD code) noexcept;
/// Sends the parent WM_NOTIFY, with the header filled in.
LRESULT Notify(HWND control, UINT code, NMHDR& header) noexcept;

constexpr POINT PointOf(LPARAM lParam) noexcept {
    return {static_cast<SHORT>(LOWORD(static_cast<DWORD_PTR>(lParam))),
            static_cast<SHORT>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
}

/// The window procedure of a control's class. `Control` is made from the window's handle and has
/// `LRESULT Handle(UINT message, WPARAM, LPARAM)`; it lives on while it handles a message that ends
/// its window.
template <class Control>
LRESULT CALLBACK ControlProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) SetControlState(window, std::make_shared<Control>(window));
    const std::shared_ptr<void> state = ControlState(window);
    if (!state) return DefWindowProcW(window, message, wParam, lParam);
    return static_cast<Control*>(state.get())->Handle(message, wParam, lParam);
}

}  // namespace platform::user
