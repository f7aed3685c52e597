#include "platform/posix/last_error.h"
#include "platform/posix/user/screen.h"
#include "platform/posix/user/window_calls.h"

namespace {

/// The one screen.
HMONITOR TheMonitor() { return reinterpret_cast<HMONITOR>(ULONG_PTR{0x10001}); }

}  // namespace

HMONITOR MonitorFromWindow(HWND window, DWORD otherwise) noexcept {
    return IsWindow(window) || otherwise != MONITOR_DEFAULTTONULL ? TheMonitor() : nullptr;
}

BOOL GetMonitorInfoW(HMONITOR monitor, MONITORINFO* info) noexcept {
    if (monitor != TheMonitor()) return platform::Fail(ERROR_INVALID_MONITOR_HANDLE);
    if (!info || info->cbSize != sizeof *info) return platform::Fail(ERROR_INVALID_PARAMETER);
    const RECT all{0, 0, platform::user::kScreenWidth, platform::user::kScreenHeight};
    info->rcMonitor = all;
    info->rcWork = all;
    info->dwFlags = MONITORINFOF_PRIMARY;
    return TRUE;
}
