#include <utility>
#include <vector>

#include "platform/posix/user/control.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

class Button {
public:
    explicit Button(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    [[nodiscard]] DWORD Style() const {
        return static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
    }
    [[nodiscard]] DWORD Type() const { return Style() & BS_TYPEMASK; }
    [[nodiscard]] bool IsRadio() const {
        return Type() == BS_RADIOBUTTON || Type() == BS_AUTORADIOBUTTON;
    }
    [[nodiscard]] LRESULT Code() const;
    LRESULT SetCheck(WPARAM check);
    void SetStyle(DWORD style);
    void SetPushed(bool isPushed);
    void Click();
    void CheckAlone();
    void Release(bool isInside);
    void TakeFocus();
    void LoseFocus();

    HWND window_;
    UINT check_ = BST_UNCHECKED;
    bool isPushed_ = false;
    bool isHeld_ = false;  // the mouse or the space key is down on it
    bool hasFocus_ = false;
};

LRESULT Button::Code() const {
    switch (Type()) {
        case BS_PUSHBUTTON:
            return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
        case BS_DEFPUSHBUTTON:
            return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return DLGC_BUTTON | DLGC_RADIOBUTTON;
        case BS_GROUPBOX:
            return DLGC_STATIC;
        default:
            return DLGC_BUTTON;
    }
}

/// A radio button's check takes the tab stop with it.
LRESULT Button::SetCheck(WPARAM check) {
    const DWORD type = Type();
    if (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON || type == BS_GROUPBOX) return 0;
    const bool hasThird = type == BS_3STATE || type == BS_AUTO3STATE;
    const auto highest = hasThird ? BST_INDETERMINATE : BST_CHECKED;
    check_ = check > highest ? highest : static_cast<UINT>(check);
    if (IsRadio()) {
        const DWORD style = Style();
        const DWORD changed = check_ ? style | WS_TABSTOP : style & ~WS_TABSTOP;
        if (changed != style) SetWindowLongPtrW(window_, GWL_STYLE, static_cast<LONG_PTR>(changed));
    }
    InvalidateRect(window_, nullptr, FALSE);
    return 0;
}

void Button::SetStyle(DWORD style) {
    const DWORD changed = (Style() & ~BS_TYPEMASK) | (style & BS_TYPEMASK);
    SetWindowLongPtrW(window_, GWL_STYLE, static_cast<LONG_PTR>(changed));
    InvalidateRect(window_, nullptr, FALSE);
}

void Button::SetPushed(bool isPushed) {
    if (std::exchange(isPushed_, isPushed) != isPushed) InvalidateRect(window_, nullptr, FALSE);
}

/// Checks an automatic radio button and takes the check from the others of its group.
void Button::CheckAlone() {
    const HWND parent = GetParent(window_);
    std::vector<HWND> seen;
    for (HWND other = GetNextDlgGroupItem(parent, window_, FALSE); other && other != window_;
         other = GetNextDlgGroupItem(parent, other, FALSE)) {
        if (!seen.empty() && other == seen.front()) break;
        seen.push_back(other);
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(other, GWL_STYLE));
        const bool isRadio = SendMessageW(other, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON;
        if (isRadio && (style & BS_TYPEMASK) == BS_AUTORADIOBUTTON) {
            SendMessageW(other, BM_SETCHECK, BST_UNCHECKED, 0);
        }
    }
    SetCheck(BST_CHECKED);
}

void Button::Click() {
    switch (Type()) {
        case BS_GROUPBOX:
            return;
        case BS_AUTOCHECKBOX:
            SetCheck(check_ == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED);
            break;
        case BS_AUTO3STATE:
            SetCheck((check_ + 1) % 3);
            break;
        case BS_AUTORADIOBUTTON:
            CheckAlone();
            break;
        default:
            break;
    }
    NotifyCommand(window_, BN_CLICKED);
}

void Button::Release(bool isInside) {
    if (!std::exchange(isHeld_, false)) return;
    SetPushed(false);
    if (GetCapture() == window_) ReleaseCapture();
    if (isInside) Click();
}

void Button::TakeFocus() {
    hasFocus_ = true;
    InvalidateRect(window_, nullptr, FALSE);
    if (Style() & BS_NOTIFY) NotifyCommand(window_, BN_SETFOCUS);
    // The keyboard chooses a radio button by moving to it.
    if (IsRadio() && !isHeld_ && check_ == BST_UNCHECKED) Click();
}

void Button::LoseFocus() {
    hasFocus_ = false;
    isHeld_ = false;
    SetPushed(false);
    if (GetCapture() == window_) ReleaseCapture();
    InvalidateRect(window_, nullptr, FALSE);
    if (Style() & BS_NOTIFY) NotifyCommand(window_, BN_KILLFOCUS);
}

LRESULT Button::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return Code();
        case BM_GETCHECK:
            return check_;
        case BM_SETCHECK:
            return SetCheck(wParam);
        case BM_GETSTATE:
            return static_cast<LRESULT>(check_ | (isPushed_ ? BST_PUSHED : 0) |
                                        (hasFocus_ ? BST_FOCUS : 0));
        case BM_SETSTATE:
            SetPushed(wParam != 0);
            return 0;
        case BM_SETSTYLE:
            SetStyle(static_cast<DWORD>(wParam));
            return 0;
        case BM_CLICK:
            SendMessageW(window_, WM_LBUTTONDOWN, 0, 0);
            SendMessageW(window_, WM_LBUTTONUP, 0, 0);
            return 0;
        case WM_LBUTTONDOWN:
            if (Type() == BS_GROUPBOX) return 0;
            isHeld_ = true;
            SetCapture(window_);
            SetFocus(window_);
            SetPushed(true);
            return 0;
        case WM_LBUTTONUP: {
            RECT client{};
            GetClientRect(window_, &client);
            const POINT at = PointOf(lParam);
            Release(at.x >= 0 && at.y >= 0 && at.x < client.right && at.y < client.bottom);
            return 0;
        }
        case WM_CAPTURECHANGED:
            if (isHeld_) {
                isHeld_ = false;
                SetPushed(false);
            }
            return 0;
        case WM_KEYDOWN:
            if (wParam != VK_SPACE) break;
            isHeld_ = true;
            SetPushed(true);
            return 0;
        case WM_KEYUP:
            if (wParam == VK_SPACE) Release(true);
            return 0;
        case WM_SETFOCUS:
            TakeFocus();
            return 0;
        case WM_KILLFOCUS:
            LoseFocus();
            return 0;
        case WM_ENABLE:
            InvalidateRect(window_, nullptr, FALSE);
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

class Label {
public:
    explicit Label(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_GETDLGCODE) return DLGC_STATIC;
        const LRESULT result = DefWindowProcW(window_, message, wParam, lParam);
        if (message == WM_SETTEXT || message == WM_ENABLE) InvalidateRect(window_, nullptr, TRUE);
        return result;
    }

private:
    HWND window_;
};

}  // namespace

void RegisterButton() noexcept {
    RegisterSystemClass(WC_BUTTONW, CS_DBLCLKS, ControlProcedure<Button>, 0);
}

void RegisterStatic() noexcept {
    RegisterSystemClass(WC_STATICW, CS_DBLCLKS, ControlProcedure<Label>, 0);
}

}  // namespace platform::user
