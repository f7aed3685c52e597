#include <gtest/gtest.h>

#include "platform/modules.h"
#include "platform/resources.h"
#include "platform/testing_gui.h"

namespace platform {
namespace {

TEST(Menus, FromResourcesAreFoundByCommandAndByPlace) {
    const ModuleHandle probe(LoadLibraryW(FromUtf8(TEST_MODULES "\\probe.dll").c_str()));
    ASSERT_TRUE(probe);
    EXPECT_EQ(LoadMenuW(probe.Get(), MAKEINTRESOURCEW(999)), nullptr);
    MenuHandle menu(LoadMenuW(probe.Get(), MAKEINTRESOURCEW(213)));
    ASSERT_TRUE(menu);
    EXPECT_EQ(GetMenuItemCount(menu.Get()), 2);
    EXPECT_EQ(GetMenuItemID(menu.Get(), 0), static_cast<UINT>(-1)) << "a menu below";
    EXPECT_EQ(GetMenuItemID(menu.Get(), 1), 13u);
    EXPECT_EQ(GetSubMenu(menu.Get(), 1), nullptr);
    const HMENU first = GetSubMenu(menu.Get(), 0);
    const HMENU deeper = GetSubMenu(first, 2);
    ASSERT_TRUE(first && deeper);
    const struct {
        UINT item, flags, state;
    } kStates[] = {
        {11, MF_BYCOMMAND, MF_ENABLED},
        {12, MF_BYCOMMAND, MF_GRAYED},
        {1, MF_BYPOSITION, MF_SEPARATOR | MF_GRAYED | MF_DISABLED},
        {2, MF_BYPOSITION, MF_POPUP | 1u << 8},
        {99, MF_BYCOMMAND, static_cast<UINT>(-1)},
        {3, MF_BYPOSITION, static_cast<UINT>(-1)},
    };
    for (const auto& c : kStates)
        EXPECT_EQ(GetMenuState(first, c.item, c.flags), c.state) << c.item;
    EXPECT_EQ(EnableMenuItem(menu.Get(), 12, MF_BYCOMMAND | MF_ENABLED), BOOL{MF_GRAYED});
    EXPECT_EQ(EnableMenuItem(menu.Get(), 12, MF_BYCOMMAND | MF_GRAYED), BOOL{MF_ENABLED});
    EXPECT_EQ(EnableMenuItem(menu.Get(), 99, MF_BYCOMMAND | MF_GRAYED), -1);
    const std::vector<testing::ShownMenuItem> items = testing::ItemsOf(deeper);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_TRUE(items[0].command == 12 && items[0].text == TEXT("Two") && !items[0].isEnabled);
    menu.Reset();
    EXPECT_EQ(GetMenuItemCount(deeper), -1) << "it went with the one above";
    EXPECT_FALSE(TrackPopupMenu(deeper, 0, 0, 0, 0, nullptr, nullptr));
}

}  // namespace
}  // namespace platform
