#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog.h"
#include "platform/posix/user/window.h"
#include "platform/user.h"

namespace platform::user {
namespace {

enum class Used { No, Yes };

WCHAR Capital(WCHAR unit) {
    return static_cast<WCHAR>(
        reinterpret_cast<ULONG_PTR>(CharUpperW(reinterpret_cast<LPWSTR>(ULONG_PTR{unit}))));
}

bool CanAct(HWND control) {
    return control && IsWindowEnabled(control) && IsWindowVisible(control);
}

void SendClick(HWND dialog, HWND control, int id) {
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(static_cast<DWORD_PTR>(id), BN_CLICKED),
                 reinterpret_cast<LPARAM>(control));
}

void Tab(HWND dialog) {
    const bool isBackwards = GetKeyState(VK_SHIFT) < 0;
    SendMessageW(dialog, WM_NEXTDLGCTL, isBackwards, FALSE);
}

/// Arrows move in a group, and check the automatic radio button that they come to.
void MoveInGroup(HWND dialog, bool isBackwards) {
    const HWND focus = GetFocus();
    if (!focus) return;
    const HWND next = GetNextDlgGroupItem(dialog, focus, isBackwards);
    if (!next || next == focus) return;
    const bool isRadio = DialogCode(next) & DLGC_RADIOBUTTON;
    const auto type = static_cast<DWORD>(GetWindowLongPtrW(next, GWL_STYLE)) & BS_TYPEMASK;
    FocusControl(dialog, next);
    const bool isAutomatic = isRadio && type == BS_AUTORADIOBUTTON;
    if (isAutomatic && !SendMessageW(next, BM_GETCHECK, 0, 0)) SendMessageW(next, BM_CLICK, 0, 0);
}

/// Return presses the button that has the focus, else the default one; without any it means OK.
void PressDefault(HWND dialog) {
    const HWND focus = GetFocus();
    if (focus && IsChild(dialog, focus) && DialogCode(focus) & DLGC_DEFPUSHBUTTON) {
        SendClick(GetParent(focus), focus, GetDlgCtrlID(focus));
        return;
    }
    const auto answer = static_cast<DWORD_PTR>(SendMessageW(dialog, DM_GETDEFID, 0, 0));
    const int id = HIWORD(answer) == DC_HASDEFID ? LOWORD(answer) : IDOK;
    const HWND button = GetDlgItem(dialog, id);
    if (button && !IsWindowEnabled(button)) return;
    SendClick(dialog, button, id);
}

void PressCancel(HWND dialog) {
    const HWND cancel = GetDlgItem(dialog, IDCANCEL);
    if (cancel && !IsWindowEnabled(cancel)) return;
    SendClick(dialog, cancel, IDCANCEL);
}

/// What a key means to the dialog, unless the control wants it.
Used PressKey(HWND dialog, const MSG& message) {
    const LRESULT code = SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam,
                                      reinterpret_cast<LPARAM>(&message));
    if (code & DLGC_WANTMESSAGE) return Used::No;
    switch (message.wParam) {
        case VK_TAB:
            if (code & DLGC_WANTTAB) return Used::No;
            Tab(dialog);
            return Used::Yes;
        case VK_LEFT:
        case VK_UP:
        case VK_RIGHT:
        case VK_DOWN:
            if (code & DLGC_WANTARROWS) return Used::No;
            MoveInGroup(dialog, message.wParam == VK_LEFT || message.wParam == VK_UP);
            return Used::Yes;
        case VK_RETURN:
            PressDefault(dialog);
            return Used::Yes;
        case VK_ESCAPE:
            PressCancel(dialog);
            return Used::Yes;
        default:
            return Used::No;
    }
}

/// The capital of the letter behind the first single '&'; 0 if there is none.
WCHAR MnemonicOf(HWND control) {
    WCHAR text[256];
    const int length = GetWindowTextW(control, text, 256);
    for (int i = 0; i + 1 < length; ++i) {
        if (text[i] != '&') continue;
        if (text[i + 1] != '&') return Capital(text[i + 1]);
        ++i;
    }
    return 0;
}

/// A control with this letter, behind another in the order of the dialog; null if none.
HWND FindMnemonic(HWND parent, WCHAR letter, HWND behind, bool& isReached) {
    for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (CanAct(child)) {
            if (isReached && !(DialogCode(child) & DLGC_WANTCHARS) && MnemonicOf(child) == letter) {
                return child;
            }
            if (GetWindowLongPtrW(child, GWL_EXSTYLE) & WS_EX_CONTROLPARENT) {
                if (const HWND found = FindMnemonic(child, letter, behind, isReached)) return found;
            }
        }
        isReached = isReached || child == behind;
    }
    return nullptr;
}

/// A label's letter leads to the control behind it, a button's presses the button.
Used PressMnemonic(HWND dialog, WCHAR unit) {
    const WCHAR letter = Capital(unit);
    bool isReached = false;
    HWND found = FindMnemonic(dialog, letter, GetFocus(), isReached);
    if (!found) {
        isReached = true;
        found = FindMnemonic(dialog, letter, nullptr, isReached);
    }
    if (!found) return Used::No;
    const LRESULT code = DialogCode(found);
    if (code & DLGC_STATIC) {
        SendMessageW(dialog, WM_NEXTDLGCTL,
                     reinterpret_cast<WPARAM>(GetNextDlgTabItem(dialog, found, FALSE)), TRUE);
        return Used::Yes;
    }
    FocusControl(dialog, found);
    if (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON | DLGC_BUTTON)) {
        SendMessageW(found, BM_CLICK, 0, 0);
    }
    return Used::Yes;
}

Used UseCharacter(HWND dialog, const MSG& message) {
    const LRESULT code = SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam,
                                      reinterpret_cast<LPARAM>(&message));
    if (code & (DLGC_WANTCHARS | DLGC_WANTMESSAGE)) return Used::No;
    if (message.wParam <= VK_SPACE) return Used::No;
    return PressMnemonic(dialog, static_cast<WCHAR>(message.wParam));
}

Used Use(HWND dialog, const MSG& message) {
    switch (message.message) {
        case WM_KEYDOWN:
            return PressKey(dialog, message);
        case WM_CHAR:
            return UseCharacter(dialog, message);
        case WM_SYSCHAR:
            return PressMnemonic(dialog, static_cast<WCHAR>(message.wParam));
        default:
            return Used::No;
    }
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

BOOL IsDialogMessageW(HWND dialog, MSG* message) noexcept {
    if (!message || !message->hwnd) return FALSE;
    if (message->hwnd != dialog && !IsChild(dialog, message->hwnd)) return FALSE;
    if (Use(dialog, *message) == Used::Yes) return TRUE;
    TranslateMessage(message);
    DispatchMessageW(message);
    return TRUE;
}
