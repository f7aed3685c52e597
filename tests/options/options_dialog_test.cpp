#include "options/options_dialog.h"

#include "options/centre_window.h"
#include "platform/testing_gui.h"
#include "resources/resource_ids.h"
#include "tests/options/dialog_support.h"

namespace {

using namespace options_test;

class OptionsDialogTest : public DialogTest {
protected:
    INT_PTR Run(platform::testing::DialogScript::Step script) {
        const platform::testing::DialogScript running({std::move(script)});
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
    EXPECT_EQ(Run([&](HWND dialog) {
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
              }),
              IDCANCEL);
    EXPECT_TRUE(IsWindowEnabled(frame_));
}

}  // namespace
