#include "platform/posix/user/menu.h"

#include <cstring>
#include <memory>
#include <span>

#include "platform/posix/faults.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"
#include "platform/posix/user/window.h"
#include "platform/resources.h"

namespace platform::user {
namespace {

constexpr unsigned kDeepest = 32;  // menus inside menus; deeper ones are taken for damage
constexpr WORD kLastItem = 0x80;

HandleTable<Menu>& Menus() {
    static HandleTable<Menu>& menus = *new HandleTable<Menu>;
    return menus;
}

/// Reads a menu as resources hold it: flags, an id for commands, a text; below a pop-up its own
/// items follow.
class TemplateReader {
public:
    explicit TemplateReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    bool ReadHeader() {
        WORD version = 0;
        WORD skipped = 0;
        if (!Read(version) || version != 0 || !Read(skipped) || skipped > bytes_.size()) {
            return false;
        }
        bytes_ = bytes_.subspan(skipped);
        return true;
    }

    bool ReadItems(Menu& menu, unsigned depth) {
        WORD flags = 0;
        while (!(flags & kLastItem)) {
            MenuItem item;
            WORD id = 0;
            if (!Read(flags) || (!(flags & MF_POPUP) && !Read(id)) || !ReadText(item.text)) {
                return false;
            }
            item.id = id;
            item.state = flags & (MF_GRAYED | MF_DISABLED);
            if (!(flags & MF_POPUP) && item.text.empty() && id == 0) {
                item.state = MF_SEPARATOR | MF_GRAYED | MF_DISABLED;
            }
            menu.items.push_back(std::move(item));
            if (flags & MF_POPUP && !ReadPopup(menu, depth + 1)) return false;
        }
        return true;
    }

private:
    bool ReadPopup(Menu& menu, unsigned depth) {
        if (depth > kDeepest) return false;
        auto below = std::make_unique<Menu>();
        Menu& added = *below;
        menu.items.back().below = reinterpret_cast<HMENU>(Menus().Add(std::move(below)));
        return ReadItems(added, depth);
    }

    template <class T>
    bool Read(T& value) {
        if (bytes_.size() < sizeof value) return false;
        std::memcpy(&value, bytes_.data(), sizeof value);
        bytes_ = bytes_.subspan(sizeof value);
        return true;
    }

    bool ReadText(WideString& text) {
        for (WCHAR unit = 0; Read(unit);) {
            if (unit == 0) return true;
            text += unit;
        }
        return false;
    }

    std::span<const std::byte> bytes_;
};

}  // namespace

Menu* FindMenu(HMENU handle) noexcept {
    Menu* found = Menus().Find(reinterpret_cast<std::uintptr_t>(handle));
    if (!found) SetLastError(ERROR_INVALID_MENU_HANDLE);
    return found;
}

MenuItem* FindItem(HMENU handle, UINT wanted, UINT flags) noexcept {
    Menu* menu = FindMenu(handle);
    if (!menu) return nullptr;
    if (flags & MF_BYPOSITION) {
        return wanted < menu->items.size() ? &menu->items[wanted] : nullptr;
    }
    for (MenuItem& item : menu->items) {
        if (item.below) {
            if (MenuItem* found = FindItem(item.below, wanted, flags)) return found;
        } else if (item.id == wanted) {
            return &item;
        }
    }
    return nullptr;
}

std::size_t CountMenus() noexcept {
    const Lock lock(UserLock());
    return Menus().Count();
}

}  // namespace platform::user

using namespace platform::user;

HMENU LoadMenuW(HINSTANCE module, LPCWSTR name) noexcept {
    if (platform::InjectFault("LoadMenuW")) return nullptr;
    const std::span<const std::byte> bytes = platform::ResourceBytes(module, name, RT_MENU);
    if (bytes.empty()) return nullptr;
    const Lock lock(UserLock());
    auto made = std::make_unique<Menu>();
    Menu& menu = *made;
    const auto handle = reinterpret_cast<HMENU>(Menus().Add(std::move(made)));
    TemplateReader reader(bytes);
    if (reader.ReadHeader() && reader.ReadItems(menu, 0)) return handle;
    DestroyMenu(handle);
    SetLastError(ERROR_INVALID_DATA);
    return nullptr;
}

BOOL DestroyMenu(HMENU handle) noexcept {
    const Lock lock(UserLock());
    const Menu* menu = FindMenu(handle);
    if (!menu) return FALSE;
    for (const MenuItem& item : menu->items) {
        if (item.below) DestroyMenu(item.below);
    }
    return Menus().Remove(reinterpret_cast<std::uintptr_t>(handle));
}

HMENU GetSubMenu(HMENU handle, int position) noexcept {
    const Lock lock(UserLock());
    const MenuItem* item = FindItem(handle, static_cast<UINT>(position), MF_BYPOSITION);
    return item ? item->below : nullptr;
}

BOOL EnableMenuItem(HMENU handle, UINT wanted, UINT state) noexcept {
    constexpr UINT kStates = MF_GRAYED | MF_DISABLED;
    const Lock lock(UserLock());
    MenuItem* item = FindItem(handle, wanted, state);
    if (!item) return -1;
    const UINT old = item->state & kStates;
    item->state = (item->state & ~kStates) | (state & kStates);
    return static_cast<BOOL>(old);
}

int GetMenuItemCount(HMENU handle) noexcept {
    const Lock lock(UserLock());
    const Menu* menu = FindMenu(handle);
    return menu ? static_cast<int>(menu->items.size()) : -1;
}

UINT GetMenuItemID(HMENU handle, int position) noexcept {
    const Lock lock(UserLock());
    const MenuItem* item = FindItem(handle, static_cast<UINT>(position), MF_BYPOSITION);
    return !item || item->below ? static_cast<UINT>(-1) : item->id;
}

UINT GetMenuState(HMENU handle, UINT wanted, UINT flags) noexcept {
    const Lock lock(UserLock());
    const MenuItem* item = FindItem(handle, wanted, flags);
    if (!item) return static_cast<UINT>(-1);
    if (!item->below) return item->state;
    const Menu* below = FindMenu(item->below);
    const UINT count = below ? static_cast<UINT>(below->items.size()) : 0;
    return item->state | MF_POPUP | count << 8;
}

int GetMenuStringW(HMENU handle, UINT wanted, LPWSTR buffer, int size, UINT flags) noexcept {
    const Lock lock(UserLock());
    const MenuItem* item = FindItem(handle, wanted, flags);
    if (!item) return 0;
    if (!buffer || size <= 0) return static_cast<int>(item->text.size());
    const std::size_t length = item->text.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = 0;
    return static_cast<int>(length);
}
