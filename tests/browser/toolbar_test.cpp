#include <gtest/gtest.h>

#include "browser/band_window.h"
#include "browser/screen_scale.h"
#include "foundation/module_folder.h"
#include "options/reflection.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/modules.h"
#include "platform/testing.h"
#include "platform/testing_gui.h"
#include "tests/support/fault_walk.h"
#include "tests/support/test_profile.h"

namespace {

using platform::ComObject;
using platform::MakeObject;
using platform::NotImplemented;
using platform::WideString;
using platform::testing::CountGuiObjects;
using platform::testing::MenuChoice;
using platform::testing::Picture;
using platform::testing::RunMessages;
using platform::testing::SaveDialogScript;
using platform::testing::ScreenResolution;

/// What the user has done in the page; the test owns it.
struct Page {
    bool hasDocument = true;
    bool hasSelection = false;
    int addressesRead = 0;
};

class Range final : public ComObject<NotImplemented<IHTMLTxtRange>> {
    HRESULT STDMETHODCALLTYPE get_text(BSTR* text) noexcept override {
        *text = SysAllocString(TEXT("chosen"));
        return S_OK;
    }
};

class Selection final : public ComObject<NotImplemented<IHTMLSelectionObject>> {
    HRESULT STDMETHODCALLTYPE createRange(IDispatch** range) noexcept override {
        *range = MakeObject<Range>().Detach();
        return S_OK;
    }
};

class Document final : public ComObject<NotImplemented<IHTMLDocument2>> {
public:
    explicit Document(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE get_selection(IHTMLSelectionObject** selection) noexcept override {
        *selection = page_.hasSelection ? MakeObject<Selection>().Detach() : nullptr;
        return *selection ? S_OK : E_FAIL;
    }

private:
    Page& page_;
};

class Browser final : public ComObject<NotImplemented<IWebBrowser2>> {
public:
    explicit Browser(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override {
        *document = page_.hasDocument ? MakeObject<Document>(page_).Detach() : nullptr;
        return *document ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR*) noexcept override {
        ++page_.addressesRead;
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override {
        *window = 0x1234;
        return S_OK;
    }

private:
    Page& page_;
};

constexpr int kStripes[] = {COLOR_BTNSHADOW, COLOR_HIGHLIGHT, COLOR_WINDOW};
constexpr int kStripe = 10;

std::uint32_t PixelOf(int colour) {
    const DWORD value = GetSysColor(colour);
    return (value & 0xFF) << 16 | (value & 0xFF00) | value >> 16;
}

/// The stand-in for the browser's frame: slanted stripes, so that a shift in any direction shows.
LRESULT CALLBACK Striped(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_ERASEBKGND) return DefWindowProcW(window, message, wParam, lParam);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 30; ++x) {
            const RECT field{x * kStripe, y * kStripe, (x + 1) * kStripe, (y + 1) * kStripe};
            FillRect(reinterpret_cast<HDC>(wParam), &field,
                     GetSysColorBrush(kStripes[(x + y) % 3]));
        }
    }
    return 1;
}

std::uint32_t StripeAt(int x, int y) { return PixelOf(kStripes[(x / kStripe + y / kStripe) % 3]); }

class ToolbarTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(AttachModule(GetModuleHandleW(nullptr)));
        WNDCLASSEXW info{};
        info.cbSize = sizeof info;
        info.lpfnWndProc = Striped;
        info.lpszClassName = TEXT("QuvadaFrame");
        RegisterClassExW(&info);
        frame_ = CreateWindowExW(0, info.lpszClassName, nullptr, WS_POPUP | WS_CLIPCHILDREN, 40, 30,
                                 300, 200, nullptr, nullptr, nullptr, nullptr);
        ASSERT_TRUE(frame_);
        ShowWindow(frame_, SW_SHOW);
        ScreenScale::Forget();
    }
    void TearDown() override {
        DestroyWindow(frame_);
        UnregisterClassW(TEXT("QuvadaFrame"), nullptr);
        ScreenScale::Forget();
        DetachModule();
    }

    void MakeBand(int x = 13, int y = 7, int width = 150, int height = 60) {
        EXPECT_TRUE(band_.Create(frame_, browser_.Get()));
        ASSERT_TRUE(IsWindow(band_.Window) && IsWindow(band_.Toolbar.Window));
        MoveWindow(band_.Window, x, y, width, height, TRUE);
    }
    Picture Painted() {
        RunMessages();
        return platform::testing::PictureOf(frame_);
    }
    RECT Button() {
        RECT rect{};
        SendMessageW(band_.Toolbar.Window, TB_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&rect));
        return rect;
    }
    void Click(LONG x, LONG y) {
        const LPARAM at = MAKELPARAM(static_cast<DWORD_PTR>(x), static_cast<DWORD_PTR>(y));
        SendMessageW(band_.Toolbar.Window, WM_LBUTTONDOWN, 1, at);
        SendMessageW(band_.Toolbar.Window, WM_LBUTTONUP, 0, at);
        RunMessages();
    }

    const test_support::TestProfile profile_;
    const SaveDialogScript cancelled_{std::nullopt};
    const platform::testing::MessageBoxRecorder messages_;
    Page page_;
    platform::ComPtr<Browser> browser_ = MakeObject<Browser>(page_);
    BandWindow band_;
    HWND frame_ = nullptr;
};

TEST(ScreenScaleTest, RoundsAbove96) {
    const struct {
        int dpi, box, button, width, padding, margin;
    } kCases[] = {
        {72, 20, 24, 41, 10, 1},  {96, 20, 24, 41, 10, 1},  {120, 25, 30, 51, 13, 1},
        {144, 30, 36, 62, 15, 2}, {192, 40, 48, 82, 20, 2}, {240, 50, 60, 103, 25, 3},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.dpi);
        const ScreenScale scale(c.dpi);
        EXPECT_EQ(scale.Scale(20), c.box);
        EXPECT_EQ(scale.Scale(24), c.button);
        EXPECT_EQ(scale.Scale(41), c.width);
        EXPECT_EQ(scale.Scale(10), c.padding);
        EXPECT_EQ(scale.Margin(), c.margin);
    }
    const ScreenResolution high(144);
    ScreenScale::Forget();
    EXPECT_EQ(Scale(41), 62);
    const ScreenResolution higher(192);
    EXPECT_EQ(Scale(41), 62) << "read once";
    ScreenScale::Forget();
}

TEST(PicturePlaceTest, KeepsAMarginAndTheLeastSide) {
    const struct {
        const char* why;
        RECT item;
        UINT state;
        int margin;
        RECT place;
    } kCases[] = {
        {"fills the height", {5, 3, 46, 27}, 0, 1, {6, 4, 28, 26}},
        {"least side", {0, 0, 41, 20}, 0, 1, {1, 1, 19, 19}},
        {"below it the picture's own", {0, 0, 41, 19}, 0, 1, {1, 1, 17, 17}},
        {"far below", {0, 0, 41, 17}, 0, 1, {1, 1, 17, 17}},
        {"higher resolution", {0, 0, 62, 36}, 0, 2, {2, 2, 34, 34}},
        {"pressed", {0, 0, 41, 24}, CDIS_HOT | CDIS_SELECTED, 1, {2, 2, 24, 24}},
        {"only selected", {0, 0, 41, 24}, CDIS_SELECTED, 1, {1, 1, 23, 23}},
        {"and more than pressed",
         {0, 0, 41, 24},
         CDIS_HOT | CDIS_SELECTED | 0x10,
         1,
         {1, 1, 23, 23}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        const RECT place = PicturePlace(c.item, c.state, c.margin, 16);
        EXPECT_EQ(place.left, c.place.left);
        EXPECT_EQ(place.top, c.place.top);
        EXPECT_EQ(place.right, c.place.right);
        EXPECT_EQ(place.bottom, c.place.bottom);
    }
}

TEST_F(ToolbarTest, IsLaidOutAndDrawnForEachResolution) {
    for (const int dpi : {96, 120, 144, 192}) {
        SCOPED_TRACE(dpi);
        const ScreenResolution resolution(dpi);
        ScreenScale::Forget();
        MakeBand(0, 0, 200, 100);
        const RECT button = Button();
        EXPECT_EQ(button.left, 0);
        EXPECT_EQ(button.top, 0);
        EXPECT_EQ(button.right, Scale(41));
        EXPECT_GE(button.bottom, Scale(24));
        EXPECT_EQ(band_.Toolbar.ButtonsBottom(), button.bottom);
        const int margin = ScreenScale::OfScreen().Margin();
        const int side = button.bottom - 2 * margin;
        const Picture picture = Painted();
        // The middle of a pixel of the picture, which has been made larger.
        const auto at = [&](int x, int y) {
            return picture.At(margin + (2 * x + 1) * side / 32, margin + (2 * y + 1) * side / 32);
        };
        EXPECT_EQ(at(1, 1), 0x4A648Cu) << "the page's corner";
        EXPECT_EQ(at(3, 2), 0xFFFFFFu) << "the page";
        EXPECT_EQ(at(13, 14), 0xC82828u) << "the mark's corner";
        EXPECT_EQ(at(9, 8), 0xFFFFFFu) << "the arrow";
        EXPECT_EQ(picture.At(button.right + 5, 3), StripeAt(button.right + 5, 3));
        DestroyWindow(band_.Window);
    }
}

TEST_F(ToolbarTest, LooksLikeWhatLiesBehindIt) {
    MakeBand(13, 7, 50, 80);
    EXPECT_EQ(SendMessageW(band_.Window, WM_ERASEBKGND, 0, 0), 0);
    const platform::MemoryDc memory(CreateCompatibleDC(nullptr));
    const platform::WindowDc screen(nullptr);
    const platform::BitmapHandle bitmap(CreateCompatibleBitmap(screen.Get(), 50, 80));
    const platform::SelectedBitmap selected(memory.Get(), bitmap.Get());
    EXPECT_EQ(SendMessageW(band_.Window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(memory.Get()), 0),
              1);
    // The way to look at it: as a picture in the frame's own window.
    const platform::WindowDc window(frame_);
    BitBlt(window.Get(), 100, 100, 50, 80, memory.Get(), 0, 0, SRCCOPY);
    const Picture picture = platform::testing::PictureOf(frame_);
    for (const int y : {0, 3, 25, 49}) {
        for (const int x : {0, 7, 30, 49}) {
            EXPECT_EQ(picture.At(100 + x, 100 + y), StripeAt(13 + x, 7 + y)) << x << "," << y;
        }
    }
    EXPECT_EQ(picture.At(100, 150), 0u) << "the width bounds the height, too";
    EXPECT_EQ(picture.At(149, 179), 0u);
}

TEST_F(ToolbarTest, AnswersEachStageOfDrawing) {
    MakeBand();
    const struct {
        DWORD stage;
        LRESULT result;
    } kCases[] = {
        {CDDS_PREPAINT, CDRF_NOTIFYITEMDRAW},
        {CDDS_ITEMPREPAINT, CDRF_NOTIFYPOSTPAINT},
        {CDDS_ITEMPOSTPAINT, CDRF_SKIPDEFAULT},
        {CDDS_POSTPAINT, 0},
        {CDDS_PREERASE, 0},
        {CDDS_ITEMPREERASE, 0},
        {CDDS_ITEMPREPAINT | CDDS_SUBITEM, 0},
        {0x55, 0},
    };
    NMCUSTOMDRAW draw{};
    draw.hdr.hwndFrom = band_.Toolbar.Window;
    draw.hdr.code = static_cast<UINT>(NM_CUSTOMDRAW);
    for (const auto& c : kCases) {
        draw.dwDrawStage = c.stage;
        const auto lParam = reinterpret_cast<LPARAM>(&draw);
        EXPECT_EQ(SendMessageW(band_.Window, WM_NOTIFY, 0, lParam), c.result) << c.stage;
        EXPECT_EQ(SendMessageW(band_.Toolbar.Window, WM_NOTIFY + kReflected, 0, lParam), c.result);
    }
}

TEST_F(ToolbarTest, ItsButtonAndItsMenuGiveTheCommands) {
    MakeBand();
    EXPECT_EQ(reinterpret_cast<INT_PTR>(band_.BrowserWindow), 0x1234);
    const RECT button = Button();
    Click(button.left + 5, button.top + 5);
    EXPECT_EQ(page_.addressesRead, 1) << "a click on the button converts the page";
    const struct {
        const char* why;
        bool hasDocument, hasSelection;
        UINT command;
        bool isSelectionOffered;
        int addressesRead;
    } kCases[] = {
        {"page, without a selection", true, false, 32785, false, 1},
        {"page, with a selection", true, true, 32785, true, 1},
        {"the selection", true, true, 32789, true, 1},
        {"greyed, nothing is chosen", true, false, 32789, false, 0},
        {"no document", false, true, 0, false, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        page_ = {c.hasDocument, c.hasSelection, 0};
        const MenuChoice choice(c.command);
        Click(button.right - 4, button.top + 5);
        EXPECT_EQ(page_.addressesRead, c.addressesRead);
        ASSERT_EQ(choice.Shown().size(), 1u);
        const auto& menu = choice.Shown()[0];
        EXPECT_EQ(menu.owner, band_.Toolbar.Window);
        EXPECT_EQ(menu.at.x, 40 + 13);
        EXPECT_EQ(menu.at.y, 30 + 7 + button.bottom);
        ASSERT_EQ(menu.items.size(), 4u);
        EXPECT_TRUE(menu.items[0].command == 32785 && menu.items[0].isEnabled);
        EXPECT_TRUE(menu.items[0].text == TEXT("Convert to PDF"));
        EXPECT_EQ(menu.items[1].command, 32789u);
        EXPECT_EQ(menu.items[1].isEnabled, c.isSelectionOffered);
        EXPECT_TRUE(menu.items[1].text == TEXT("Convert Selection to PDF"));
        EXPECT_EQ(menu.items[2].command, 0u);
        EXPECT_TRUE(menu.items[3].command == 32788 && menu.items[3].isEnabled);
        EXPECT_TRUE(menu.items[3].text == TEXT("Options"));
    }
    band_.Toolbar.Menu.Reset();
    const MenuChoice choice(32785);
    Click(button.right - 4, button.top + 5);
    EXPECT_TRUE(choice.Shown().empty());
}

TEST_F(ToolbarTest, FollowsItsBandAndEndsWithIt) {
    MakeBand(0, 0, 120, 33);
    RECT control{};
    GetClientRect(band_.Toolbar.Window, &control);
    EXPECT_EQ(control.right, 120);
    EXPECT_EQ(control.bottom, 33);
    EXPECT_EQ(SendMessageW(band_.Window, WM_SHOWWINDOW, 1, 0), 0);
    EXPECT_EQ(SendMessageW(band_.Window, WM_PAINT, 0, 0), 1);
    EXPECT_TRUE(band_.Toolbar.Picture);
    DestroyWindow(band_.Window);
    EXPECT_EQ(band_.Window, nullptr);
    EXPECT_EQ(band_.Toolbar.Window, nullptr);
    EXPECT_FALSE(band_.Toolbar.Picture);
    band_.Toolbar.Relayout();
    EXPECT_EQ(band_.Toolbar.ButtonsBottom(), 0);
    BandWindow lost;
    EXPECT_TRUE(lost.Create(nullptr, browser_.Get())) << "without a parent there is no window";
    EXPECT_EQ(lost.Window, nullptr);
}

TEST_F(ToolbarTest, AFailureOnTheWayLeavesNothing) {
    const auto before = CountGuiObjects();
    const MenuChoice givenUp(0);  // A real menu would wait for its user.
    const std::uint64_t failures = test_support::WalkFaults([&](auto) {
        BandWindow band;
        EXPECT_TRUE(band.Create(frame_, browser_.Get()));
        MoveWindow(band.Window, 0, 0, 100, 40, TRUE);
        UpdateWindow(band.Toolbar.Window);
        SendMessageW(band.Toolbar.Window, WM_LBUTTONDOWN, 1, MAKELPARAM(36, 5));
        RunMessages();
    });
    EXPECT_GE(failures, platform::testing::kOwnsTheSystem ? 8u : 0u);
    EXPECT_EQ(CountGuiObjects().windows, before.windows);
    EXPECT_EQ(CountGuiObjects().drawing, before.drawing);
}

TEST_F(ToolbarTest, AThousandBandsLeaveNothing) {
    const auto makeBands = [&](int count) {
        for (int i = 0; i < count; ++i) {
            BandWindow band;
            band.Create(frame_, browser_.Get());
            ASSERT_TRUE(IsWindow(band.Toolbar.Window));
            MoveWindow(band.Window, 0, 0, 100, 40, TRUE);
            UpdateWindow(band.Toolbar.Window);
        }
        RunMessages();
    };
    makeBands(50);
    const auto before = CountGuiObjects();
    makeBands(1000);
    const auto after = CountGuiObjects();
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_EQ(after.drawing, before.drawing);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_LT(after.bytes, before.bytes + 256 * 1024);
}

}  // namespace
