#include <algorithm>
#include <string>

#include "platform/posix/user/window_calls.h"
#include "platform/text.h"

namespace {

std::string NarrowTextOf(HWND window) {
    const auto length = static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
    platform::WideString text(length, 0);
    const LRESULT got =
        SendMessageW(window, WM_GETTEXT, length + 1, reinterpret_cast<LPARAM>(text.data()));
    text.resize(std::min(length, static_cast<std::size_t>(got)));
    return platform::ToUtf8(text);
}

LRESULT GetNarrowText(HWND window, WPARAM size, LPSTR buffer) {
    if (size == 0 || !buffer) return 0;
    const std::string text = NarrowTextOf(window);
    const std::size_t length = text.copy(buffer, size - 1);
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

}  // namespace

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_GETTEXT)
        return GetNarrowText(window, wParam, reinterpret_cast<LPSTR>(lParam));
    if (message == WM_GETTEXTLENGTH) return static_cast<LRESULT>(NarrowTextOf(window).size());
    if (message == WM_SETTEXT) {
        const auto* text = reinterpret_cast<LPCSTR>(lParam);
        const platform::WideString wide = platform::FromUtf8(text ? text : "");
        return SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(wide.c_str()));
    }
    return SendMessageW(window, message, wParam, lParam);
}

BOOL SetWindowTextA(HWND window, LPCSTR text) noexcept {
    if (!IsWindow(window)) return FALSE;
    return static_cast<BOOL>(SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}
