#include "options/reflection.h"

namespace {

/// The control that a message comes from; null if it comes from none.
HWND SenderOf(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NOTIFY:
            return reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
        case WM_PARENTNOTIFY: {
            const bool isLife = LOWORD(wParam) == WM_CREATE || LOWORD(wParam) == WM_DESTROY;
            return isLife ? reinterpret_cast<HWND>(lParam) : nullptr;
        }
        case WM_COMMAND:
        case WM_HSCROLL:
        case WM_VSCROLL:
        case WM_VKEYTOITEM:
        case WM_CHARTOITEM:
            return reinterpret_cast<HWND>(lParam);
        default:
            return message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC
                       ? reinterpret_cast<HWND>(lParam)
                       : nullptr;
    }
}

}  // namespace

bool Reflect(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) noexcept {
    const HWND sender = SenderOf(message, wParam, lParam);
    if (!sender) return false;
    result = SendMessageW(sender, message + kReflected, wParam, lParam);
    return true;
}
