#pragma once

#include <vector>

#include "platform/posix/user/menu_calls.h"
#include "platform/text.h"

namespace platform::user {

struct MenuItem {
    UINT state = 0;  // MF_GRAYED, MF_DISABLED, MF_SEPARATOR
    UINT id = 0;
    HMENU below = nullptr;  // owned by the menu
    WideString text;
};

struct Menu {
    std::vector<MenuItem> items;
};

/// Null with ERROR_INVALID_MENU_HANDLE. The lock of the windows must be held.
Menu* FindMenu(HMENU handle) noexcept;
/// An item by its command or its place; null if there is none.
MenuItem* FindItem(HMENU handle, UINT item, UINT flags) noexcept;
std::size_t CountMenus() noexcept;

}  // namespace platform::user
