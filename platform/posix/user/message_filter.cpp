#include <new>
#include <utility>

#include "platform/posix/last_error.h"
#include "platform/posix/user/hook_calls.h"
#include "platform/system.h"

struct HHOOK__ {
    HOOKPROC procedure;
    HHOOK before;  // the one that was set before it
};

namespace {

thread_local HHOOK newest = nullptr;
/// Whom the filter that runs hands on to.
thread_local HHOOK following = nullptr;

LRESULT Ask(HHOOK hook, int code, WPARAM wParam, LPARAM lParam) noexcept {
    if (!hook) return 0;
    const HHOOK outer = std::exchange(following, hook->before);
    const LRESULT result = hook->procedure(code, wParam, lParam);
    following = outer;
    return result;
}

}  // namespace

HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread) noexcept {
    if (kind != WH_MSGFILTER || !procedure || module || thread != GetCurrentThreadId()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* const hook = new (std::nothrow) HHOOK__{procedure, newest};
    if (!hook) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    newest = hook;
    return hook;
}

BOOL UnhookWindowsHookEx(HHOOK hook) noexcept {
    HHOOK* place = &newest;
    while (*place && *place != hook) place = &(*place)->before;
    if (!*place) return platform::Fail(ERROR_INVALID_HANDLE);
    *place = hook->before;
    if (following == hook) following = hook->before;
    delete hook;
    return TRUE;
}

LRESULT CallNextHookEx(HHOOK, int code, WPARAM wParam, LPARAM lParam) noexcept {
    return Ask(following, code, wParam, lParam);
}

BOOL CallMsgFilterW(MSG* message, int code) noexcept {
    return Ask(newest, code, 0, reinterpret_cast<LPARAM>(message)) != 0;
}
