#include "options/centre_window.h"

#include <algorithm>

namespace {

LONG CentredStart(LONG first, LONG last, LONG areaFirst, LONG areaLast, LONG size) noexcept {
    const LONG centred = first + (last - first - size) / 2;
    return std::max(areaFirst, std::min(centred, areaLast - size));
}

bool CanBeSeen(HWND window) noexcept {
    return window && IsWindowVisible(window) &&
           (GetWindowLongPtrW(window, GWL_STYLE) & LONG_PTR{WS_MINIMIZE}) == 0;
}

}  // namespace

POINT CentredPlace(const RECT& owner, const RECT& area, SIZE size) noexcept {
    return {CentredStart(owner.left, owner.right, area.left, area.right, size.cx),
            CentredStart(owner.top, owner.bottom, area.top, area.bottom, size.cy)};
}

void CentreOnOwner(HWND window) noexcept {
    const HWND owner = GetWindow(window, GW_OWNER);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    RECT place{};
    if (!GetMonitorInfoW(MonitorFromWindow(owner ? owner : window, MONITOR_DEFAULTTONEAREST),
                         &monitor) ||
        !GetWindowRect(window, &place)) {
        return;
    }
    RECT centre = monitor.rcWork;
    if (CanBeSeen(owner)) GetWindowRect(owner, &centre);
    const POINT corner =
        CentredPlace(centre, monitor.rcWork, {place.right - place.left, place.bottom - place.top});
    SetWindowPos(window, nullptr, corner.x, corner.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
