#include <algorithm>

#include "platform/posix/gdi/surface.h"
#include "platform/posix/user/toolbar.h"

namespace platform::user {
namespace {

constexpr LONG kArrowWidth = 15;

bool Contains(const RECT& rect, POINT point) {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
           point.y < rect.bottom;
}

LONG WidthOfButton(const Toolbar& toolbar, const Toolbar::Button& button) {
    if (button.width != 0) return button.width;
    if (!(button.info.fsStyle & BTNS_AUTOSIZE)) return toolbar.button.cx;
    const bool hasArrow =
        button.info.fsStyle & BTNS_DROPDOWN && toolbar.exStyle & TBSTYLE_EX_DRAWDDARROWS;
    return toolbar.bitmap.cx + toolbar.padding.cx + (hasArrow ? kArrowWidth : 0);
}

/// Tells the parent of a stage of painting and gives what it wants done.
LRESULT NotifyStage(const Toolbar& toolbar, NMCUSTOMDRAW& draw, DWORD stage) {
    draw.dwDrawStage = stage;
    return NotifyParent(toolbar, NM_CUSTOMDRAW, draw.hdr);
}

/// A triangle that points down, in the middle of a rectangle.
void DrawArrow(HDC dc, const RECT& rect) {
    const LONG middle = (rect.left + rect.right) / 2;
    const LONG top = (rect.top + rect.bottom) / 2 - 1;
    for (LONG i = 0; i < 3; ++i) {
        const RECT row{middle - 2 + i, top + i, middle + 3 - i, top + i + 1};
        FillRect(dc, &row, GetSysColorBrush(COLOR_BTNTEXT));
    }
}

/// A flat frame, light above and dark below, or sunk the other way round.
void DrawFrame(HDC dc, const RECT& rect, bool isSunk) {
    const HBRUSH light = GetSysColorBrush(isSunk ? COLOR_BTNSHADOW : COLOR_BTNHIGHLIGHT);
    const HBRUSH dark = GetSysColorBrush(isSunk ? COLOR_BTNHIGHLIGHT : COLOR_BTNSHADOW);
    const RECT sides[] = {{rect.left, rect.top, rect.right, rect.top + 1},
                          {rect.left, rect.top, rect.left + 1, rect.bottom},
                          {rect.left, rect.bottom - 1, rect.right, rect.bottom},
                          {rect.right - 1, rect.top, rect.right, rect.bottom}};
    for (int i = 0; i < 4; ++i) FillRect(dc, &sides[i], i < 2 ? light : dark);
}

void DrawButton(const Toolbar& toolbar, HDC dc, std::size_t index) {
    const RECT rect = toolbar.RectOf(index);
    const UINT state = toolbar.StateOf(index);
    const RECT arrow = toolbar.ArrowOf(index);
    if (state != 0) DrawFrame(dc, rect, (state & CDIS_SELECTED) != 0);
    if (IsEmpty(arrow)) return;
    if (state != 0) DrawFrame(dc, arrow, false);
    DrawArrow(dc, arrow);
}

void PaintButton(const Toolbar& toolbar, NMCUSTOMDRAW draw, std::size_t index, bool notify) {
    draw.rc = toolbar.RectOf(index);
    draw.dwItemSpec = static_cast<DWORD_PTR>(toolbar.buttons[index].info.idCommand);
    draw.uItemState = toolbar.StateOf(index);
    const LRESULT wanted = notify ? NotifyStage(toolbar, draw, CDDS_ITEMPREPAINT) : CDRF_DODEFAULT;
    if (wanted & CDRF_SKIPDEFAULT || !toolbar.HasButton(index)) return;
    DrawButton(toolbar, draw.hdc, index);
    if (wanted & CDRF_NOTIFYPOSTPAINT) (void)NotifyStage(toolbar, draw, CDDS_ITEMPOSTPAINT);
}

}  // namespace

int Toolbar::IndexOf(int command) const {
    const auto found = std::find_if(buttons.begin(), buttons.end(), [&](const Button& known) {
        return known.info.idCommand == command;
    });
    return found == buttons.end() ? -1 : static_cast<int>(found - buttons.begin());
}

RECT Toolbar::RectOf(std::size_t index) const {
    LONG left = 0;
    for (std::size_t i = 0; i < index; ++i) left += WidthOfButton(*this, buttons[i]);
    return {left, 0, left + WidthOfButton(*this, buttons[index]), button.cy};
}

RECT Toolbar::ArrowOf(std::size_t index) const {
    const RECT rect = RectOf(index);
    const bool hasArrow =
        buttons[index].info.fsStyle & BTNS_DROPDOWN && exStyle & TBSTYLE_EX_DRAWDDARROWS;
    if (!hasArrow) return {};
    return {std::max(rect.left, rect.right - kArrowWidth), rect.top, rect.right, rect.bottom};
}

int Toolbar::ButtonAt(POINT point) const {
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (Contains(RectOf(i), point)) return static_cast<int>(i);
    }
    return -1;
}

UINT Toolbar::StateOf(std::size_t index) const {
    const int place = static_cast<int>(index);
    const bool isDown = place == pressed || buttons[index].info.fsState & TBSTATE_PRESSED;
    return (isDown ? CDIS_SELECTED : 0) | (place == hot ? CDIS_HOT : 0);
}

LRESULT NotifyParent(const Toolbar& toolbar, UINT code, NMHDR& header) noexcept {
    header.hwndFrom = toolbar.window;
    header.idFrom = static_cast<UINT_PTR>(GetDlgCtrlID(toolbar.window));
    header.code = code;
    return SendMessageW(GetParent(toolbar.window), WM_NOTIFY, header.idFrom,
                        reinterpret_cast<LPARAM>(&header));
}

void PaintToolbar(Toolbar& toolbar) noexcept {
    PAINTSTRUCT paint;
    NMCUSTOMDRAW draw{};
    draw.hdc = BeginPaint(toolbar.window, &paint);
    if (!draw.hdc) return;
    draw.rc = paint.rcPaint;
    const LRESULT wanted = NotifyStage(toolbar, draw, CDDS_PREPAINT);
    if (!(wanted & CDRF_SKIPDEFAULT)) {
        const bool notify = wanted & CDRF_NOTIFYITEMDRAW;
        for (std::size_t i = 0; i < toolbar.buttons.size(); ++i) {
            PaintButton(toolbar, draw, i, notify);
        }
        if (wanted & CDRF_NOTIFYPOSTPAINT) (void)NotifyStage(toolbar, draw, CDDS_POSTPAINT);
    }
    EndPaint(toolbar.window, &paint);
}

LRESULT EraseToolbar(const Toolbar& toolbar, HDC dc) noexcept {
    const HWND parent = GetParent(toolbar.window);
    POINT way{};
    MapWindowPoints(toolbar.window, parent, &way, 1);
    // The parent draws in its own coordinates.
    const auto shift = [&](LONG sign) {
        const Lock lock(UserLock());
        if (gdi::DeviceContext* context = gdi::FindDc(dc)) {
            context->origin.x -= sign * way.x;
            context->origin.y -= sign * way.y;
        }
    };
    shift(1);
    const LRESULT result = SendMessageW(parent, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
    shift(-1);
    return result;
}

}  // namespace platform::user
