#include <utility>

#include "platform/gdi.h"
#include "platform/scope_exit.h"
#include "platform/testing_gui.h"

// The slot of the program's import table, by way of which it calls this function.
extern "C" {
extern void* __imp_GetDeviceCaps;
}

namespace platform::testing {
namespace {

int heldDpi = 0;  // 0: the screen's own
decltype(&GetDeviceCaps) realGetDeviceCaps = nullptr;

int WINAPI HeldDeviceCaps(HDC dc, int what) {
    const bool isResolution = what == LOGPIXELSX || what == LOGPIXELSY;
    return heldDpi != 0 && isResolution ? heldDpi : realGetDeviceCaps(dc, what);
}

void PatchOnce() {
    if (realGetDeviceCaps) return;
    DWORD access = 0;
    void** const slot = &__imp_GetDeviceCaps;
    realGetDeviceCaps = reinterpret_cast<decltype(&GetDeviceCaps)>(*slot);
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &access);
    *slot = reinterpret_cast<void*>(&HeldDeviceCaps);
    VirtualProtect(slot, sizeof *slot, access, &access);
}

}  // namespace

ScreenResolution::ScreenResolution(int dpi) : old_(heldDpi) {
    PatchOnce();
    heldDpi = dpi;
}
ScreenResolution::~ScreenResolution() { heldDpi = old_; }

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
    return {GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS),
            GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)};
}

}  // namespace platform::testing
