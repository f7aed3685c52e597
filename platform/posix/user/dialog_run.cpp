#include <utility>

#include "platform/posix/last_error.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog.h"
#include "platform/posix/user/window.h"
#include "platform/user.h"

namespace platform::user {
namespace {

/// The window that is disabled while a dialog of this owner runs.
HWND TopHandle(HWND owner) {
    const Lock lock(UserLock());
    Window* window = FindWindow(owner);
    return window ? TopOf(*window).handle : nullptr;
}

/// The next message; tells the owner when there is none. \return false for WM_QUIT, which stays.
bool NextMessage(HWND dialog, HWND owner, MSG& message) {
    if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(dialog, GWL_STYLE));
        // A dialog that its template does not show appears once there is nothing to do.
        if (!(style & WS_VISIBLE)) ShowWindow(dialog, SW_SHOWNORMAL);
        if (owner && !(style & DS_NOIDLEMSG)) {
            SendMessageW(owner, WM_ENTERIDLE, MSGF_DIALOGBOX, reinterpret_cast<LPARAM>(dialog));
        }
        GetMessageW(&message, nullptr, 0, 0);
    }
    if (message.message != WM_QUIT) return true;
    PostQuitMessage(static_cast<int>(message.wParam));
    return false;
}

void Run(HWND dialog, HWND owner, const Dialog& state) {
    MSG message;
    while (IsWindow(dialog) && !state.hasEnded && NextMessage(dialog, owner, message)) {
        if (CallMsgFilterW(&message, MSGF_DIALOGBOX)) continue;
        if (IsDialogMessageW(dialog, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void EnableOwner(Dialog& state) {
    if (const HWND owner = std::exchange(state.disabledOwner, nullptr)) EnableWindow(owner, TRUE);
}

}  // namespace

std::shared_ptr<Dialog> DialogOf(HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window ? window->dialog : nullptr;
}

}  // namespace platform::user

using namespace platform::user;

INT_PTR DialogBoxParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure,
                        LPARAM parameter) noexcept {
    if (owner && !IsWindow(owner)) return 0;
    const HWND top = owner ? TopHandle(owner) : nullptr;
    // An owner that is disabled already is so for another reason, and stays so.
    const HWND disabled = top && IsWindowEnabled(top) ? top : nullptr;
    if (disabled) EnableWindow(disabled, FALSE);
    const HWND dialog = MakeDialog(module, name, top, procedure, parameter, disabled);
    const std::shared_ptr<Dialog> state = dialog ? DialogOf(dialog) : nullptr;
    if (!state) {
        const DWORD error = GetLastError();
        if (disabled) EnableWindow(disabled, TRUE);
        SetLastError(error);
        return -1;
    }
    Run(dialog, top, *state);
    EnableOwner(*state);
    if (IsWindow(dialog)) DestroyWindow(dialog);
    return state->result;
}

BOOL EndDialog(HWND dialog, INT_PTR result) noexcept {
    const std::shared_ptr<Dialog> state = DialogOf(dialog);
    if (!state) return platform::Fail(ERROR_INVALID_WINDOW_HANDLE);
    state->result = result;
    state->hasEnded = true;
    // Before it hides: activation goes to an owner that can take it.
    EnableOwner(*state);
    SetWindowPos(dialog, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_HIDEWINDOW);
    PostMessageW(dialog, WM_NULL, 0, 0);
    return TRUE;
}
