#include "browser/band_background.h"

#include <algorithm>

bool DrawBandBackground(HWND band, HDC dc) noexcept {
    if (!dc) return false;
    const HWND parent = GetParent(band);
    RECT client{};
    RECT behind{};
    GetClientRect(band, &client);
    GetClientRect(parent, &behind);
    POINT corner{client.left, client.top};
    ClientToScreen(band, &corner);
    ScreenToClient(parent, &corner);
    // The width bounds both sides: a band is wider than it is high.
    const LONG width = client.right - client.left;
    behind.bottom = std::min(behind.bottom, corner.y + width);
    behind.right = std::min(behind.right, corner.x + width);
    const platform::MemoryDc memory(CreateCompatibleDC(dc));
    const platform::BitmapHandle bitmap(
        CreateCompatibleBitmap(dc, behind.right - behind.left, behind.bottom - behind.top));
    if (!memory || !bitmap) return true;
    const platform::SelectedBitmap selected(memory.Get(), bitmap.Get());
    SendMessageW(parent, WM_ERASEBKGND, reinterpret_cast<WPARAM>(memory.Get()), 0);
    BitBlt(dc, client.left, client.top, width, client.bottom - client.top, memory.Get(), corner.x,
           corner.y, SRCCOPY);
    return true;
}
