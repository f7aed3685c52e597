#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog.h"
#include "platform/posix/user/window.h"
#include "platform/user.h"

namespace platform::user {
namespace {

bool IsOrHas(HWND dialog, HWND window) {
    return window && (window == dialog || IsChild(dialog, window));
}

void SaveFocus(HWND dialog, Dialog& state) {
    const HWND focus = GetFocus();
    if (focus && IsChild(dialog, focus)) state.lastFocus = focus;
}

/// Gives the focus back to the control that had it; the first time to the first control.
void RestoreFocus(HWND dialog, Dialog& state) {
    const HWND focus = GetFocus();
    if (focus && focus != dialog && IsChild(dialog, focus)) return;
    if (IsWindow(state.lastFocus) && IsChild(dialog, state.lastFocus)) {
        if (IsWindowEnabled(state.lastFocus) && IsWindowVisible(state.lastFocus)) {
            SetFocus(state.lastFocus);
            return;
        }
    }
    if (const HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE)) {
        FocusControl(dialog, first);
    } else if (focus != dialog && !(GetWindowLongPtrW(dialog, GWL_STYLE) & WS_CHILD)) {
        SetFocus(dialog);
    }
}

void SetDefault(HWND dialog, Dialog& state, UINT id) {
    const HWND old =
        state.defaultId ? GetDlgItem(dialog, static_cast<int>(state.defaultId)) : nullptr;
    const HWND now = GetDlgItem(dialog, static_cast<int>(id));
    state.defaultId = id;
    if (old && old != now && DialogCode(old) & DLGC_DEFPUSHBUTTON) {
        SendMessageW(old, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
    }
    if (now && DialogCode(now) & DLGC_UNDEFPUSHBUTTON) {
        SendMessageW(now, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
    }
}

/// WM_CLOSE presses Cancel, unless that is disabled.
void Close(HWND dialog) {
    const HWND cancel = GetDlgItem(dialog, IDCANCEL);
    if (cancel && !IsWindowEnabled(cancel)) return;
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                 reinterpret_cast<LPARAM>(cancel));
}

LRESULT DoDefault(HWND dialog, Dialog& state, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE) {
                SaveFocus(dialog, state);
            } else {
                RestoreFocus(dialog, state);
            }
            return 0;
        case WM_SETFOCUS:
            RestoreFocus(dialog, state);
            return 0;
        case WM_SHOWWINDOW:
            if (!wParam) SaveFocus(dialog, state);
            return DefWindowProcW(dialog, message, wParam, lParam);
        case WM_CLOSE:
            Close(dialog);
            return 0;
        case WM_NEXTDLGCTL: {
            const HWND next = lParam ? reinterpret_cast<HWND>(wParam)
                                     : GetNextDlgTabItem(dialog, GetFocus(), wParam != 0);
            if (next) FocusControl(dialog, next);
            return 0;
        }
        case DM_SETDEFID:
            SetDefault(dialog, state, LOWORD(wParam));
            return TRUE;
        case DM_GETDEFID:
            return state.defaultId ? static_cast<LRESULT>(MAKEWPARAM(state.defaultId, DC_HASDEFID))
                                   : 0;
        default:
            return DefWindowProcW(dialog, message, wParam, lParam);
    }
}

/// Messages that a dialog's procedure answers by its own result.
bool IsAnsweredDirectly(UINT message) {
    return message == WM_INITDIALOG || message == WM_VKEYTOITEM || message == WM_CHARTOITEM ||
           (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC);
}

}  // namespace

LRESULT DialogCode(HWND control) noexcept { return SendMessageW(control, WM_GETDLGCODE, 0, 0); }

void MoveDefaultButton(HWND dialog, HWND focus) noexcept {
    const LRESULT code = focus ? DialogCode(focus) : 0;
    const bool isButton = code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON);
    const std::shared_ptr<Dialog> state = DialogOf(dialog);
    if (!state) return;
    HWND wanted = isButton ? focus : nullptr;
    if (!wanted && state->defaultId)
        wanted = GetDlgItem(dialog, static_cast<int>(state->defaultId));
    // One button at most looks like the default one, in the dialog and its pages.
    std::vector<HWND> others;
    for (HWND item = GetNextDlgTabItem(dialog, nullptr, FALSE); item;
         item = GetNextDlgTabItem(dialog, item, FALSE)) {
        if (!others.empty() && item == others.front()) break;
        others.push_back(item);
    }
    for (const HWND other : others) {
        if (other != wanted && DialogCode(other) & DLGC_DEFPUSHBUTTON) {
            SendMessageW(other, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
        }
    }
    if (wanted && DialogCode(wanted) & DLGC_UNDEFPUSHBUTTON) {
        SendMessageW(wanted, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
    }
}

void FocusControl(HWND dialog, HWND control) noexcept {
    if (DialogCode(control) & DLGC_HASSETSEL) SendMessageW(control, EM_SETSEL, 0, -1);
    SetFocus(control);
    if (GetFocus() == control && IsOrHas(dialog, control)) MoveDefaultButton(dialog, control);
}

}  // namespace platform::user

using namespace platform::user;

LRESULT DefDlgProcW(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const std::shared_ptr<Dialog> state = DialogOf(dialog);
    if (!state) return DefWindowProcW(dialog, message, wParam, lParam);
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
    const auto procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog, DWLP_DLGPROC));
    const INT_PTR handled = procedure ? procedure(dialog, message, wParam, lParam) : FALSE;
    if (!handled) {
        return IsWindow(dialog) ? DoDefault(dialog, *state, message, wParam, lParam) : 0;
    }
    if (IsAnsweredDirectly(message)) return handled;
    return GetWindowLongPtrW(dialog, DWLP_MSGRESULT);
}
