#include <algorithm>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/module_table.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

constexpr ATOM kFirstAtom = 0xC000;  // those below are numbers

std::vector<std::unique_ptr<WindowClass>>& Classes() {
    static auto& classes = *new std::vector<std::unique_ptr<WindowClass>>;
    return classes;
}

bool IsAtom(LPCWSTR name) { return reinterpret_cast<ULONG_PTR>(name) >> 16 == 0; }

bool HasName(const WindowClass& known, LPCWSTR name) {
    if (IsAtom(name)) return known.atom == reinterpret_cast<ULONG_PTR>(name);
    return IsSameName(known.name, name);
}

ATOM NewAtom() {
    ATOM atom = kFirstAtom;
    const auto isTaken = [&](const auto& known) { return known->atom == atom; };
    while (std::any_of(Classes().begin(), Classes().end(), isTaken)) ++atom;
    return atom;
}

/// A program that gives no module means itself.
HINSTANCE OrProgram(HINSTANCE instance) { return instance ? instance : GetModuleHandleW(nullptr); }

WindowClass* FindOwn(HINSTANCE instance, LPCWSTR name) {
    for (const auto& known : Classes()) {
        if (known->info.hInstance == instance && HasName(*known, name)) return known.get();
    }
    return nullptr;
}

ATOM Add(const WNDCLASSEXW& info) {
    auto added = std::make_unique<WindowClass>();
    added->atom = NewAtom();
    added->name = info.lpszClassName;
    added->info = info;
    added->info.lpszClassName = added->name.c_str();
    Classes().push_back(std::move(added));
    return Classes().back()->atom;
}

}  // namespace

WindowClass* FindClass(HINSTANCE instance, LPCWSTR name) noexcept {
    if (!name) return nullptr;
    RegisterUserClasses();
    if (WindowClass* own = FindOwn(instance, name)) return own;
    for (const auto& known : Classes()) {
        if (known->info.style & CS_GLOBALCLASS && HasName(*known, name)) return known.get();
    }
    return nullptr;
}

void RegisterSystemClass(LPCWSTR name, UINT style, WNDPROC procedure, int extraBytes,
                         HBRUSH background) noexcept {
    const Lock lock(UserLock());
    if (FindOwn(nullptr, name)) return;
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    info.style = style | CS_GLOBALCLASS;
    info.lpfnWndProc = procedure;
    info.cbWndExtra = extraBytes;
    info.hbrBackground = background;
    info.lpszClassName = name;
    (void)Add(info);
}

}  // namespace platform::user

using namespace platform::user;

ATOM RegisterClassExW(const WNDCLASSEXW* info) noexcept {
    if (platform::InjectFault("RegisterClassExW")) return 0;
    const bool isWhole = info && info->cbSize == sizeof *info && info->lpfnWndProc &&
                         info->cbWndExtra >= 0 && info->lpszClassName &&
                         !IsAtom(info->lpszClassName) && *info->lpszClassName;
    if (!isWhole) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    // The lock of the modules comes first: their ends take classes back.
    WNDCLASSEXW added = *info;
    added.hInstance = OrProgram(info->hInstance);
    const Lock lock(UserLock());
    if (FindOwn(added.hInstance, added.lpszClassName)) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    return Add(added);
}

BOOL UnregisterClassW(LPCWSTR name, HINSTANCE instance) noexcept {
    const HINSTANCE owner = OrProgram(instance);
    const Lock lock(UserLock());
    WindowClass* found = name ? FindOwn(owner, name) : nullptr;
    if (!found) return platform::Fail(ERROR_CLASS_DOES_NOT_EXIST);
    if (found->windows > 0) return platform::Fail(ERROR_CLASS_HAS_WINDOWS);
    std::erase_if(Classes(), [&](const auto& known) { return known.get() == found; });
    return TRUE;
}

BOOL GetClassInfoExW(HINSTANCE instance, LPCWSTR name, WNDCLASSEXW* info) noexcept {
    if (platform::InjectFault("GetClassInfoExW")) return FALSE;
    const Lock lock(UserLock());
    const WindowClass* found = FindClass(instance, name);
    if (!found || !info) return platform::Fail(ERROR_CLASS_DOES_NOT_EXIST);
    *info = found->info;
    info->cbSize = sizeof *info;
    info->lpszClassName = name;
    return found->atom;
}

int GetClassNameW(HWND handle, LPWSTR buffer, int size) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window || !buffer || size <= 0) return 0;
    const std::size_t length =
        window->windowClass->name.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = 0;
    return static_cast<int>(length);
}
