#include <algorithm>

#include "platform/posix/gdi/surface.h"
#include "platform/posix/last_error.h"

namespace platform::gdi {
namespace {

using namespace user;

constexpr COLORREF kSystemColours[] = {
    RGB(200, 200, 200), RGB(0, 0, 0),       RGB(153, 180, 209), RGB(191, 205, 219),
    RGB(240, 240, 240), RGB(255, 255, 255), RGB(100, 100, 100), RGB(0, 0, 0),
    RGB(0, 0, 0),       RGB(0, 0, 0),       RGB(180, 180, 180), RGB(244, 247, 252),
    RGB(171, 171, 171), RGB(0, 120, 215),   RGB(255, 255, 255), RGB(240, 240, 240),
    RGB(160, 160, 160), RGB(109, 109, 109), RGB(0, 0, 0),       RGB(0, 0, 0),
    RGB(255, 255, 255),
};

/// The colour of a brush: the handle of a system brush is its number plus 1, as the window classes
/// write it.
bool ColourOf(HBRUSH brush, std::uint32_t& pixel) {
    const auto number = reinterpret_cast<ULONG_PTR>(brush);
    if (number < 1 || number > std::size(kSystemColours)) return false;
    pixel = PixelOf(kSystemColours[number - 1]);
    return true;
}

/// Calls `row(y, from, to)` for each run of pixels of an area that may be drawn on.
template <class Row>
void ForEachRow(const DeviceContext& dc, const RECT& area, Row row) {
    for (const RECT& part : dc.clip) {
        const RECT common = Intersection(part, area);
        for (LONG y = common.top; y < common.bottom; ++y) row(y, common.left, common.right);
    }
}

/// A copy of the part of an area that lies on its surface, so that drawing may overlap its source.
struct Source {
    std::shared_ptr<Surface> pixels;
    RECT inside;  // the part, relative to the area
};

Source CopyOf(const DeviceContext& dc, const RECT& area) {
    if (!dc.surface) return {nullptr, {}};
    const RECT inside = Intersection(area, dc.surface->Bounds());
    Source copy{Surface::Make(WidthOf(inside), HeightOf(inside)),
                Moved(inside, -area.left, -area.top)};
    for (LONG y = inside.top; y < inside.bottom; ++y) {
        std::copy(dc.surface->Row(y) + inside.left, dc.surface->Row(y) + inside.right,
                  copy.pixels->Row(y - inside.top));
    }
    return copy;
}

}  // namespace
}  // namespace platform::gdi

using namespace platform::gdi;
using namespace platform::user;

DWORD GetSysColor(int index) noexcept {
    const bool isKnown = index >= 0 && index < static_cast<int>(std::size(kSystemColours));
    return isKnown ? kSystemColours[index] : 0;
}

HBRUSH GetSysColorBrush(int index) noexcept {
    return reinterpret_cast<HBRUSH>(static_cast<ULONG_PTR>(index) + 1);
}

int FillRect(HDC handle, const RECT* rect, HBRUSH brush) noexcept {
    const Lock lock(UserLock());
    DeviceContext* dc = FindDc(handle);
    std::uint32_t pixel = 0;
    if (!dc || !rect || !ColourOf(brush, pixel)) return FALSE;
    const RECT area = Moved(*rect, dc->origin.x, dc->origin.y);
    ForEachRow(*dc, area, [&](LONG y, LONG from, LONG to) {
        std::fill(dc->surface->Row(y) + from, dc->surface->Row(y) + to, pixel);
    });
    return TRUE;
}

BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY,
            DWORD operation) noexcept {
    return StretchBlt(to, x, y, width, height, from, fromX, fromY, width, height, operation);
}

BOOL StretchBlt(HDC toHandle, int x, int y, int width, int height, HDC fromHandle, int fromX,
                int fromY, int fromWidth, int fromHeight, DWORD operation) noexcept {
    const Lock lock(UserLock());
    DeviceContext* to = FindDc(toHandle);
    const DeviceContext* from = to ? FindDc(fromHandle) : nullptr;
    if (!from) return FALSE;
    if (operation != SRCCOPY) return platform::Fail(ERROR_INVALID_PARAMETER);
    if (width < 1 || height < 1 || fromWidth < 1 || fromHeight < 1) return TRUE;
    const RECT source = Moved({fromX, fromY, fromX + fromWidth, fromY + fromHeight}, from->origin.x,
                              from->origin.y);
    const Source copy = CopyOf(*from, source);
    const RECT& inside = copy.inside;
    const RECT area = Moved({x, y, x + width, y + height}, to->origin.x, to->origin.y);
    ForEachRow(*to, area, [&](LONG row, LONG left, LONG right) {
        const LONGLONG sourceY = LONGLONG{row - area.top} * fromHeight / height;
        if (sourceY < inside.top || sourceY >= inside.bottom) return;
        const std::uint32_t* sourceRow = copy.pixels->Row(static_cast<LONG>(sourceY) - inside.top);
        std::uint32_t* target = to->surface->Row(row);
        for (LONG column = left; column < right; ++column) {
            const LONGLONG sourceX = LONGLONG{column - area.left} * fromWidth / width;
            if (sourceX < inside.left || sourceX >= inside.right) continue;
            target[column] = sourceRow[sourceX - inside.left];
        }
    });
    return TRUE;
}
