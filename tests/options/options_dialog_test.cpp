#include "options/options_dialog.h"

#include <optional>

#include "options/centre_window.h"
#include "platform/testing.h"
#include "platform/testing_gui.h"
#include "resources/resource_ids.h"
#include "tests/options/dialog_support.h"

namespace {

using namespace options_test;

class OptionsDialogTest : public DialogTest {
protected:
    INT_PTR Run(std::vector<platform::testing::DialogScript::Step> script) {
        const platform::testing::DialogScript running(std::move(script));
        OptionsDialog dialog;
        dialog.Bind(settings_);
        return dialog.Run();
    }

    ConversionSettings settings_{TEXT("Software\\Quvada Test")};
};

TEST(CentredPlaceTest, StaysWithinTheArea) {
    constexpr struct {
        const char* why;
        RECT owner, area;
        SIZE size;
        POINT place;
    } kCases[] = {
        {"centred", {100, 100, 500, 300}, {0, 0, 1000, 800}, {200, 100}, {200, 150}},
        {"larger than its owner", {400, 300, 500, 400}, {0, 0, 1000, 800}, {300, 200}, {300, 250}},
        {"owner at the left and top", {-90, -50, 10, 50}, {0, 0, 1000, 800}, {200, 100}, {0, 0}},
        {"at the right and bottom",
         {900, 700, 1100, 900},
         {0, 0, 1000, 800},
         {200, 100},
         {800, 700}},
        {"a screen on the left",
         {-900, 100, -700, 300},
         {-1000, 40, 0, 800},
         {400, 100},
         {-1000, 150}},
        {"larger than the area", {0, 0, 100, 100}, {10, 20, 110, 120}, {300, 300}, {10, 20}},
    };
    for (const auto& c : kCases) {
        const POINT place = CentredPlace(c.owner, c.area, c.size);
        EXPECT_TRUE(place.x == c.place.x && place.y == c.place.y)
            << c.why << ": " << place.x << "," << place.y;
    }
}

TEST_F(OptionsDialogTest, ShowsThePageOfTheSelectedTab) {
    settings_.Units = 1;
    EXPECT_EQ(Run({[&](HWND dialog) {
                  const Pages all(dialog);
                  const HWND tabs = all.tabs;
                  const HWND pages[] = {all.page, all.security, all.advanced};
                  EXPECT_FALSE(IsWindowEnabled(frame_));
                  EXPECT_EQ(GetWindow(dialog, GW_OWNER), frame_);
                  RECT place{}, owner{};
                  GetWindowRect(dialog, &place);
                  GetWindowRect(frame_, &owner);
                  EXPECT_NEAR(place.left + place.right, owner.left + owner.right, 2);
                  EXPECT_EQ(GetFocus(), tabs);
                  EXPECT_NE(GetWindowLongPtrW(tabs, GWL_STYLE) & LONG_PTR{WS_CLIPCHILDREN}, 0);
                  ASSERT_EQ(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0), 3);
                  for (const WPARAM tab : {0, 1, 2, 1, 0, 2}) {
                      SCOPED_TRACE(tab);
                      SelectTab(dialog, tab);
                      WCHAR text[20];
                      TCITEMW item{};
                      item.mask = TCIF_TEXT;
                      item.pszText = text;
                      item.cchTextMax = 20;
                      SendMessageW(tabs, TCM_GETITEMW, tab, reinterpret_cast<LPARAM>(&item));
                      const char* const kNames[] = {"PDF page", "Security", "Advanced"};
                      EXPECT_EQ(platform::ToUtf8(item.pszText), kNames[tab]);
                      for (WPARAM page = 0; page < 3; ++page) {
                          ASSERT_TRUE(pages[page]) << page;
                          EXPECT_EQ(IsWindowVisible(pages[page]) != 0, page == tab);
                      }
                      RECT area{};
                      GetClientRect(tabs, &area);
                      SendMessageW(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
                      MapWindowPoints(tabs, nullptr, reinterpret_cast<POINT*>(&area), 2);
                      GetWindowRect(pages[tab], &place);
                      EXPECT_TRUE(place.left == area.left && place.top == area.top &&
                                  place.right == area.right && place.bottom == area.bottom);
                  }
                  Press(dialog, QVD_BUTTON_CANCEL);
              }}),
              IDCANCEL);
    EXPECT_TRUE(IsWindowEnabled(frame_));
}

TEST_F(OptionsDialogTest, IsWorkedByKeys) {
    using platform::testing::PostKey;
    // Width and height cannot be reached: the paper says them. A group of radio buttons is one
    // stop.
    constexpr int kStops[] = {
        QVD_BUTTON_RESET,   QVD_BUTTON_OK, QVD_BUTTON_CANCEL, QVD_LIST_PAPER, QVD_LIST_UNITS,
        QVD_RADIO_PORTRAIT, QVD_EDIT_TOP,  QVD_EDIT_BOTTOM,   QVD_EDIT_LEFT,  QVD_EDIT_RIGHT,
        QVD_BUTTON_RESET,   QVD_BUTTON_OK, QVD_BUTTON_CANCEL, QVD_LIST_PAPER};
    std::vector<platform::testing::DialogScript::Step> steps;
    steps.push_back([](HWND) { PostKey(VK_RIGHT); });
    steps.push_back([](HWND dialog) {
        EXPECT_TRUE(IsWindowVisible(Pages(dialog).security));
        PostKey(VK_LEFT);
    });
    for (const int stop : kStops) {
        steps.push_back([](HWND) { PostKey(VK_TAB); });
        steps.push_back([stop](HWND) { EXPECT_EQ(GetDlgCtrlID(GetFocus()), stop); });
    }
    // From inside a page: on over the last tab, and back over the first.
    std::optional<platform::testing::HeldKey> control, shift;
    const auto goesTo = [&](HWND Pages::*page) {
        steps.push_back([](HWND) { PostKey(VK_TAB); });
        steps.push_back([page](HWND dialog) {
            EXPECT_TRUE(IsWindowVisible(Pages(dialog).*page));
            EXPECT_EQ(GetDlgCtrlID(GetFocus()), QVD_TAB_CONTROL);
        });
    };
    steps.push_back([&](HWND) { control.emplace(VK_CONTROL); });
    goesTo(&Pages::security);
    goesTo(&Pages::advanced);
    goesTo(&Pages::page);
    steps.push_back([&](HWND) { shift.emplace(VK_SHIFT); });
    goesTo(&Pages::advanced);
    goesTo(&Pages::security);
    steps.push_back([&](HWND) {
        shift.reset();
        control.reset();
    });
    const std::size_t common = steps.size();
    for (const auto& [key, result] : {std::pair(VK_RETURN, IDOK), std::pair(VK_ESCAPE, IDCANCEL)}) {
        steps.resize(common);
        steps.push_back([key = key](HWND) { PostKey(static_cast<WPARAM>(key)); });
        EXPECT_EQ(Run(steps), result);
    }
}

TEST_F(OptionsDialogTest, LeavesNothingBehind) {
    const auto open = [&](int times) {
        for (int i = 0; i < times; ++i) {
            const int button = i % 20 == 0 ? IDOK : IDCANCEL;  // OK writes to the disk.
            EXPECT_EQ(Run({[=](HWND dialog) { Press(dialog, button); }}), button);
        }
    };
    // Under Wine an opening takes a third of a second.
    const int times = platform::testing::kOwnsTheSystem ? 500 : 20;
    open(5);
    const auto before = platform::testing::CountGuiObjects();
    open(times);
    const auto after = platform::testing::CountGuiObjects();
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_EQ(after.drawing, before.drawing);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_LE(after.bytes, before.bytes + 64 * 1024);
}

}  // namespace
