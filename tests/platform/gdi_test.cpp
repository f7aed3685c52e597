#include "platform/gdi.h"

#include <gtest/gtest.h>

#include "platform/modules.h"
#include "platform/resources.h"
#include "platform/testing.h"
#include "platform/testing_gui.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

constexpr std::uint32_t kFace = 0x112233;

std::uint32_t ColourOf(int index) {
    const DWORD colour = GetSysColor(index);
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | colour >> 16;
}
const std::uint32_t kParent = ColourOf(COLOR_BTNSHADOW);
const std::uint32_t kChild = ColourOf(COLOR_HIGHLIGHT);

HBRUSH BrushOf(HWND window) {
    return GetSysColorBrush(GetParent(window) ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW);
}

/// Windows without a class brush that erase themselves in their own colour.
LRESULT CALLBACK EraseInColour(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_ERASEBKGND) return DefWindowProcW(window, message, wParam, lParam);
    const RECT all{-100, -100, 1000, 1000};
    FillRect(reinterpret_cast<HDC>(wParam), &all, BrushOf(window));
    return 1;
}

TEST(Bitmaps, FromResourcesAreDrawnAndStretched) {
    const ModuleHandle probe(LoadLibraryW(FromUtf8(TEST_MODULES "\\probe.dll").c_str()));
    ASSERT_TRUE(probe);
    EXPECT_EQ(LoadBitmapW(probe.Get(), MAKEINTRESOURCEW(999)), nullptr);
    if (testing::kOwnsTheSystem) {
        EXPECT_EQ(LoadBitmapW(probe.Get(), MAKEINTRESOURCEW(3)), nullptr) << "cut short";
    }
    const BitmapHandle bitmap(LoadBitmapW(probe.Get(), MAKEINTRESOURCEW(2)));
    ASSERT_TRUE(bitmap);
    BITMAP info{};
    ASSERT_EQ(GetObjectW(bitmap.Get(), sizeof info, &info), static_cast<int>(sizeof info));
    EXPECT_EQ(info.bmWidth, 2);
    EXPECT_EQ(info.bmHeight, 2);
    const MemoryDc from(CreateCompatibleDC(nullptr));
    const SelectedBitmap source(from.Get(), bitmap.Get());

    WNDCLASSEXW window{};
    window.cbSize = sizeof window;
    window.lpfnWndProc = EraseInColour;
    window.lpszClassName = TEXT("QuvadaPainted");
    ASSERT_TRUE(RegisterClassExW(&window));
    const HWND top = CreateWindowExW(0, window.lpszClassName, nullptr, WS_POPUP | WS_CLIPCHILDREN,
                                     0, 0, 40, 30, nullptr, nullptr, nullptr, nullptr);
    const HWND child = CreateWindowExW(0, window.lpszClassName, nullptr, WS_CHILD | WS_VISIBLE, 30,
                                       20, 20, 20, top, nullptr, nullptr, nullptr);
    ShowWindow(top, SW_SHOW);
    testing::RunMessages();
    {
        const WindowDc dc(top);
        EXPECT_TRUE(StretchBlt(dc.Get(), 1, 2, 6, 4, from.Get(), 0, 0, 2, 2, SRCCOPY));
        EXPECT_TRUE(BitBlt(dc.Get(), 29, 20, 2, 2, from.Get(), 0, 0, SRCCOPY));
        EXPECT_TRUE(StretchBlt(dc.Get(), 35, -2, 60, 4, from.Get(), 0, 0, 2, 2, SRCCOPY));
    }
    const testing::Picture picture = testing::PictureOf(top);
    ASSERT_EQ(picture.width, 40);
    ASSERT_EQ(picture.height, 30);
    const struct {
        const char* why;
        int x, y;
        std::uint32_t colour;
    } kCases[] = {
        {"what the window erased", 0, 0, kParent},
        {"first pixel, three times two", 1, 2, 0xFF0000},
        {"its last copy", 3, 3, 0xFF0000},
        {"the one beside it", 4, 2, 0x00FF00},
        {"the one below", 1, 4, 0x0000FF},
        {"the last one", 6, 5, kFace},
        {"behind it", 7, 5, kParent},
        {"unstretched", 29, 20, 0xFF0000},
        {"clipped by the child", 30, 20, kChild},
        {"the child's end", 39, 29, kChild},
        {"cut at the window's edge", 39, 0, 0x0000FF},
    };
    for (const auto& c : kCases) EXPECT_EQ(picture.At(c.x, c.y), c.colour) << c.why;
    DestroyWindow(child);
    testing::RunMessages();
    EXPECT_EQ(testing::PictureOf(top).At(39, 29), kParent) << "painted again where the child was";
    const std::string file = picture.FileBytes();
    EXPECT_EQ(file.size(), 54u + 40 * 30 * 4);
    EXPECT_EQ(file.substr(0, 2), "BM");
    DestroyWindow(top);
    UnregisterClassW(window.lpszClassName, nullptr);
}

TEST(Bitmaps, AreKeptInMemoryContexts) {
    const testing::GuiObjects before = testing::CountGuiObjects();
    {
        const MemoryDc dc(CreateCompatibleDC(nullptr));
        const WindowDc screen(nullptr);
        const BitmapHandle bitmap(CreateCompatibleBitmap(screen.Get(), 3, 3));
        const RECT all{0, 0, 3, 3};
        const SelectedBitmap selected(dc.Get(), bitmap.Get());
        FillRect(dc.Get(), &all, GetSysColorBrush(COLOR_HIGHLIGHT));
        EXPECT_EQ(SelectObject(dc.Get(), nullptr), nullptr);
        // A copy onto itself takes what was there before.
        const RECT first{0, 0, 1, 1};
        FillRect(dc.Get(), &first, GetSysColorBrush(COLOR_BTNSHADOW));
        EXPECT_TRUE(BitBlt(dc.Get(), 1, 1, 2, 2, dc.Get(), 0, 0, SRCCOPY));
        const testing::ScreenResolution high(144);
        EXPECT_EQ(GetDeviceCaps(screen.Get(), LOGPIXELSY), 144);
    }
    EXPECT_EQ(testing::CountGuiObjects().drawing, before.drawing);
    EXPECT_FALSE(DeleteDC(reinterpret_cast<HDC>(ULONG_PTR{0x7FFE0})));
    EXPECT_FALSE(BitBlt(nullptr, 0, 0, 1, 1, nullptr, 0, 0, SRCCOPY));
}

}  // namespace
}  // namespace platform
