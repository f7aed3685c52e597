#include "platform/posix/user/control.h"

#include "platform/posix/user/window.h"

namespace platform::user {

std::shared_ptr<void> ControlState(HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window ? window->control : nullptr;
}

void SetControlState(HWND handle, std::shared_ptr<void> state) noexcept {
    const Lock lock(UserLock());
    if (Window* window = FindWindow(handle)) window->control = std::move(state);
}

void NotifyCommand(HWND control, WORD code) noexcept {
    SendMessageW(GetParent(control), WM_COMMAND,
                 MAKEWPARAM(static_cast<DWORD_PTR>(GetDlgCtrlID(control)), code),
                 reinterpret_cast<LPARAM>(control));
}

LRESULT Notify(HWND control, UINT code, NMHDR& header) noexcept {
    header = {control, static_cast<UINT_PTR>(GetDlgCtrlID(control)), code};
    return SendMessageW(GetParent(control), WM_NOTIFY, header.idFrom,
                        reinterpret_cast<LPARAM>(&header));
}

}  // namespace platform::user
