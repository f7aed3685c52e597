#include <cstring>
#include <type_traits>

#include "platform/posix/last_error.h"
#include "platform/posix/user/window.h"
#include "platform/system.h"

namespace platform::user {
namespace {

/// Reads one of the words with a name, and writes it if there is a new value.
bool ExchangeNamed(Window& window, int index, const LONG_PTR* value, LONG_PTR& old) {
    const auto exchange = [&]<class Field>(Field& field) {
        if constexpr (std::is_pointer_v<Field>) {
            old = reinterpret_cast<LONG_PTR>(field);
            if (value) field = reinterpret_cast<Field>(*value);
        } else {
            old = static_cast<LONG_PTR>(field);
            if (value) field = static_cast<Field>(*value);
        }
        return true;
    };
    switch (index) {
        case GWLP_WNDPROC:
            return exchange(window.procedure);
        case GWLP_HINSTANCE:
            return exchange(window.instance);
        case GWLP_ID:
            return exchange(window.id);
        case GWL_STYLE:
            return exchange(window.style);
        case GWL_EXSTYLE:
            return exchange(window.exStyle);
        case GWLP_USERDATA:
            return exchange(window.userData);
        default:
            return false;
    }
}

bool ExchangeExtra(Window& window, int index, const LONG_PTR* value, LONG_PTR& old) {
    const std::size_t size = window.extra.size();
    if (index < 0 || size < sizeof old || static_cast<std::size_t>(index) > size - sizeof old) {
        return false;
    }
    std::byte* place = window.extra.data() + index;
    std::memcpy(&old, place, sizeof old);
    if (value) std::memcpy(place, value, sizeof *value);
    return true;
}

LONG_PTR Exchange(HWND handle, int index, const LONG_PTR* value) {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return 0;
    if (index == GWLP_HWNDPARENT && !value) {
        const Window* above = window->parent ? window->parent : window->owner;
        return reinterpret_cast<LONG_PTR>(above ? above->handle : nullptr);
    }
    LONG_PTR old = 0;
    if (ExchangeNamed(*window, index, value, old)) return old;
    if (!ExchangeExtra(*window, index, value, old)) SetLastError(ERROR_INVALID_INDEX);
    return old;
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

LONG_PTR GetWindowLongPtrW(HWND handle, int index) noexcept {
    return Exchange(handle, index, nullptr);
}

LONG_PTR SetWindowLongPtrW(HWND handle, int index, LONG_PTR value) noexcept {
    if (index != GWL_STYLE && index != GWL_EXSTYLE) return Exchange(handle, index, &value);
    STYLESTRUCT styles{static_cast<DWORD>(GetWindowLongPtrW(handle, index)),
                       static_cast<DWORD>(value)};
    const auto which = static_cast<WPARAM>(static_cast<LONG_PTR>(index));
    SendMessageW(handle, WM_STYLECHANGING, which, reinterpret_cast<LPARAM>(&styles));
    const LONG_PTR changed = styles.styleNew;
    const LONG_PTR old = Exchange(handle, index, &changed);
    SendMessageW(handle, WM_STYLECHANGED, which, reinterpret_cast<LPARAM>(&styles));
    return old;
}

BOOL SetWindowTextW(HWND handle, LPCWSTR text) noexcept {
    if (!IsWindow(handle)) return FALSE;
    return static_cast<BOOL>(SendMessageW(handle, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextW(HWND handle, LPWSTR buffer, int size) noexcept {
    if (!buffer || size <= 0) return 0;
    buffer[0] = 0;
    return static_cast<int>(SendMessageW(handle, WM_GETTEXT, static_cast<WPARAM>(size),
                                         reinterpret_cast<LPARAM>(buffer)));
}

int GetWindowTextLengthW(HWND handle) noexcept {
    return static_cast<int>(SendMessageW(handle, WM_GETTEXTLENGTH, 0, 0));
}

HWND GetParent(HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window) return nullptr;
    if (window->parent) return window->parent->handle;
    return window->style & WS_POPUP && window->owner ? window->owner->handle : nullptr;
}

HWND GetWindow(HWND handle, UINT relation) noexcept {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return nullptr;
    if (relation == GW_OWNER) return window->owner ? window->owner->handle : nullptr;
    if (relation == GW_CHILD) {
        return window->children.empty() ? nullptr : window->children.front()->handle;
    }
    const std::vector<Window*>& siblings = SiblingsOf(*window);
    const auto count = siblings.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (siblings[i] != window) continue;
        if (relation == GW_HWNDNEXT) return i + 1 < count ? siblings[i + 1]->handle : nullptr;
        if (relation == GW_HWNDPREV) return i > 0 ? siblings[i - 1]->handle : nullptr;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

BOOL IsChild(HWND parent, HWND handle) noexcept {
    const Lock lock(UserLock());
    const Window* above = FindWindow(parent);
    const Window* window = above ? FindWindow(handle) : nullptr;
    return window && window != above && IsInside(*above, window);
}

HWND GetDlgItem(HWND handle, int id) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window) return nullptr;
    for (const Window* child : window->children) {
        if (static_cast<int>(child->id) == id) return child->handle;
    }
    SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
    return nullptr;
}

int GetDlgCtrlID(HWND handle) noexcept {
    return static_cast<int>(GetWindowLongPtrW(handle, GWLP_ID));
}

DWORD GetWindowThreadProcessId(HWND handle, LPDWORD process) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (window && process) *process = GetCurrentProcessId();
    return window ? window->thread->id : 0;
}
