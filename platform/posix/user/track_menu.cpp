#include "platform/posix/user/menu.h"
#include "platform/posix/user/window.h"
#include "platform/testing_gui.h"

namespace platform::testing {

struct MenuChoice::State {
    UINT command;
    State* older;
    std::vector<ShownMenu> shown;
};

namespace {
thread_local MenuChoice::State* newest = nullptr;
}

MenuChoice::MenuChoice(UINT command) : state_(new State{command, newest, {}}) {
    newest = state_.get();
}
MenuChoice::~MenuChoice() { newest = state_->older; }
const std::vector<ShownMenu>& MenuChoice::Shown() const { return state_->shown; }

}  // namespace platform::testing

BOOL TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT*) noexcept {
    using namespace platform;
    if (!IsWindow(owner)) return FALSE;
    if (GetMenuItemCount(menu) < 0) return FALSE;
    SendMessageW(owner, WM_INITMENU, reinterpret_cast<WPARAM>(menu), 0);
    SendMessageW(owner, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0);
    if (!testing::newest) return TRUE;
    testing::newest->shown.push_back({owner, {x, y}, flags, testing::ItemsOf(menu)});
    const UINT command = testing::newest->command;
    const UINT state = GetMenuState(menu, command, MF_BYCOMMAND);
    if (command == 0 || (state & (MF_GRAYED | MF_DISABLED)) != 0) return TRUE;
    return PostMessageW(owner, WM_COMMAND, command, 0);
}
