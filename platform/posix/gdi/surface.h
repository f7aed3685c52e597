#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/posix/gdi/gdi_calls.h"
#include "platform/posix/user/window.h"

namespace platform::gdi {

/// Pixels, row by row from the top, each 0x00RRGGBB. The lock of the windows guards them.
struct Surface {
    LONG width = 0;
    LONG height = 0;
    std::vector<std::uint32_t> pixels;

    /// A black one. Null for more pixels than a screen could ever show.
    static std::shared_ptr<Surface> Make(LONG width, LONG height);
    [[nodiscard]] RECT Bounds() const { return {0, 0, width, height}; }
    std::uint32_t* Row(LONG y) { return pixels.data() + static_cast<std::size_t>(y * width); }
};

/// Areas that do not overlap.
using Region = std::vector<RECT>;
void Subtract(Region& region, const RECT& hole);
void Cut(Region& region, const RECT& bounds);

struct DeviceContext {
    std::shared_ptr<Surface> surface;  // null for the screen
    POINT origin = {};                 // where its point 0, 0 lies on the surface
    Region clip;                       // on the surface
    HBITMAP bitmap = nullptr;          // what is selected into a memory device context
    bool isMemory = false;
};

/// Null with ERROR_INVALID_HANDLE. The lock must be held.
DeviceContext* FindDc(HDC dc) noexcept;
HDC AddDc(DeviceContext dc) noexcept;
bool RemoveDc(HDC dc) noexcept;
/// The client area of a window as far as it is visible and, if given, lies in `area`.
DeviceContext WindowContext(user::Window& window, const RECT* area) noexcept;
/// The surface that a window and those below it draw on, as large as the window.
std::shared_ptr<Surface> SurfaceOf(user::Window& top) noexcept;

HBITMAP AddBitmap(std::shared_ptr<Surface> pixels) noexcept;
/// The bitmaps and device contexts of the process.
std::size_t CountObjects() noexcept;
/// Sets the screen's resolution in dots an inch, for a test. \return the old one.
int SetScreenDpi(int dpi) noexcept;

constexpr std::uint32_t PixelOf(COLORREF colour) {
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

}  // namespace platform::gdi
