/// Writes a picture (BMP) of the toolbar as it stands in a browser's frame: at rest, below the
/// mouse and held down.
///     toolbar_picture <dots an inch> <file>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "browser/band_window.h"
#include "browser/screen_scale.h"
#include "foundation/module_folder.h"
#include "platform/modules.h"
#include "platform/testing_gui.h"

namespace {

LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_ERASEBKGND) return DefWindowProcW(window, message, wParam, lParam);
    RECT client{};
    GetClientRect(window, &client);
    FillRect(reinterpret_cast<HDC>(wParam), &client, GetSysColorBrush(COLOR_BTNFACE));
    return 1;
}

HWND MakeFrame(int width, int height) {
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    info.lpfnWndProc = FrameProcedure;
    info.lpszClassName = TEXT("QuvadaPicture");
    RegisterClassExW(&info);
    return CreateWindowExW(0, info.lpszClassName, nullptr, WS_POPUP | WS_CLIPCHILDREN, 0, 0, width,
                           height, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    const platform::testing::ScreenResolution resolution(std::atoi(arguments[1]));
    if (!AttachModule(GetModuleHandleW(nullptr))) return 1;
    const int gap = Scale(6);
    const int width = Scale(41) + gap;
    const HWND frame = MakeFrame(3 * width + gap, Scale(32) + gap);
    BandWindow bands[3];
    for (int i = 0; i < 3; ++i) {
        bands[i].Create(frame, nullptr);
        MoveWindow(bands[i].Window, gap + i * width, gap / 2, Scale(41), Scale(32), FALSE);
        if (i == 0) continue;
        SendMessageW(bands[i].Toolbar.Window, WM_MOUSEMOVE, 0, MAKELPARAM(8, 8));
        if (i == 2) SendMessageW(bands[i].Toolbar.Window, WM_LBUTTONDOWN, 1, MAKELPARAM(8, 8));
    }
    ShowWindow(frame, SW_SHOW);
    for (const BandWindow& band : bands) {
        RECT button{};
        SendMessageW(band.Toolbar.Window, TB_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&button));
        std::cout << "button " << button.right << " x " << button.bottom << "\n";
        UpdateWindow(band.Window);
        UpdateWindow(band.Toolbar.Window);
    }
    const std::string bytes = platform::testing::PictureOf(frame).FileBytes();
    std::ofstream(arguments[2], std::ios::binary) << bytes;
    DestroyWindow(frame);
    return 0;
}
