#pragma once

#include "platform/modules.h"
#include "platform/user.h"

namespace host {

/// The name of a window class of this program, which is registered at its first use and stays.
inline LPCWSTR WindowClass(LPCWSTR name, WNDPROC procedure) noexcept {
    WNDCLASSEXW info = {};
    info.cbSize = sizeof info;
    info.lpfnWndProc = procedure;
    info.hInstance = GetModuleHandleW(nullptr);
    info.lpszClassName = name;
    // One that is there already is the same.
    (void)RegisterClassExW(&info);
    return name;
}

}  // namespace host
