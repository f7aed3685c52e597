#include <utility>

#include "platform/gdi.h"
#include "platform/scope_exit.h"
#include "platform/testing_gui.h"

// clang-format off: this header of the system wants the base types before it.
#include <psapi.h>
// clang-format on

// The slots of the program's import table, by way of which it calls these functions.
extern "C" {
extern void* __imp_GetDeviceCaps;
extern void* __imp_TrackPopupMenu;
}

namespace platform::testing {

struct MenuChoice::State {
    UINT command;
    State* older;
    std::vector<ShownMenu> shown;
};

namespace {

thread_local MenuChoice::State* newest = nullptr;
decltype(&TrackPopupMenu) realTrackPopupMenu = nullptr;

int heldDpi = 0;  // 0: the screen's own
decltype(&GetDeviceCaps) realGetDeviceCaps = nullptr;

int WINAPI HeldDeviceCaps(HDC dc, int what) {
    const bool isResolution = what == LOGPIXELSX || what == LOGPIXELSY;
    return heldDpi != 0 && isResolution ? heldDpi : realGetDeviceCaps(dc, what);
}

/// Puts a function into a slot. \return what was there.
void* Patch(void** slot, void* replacement) {
    DWORD access = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &access);
    void* const old = std::exchange(*slot, replacement);
    VirtualProtect(slot, sizeof *slot, access, &access);
    return old;
}

/// The menu takes its keys from the queue of the thread: down to the command, then return. Return
/// counts only once it is a character, behind all keys that are there already.
void PostKeys(HWND owner, const std::vector<ShownMenuItem>& items, UINT command) {
    WPARAM last = VK_ESCAPE;
    for (const ShownMenuItem& item : items) {
        if (item.command == 0) continue;
        PostMessageW(owner, WM_KEYDOWN, VK_DOWN, 0);
        if (item.command != command) continue;
        if (item.isEnabled) last = VK_RETURN;
        break;
    }
    PostMessageW(owner, WM_KEYDOWN, last, 0);
}

BOOL WINAPI TrackAndChoose(HMENU menu, UINT flags, int x, int y, int reserved, HWND owner,
                           const RECT* ignored) {
    if (newest) {
        newest->shown.push_back({owner, {x, y}, flags, ItemsOf(menu)});
        PostKeys(owner, newest->shown.back().items, newest->command);
    }
    return realTrackPopupMenu(menu, flags, x, y, reserved, owner, ignored);
}

void PatchOnce() {
    if (realGetDeviceCaps) return;
    realGetDeviceCaps = reinterpret_cast<decltype(&GetDeviceCaps)>(
        Patch(&__imp_GetDeviceCaps, reinterpret_cast<void*>(&HeldDeviceCaps)));
    realTrackPopupMenu = reinterpret_cast<decltype(&TrackPopupMenu)>(
        Patch(&__imp_TrackPopupMenu, reinterpret_cast<void*>(&TrackAndChoose)));
}

}  // namespace

ScreenResolution::ScreenResolution(int dpi) : old_(heldDpi) {
    PatchOnce();
    heldDpi = dpi;
}
ScreenResolution::~ScreenResolution() { heldDpi = old_; }

MenuChoice::MenuChoice(UINT command) : state_(new State{command, newest, {}}) {
    PatchOnce();
    newest = state_.get();
}
MenuChoice::~MenuChoice() { newest = state_->older; }
const std::vector<ShownMenu>& MenuChoice::Shown() const { return state_->shown; }

Picture PictureOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    Picture picture{rect.right - rect.left, rect.bottom - rect.top, {}};
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture.width;
    info.bmiHeader.biHeight = -picture.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const HDC dc = GetWindowDC(window);
    const ScopeExit release([&]() noexcept { ReleaseDC(window, dc); });
    const MemoryDc memory(CreateCompatibleDC(dc));
    void* bits = nullptr;
    const BitmapHandle bitmap(
        CreateDIBSection(memory.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!bitmap) return {};
    const SelectedBitmap selected(memory.Get(), bitmap.Get());
    BitBlt(memory.Get(), 0, 0, picture.width, picture.height, dc, 0, 0, SRCCOPY);
    GdiFlush();
    const auto* first = static_cast<const std::uint32_t*>(bits);
    picture.pixels.assign(first, first + picture.width * picture.height);
    for (std::uint32_t& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

GuiObjects CountGuiObjects() {
    const HANDLE self = GetCurrentProcess();
    DWORD handles = 0;
    PROCESS_MEMORY_COUNTERS_EX memory{};
    GetProcessHandleCount(self, &handles);
    K32GetProcessMemoryInfo(self, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                            sizeof memory);
    return {GetGuiResources(self, GR_USEROBJECTS), GetGuiResources(self, GR_GDIOBJECTS), handles,
            memory.PrivateUsage};
}

HWND ActivateOwnWindow(bool (*isSought)(HWND window)) {
    struct Search {
        bool (*isSought)(HWND window);
        HWND found;
    } search{isSought, nullptr};
    const auto look = [](HWND window, LPARAM place) -> BOOL {
        auto& own = *reinterpret_cast<Search*>(place);
        if (!own.isSought(window)) return TRUE;
        own.found = window;
        return FALSE;
    };
    EnumThreadWindows(GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&search));
    if (search.found) SetActiveWindow(search.found);
    return search.found;
}

}  // namespace platform::testing
