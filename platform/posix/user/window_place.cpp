#include <algorithm>

#include "platform/posix/last_error.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

constexpr LONG kCaptionHeight = 23;
constexpr LONG kDialogFrame = 3;
constexpr LONG kSizingFrame = 4;
constexpr LONG kClientEdge = 2;

/// Puts a window behind another of its kind, or at the top or the bottom.
void Restack(Window& window, HWND after) {
    std::vector<Window*>& siblings = SiblingsOf(window);
    std::erase(siblings, &window);
    auto place = after == HWND_BOTTOM ? siblings.end() : siblings.begin();
    const auto found = std::find_if(siblings.begin(), siblings.end(), [&](const Window* sibling) {
        return sibling->handle == after;
    });
    if (found != siblings.end()) place = found + 1;
    siblings.insert(place, &window);
}

bool IsSame(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

/// What lay below the place of a window has to be painted again.
void InvalidateBelow(Window& window, const RECT& place) {
    if (window.parent) Invalidate(*window.parent, &place, true);
}

/// Moves the window as asked; afterwards `asked` tells by its flags what has really changed.
bool Place(WINDOWPOS& asked) {
    const Lock lock(UserLock());
    Window* window = FindWindow(asked.hwnd);
    if (!window) return false;
    const RECT old = window->place;
    RECT place = old;
    if (!(asked.flags & SWP_NOMOVE)) place = Moved(place, asked.x - old.left, asked.y - old.top);
    if (!(asked.flags & SWP_NOSIZE)) {
        place.right = place.left + std::max(asked.cx, 0);
        place.bottom = place.top + std::max(asked.cy, 0);
    }
    window->place = place;
    if (!(asked.flags & SWP_NOZORDER)) Restack(*window, asked.hwndInsertAfter);
    if (asked.flags & SWP_SHOWWINDOW) window->style |= WS_VISIBLE;
    if (asked.flags & SWP_HIDEWINDOW) window->style &= ~WS_VISIBLE;
    if (place.left == old.left && place.top == old.top) asked.flags |= SWP_NOMOVE;
    if (WidthOf(place) == WidthOf(old) && HeightOf(place) == HeightOf(old)) {
        asked.flags |= SWP_NOSIZE;
    }
    if (!(asked.flags & SWP_NOREDRAW) &&
        (!IsSame(place, old) || asked.flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW))) {
        InvalidateBelow(*window, old);
    }
    return true;
}

void InvalidateMoved(HWND handle, UINT flags) {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window || flags & SWP_NOREDRAW) return;
    const bool isSized = !(flags & SWP_NOSIZE);
    if (isSized || !(flags & SWP_NOMOVE) || flags & SWP_SHOWWINDOW) {
        Invalidate(*window, nullptr, true);
    }
}

/// The way from the client area of one window to that of another; null windows are the screen.
bool WayBetween(HWND from, HWND to, POINT& way) {
    const Lock lock(UserLock());
    way = {};
    if (from) {
        const Window* window = FindWindow(from);
        if (!window) return false;
        way = ClientOriginOf(*window);
    }
    if (to) {
        const Window* window = FindWindow(to);
        if (!window) return false;
        const POINT origin = ClientOriginOf(*window);
        way = {way.x - origin.x, way.y - origin.y};
    }
    return true;
}

bool MapPoints(HWND from, HWND to, POINT* points, UINT count, POINT& way) {
    if (!WayBetween(from, to, way)) return false;
    for (UINT i = 0; i < count; ++i) points[i] = {points[i].x + way.x, points[i].y + way.y};
    return true;
}

}  // namespace

RECT FrameOf(DWORD style, DWORD exStyle) noexcept {
    LONG width = 0;
    const bool hasCaption = (style & WS_CAPTION) == WS_CAPTION;
    if (style & WS_THICKFRAME) {
        width = kSizingFrame;
    } else if (hasCaption || style & WS_DLGFRAME || exStyle & WS_EX_DLGMODALFRAME) {
        width = kDialogFrame;
    } else if (style & WS_BORDER) {
        width = 1;
    }
    if (exStyle & WS_EX_CLIENTEDGE) width += kClientEdge;
    return {width, width + (hasCaption ? kCaptionHeight : 0), width, width};
}

POINT OriginOf(const Window& window) noexcept {
    const POINT base = window.parent ? ClientOriginOf(*window.parent) : POINT{};
    return {base.x + window.place.left, base.y + window.place.top};
}

POINT ClientOriginOf(const Window& window) noexcept {
    const POINT origin = OriginOf(window);
    return {origin.x + window.client.left, origin.y + window.client.top};
}

void CalculateClient(HWND handle) noexcept {
    RECT place{};
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return;
        place = window->place;
    }
    RECT client = place;
    SendMessageW(handle, WM_NCCALCSIZE, FALSE, reinterpret_cast<LPARAM>(&client));
    const Lock lock(UserLock());
    if (Window* window = FindWindow(handle)) {
        window->client = Moved(client, -place.left, -place.top);
    }
}

}  // namespace platform::user

using namespace platform::user;

BOOL SetWindowPos(HWND handle, HWND after, int x, int y, int width, int height,
                  UINT flags) noexcept {
    WINDOWPOS asked{handle, after, x, y, width, height, flags};
    if (!IsWindow(handle)) return FALSE;
    SendMessageW(handle, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&asked));
    if (!Place(asked)) return FALSE;
    if (!(asked.flags & SWP_NOSIZE)) CalculateClient(handle);
    InvalidateMoved(handle, asked.flags);
    SendMessageW(handle, WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&asked));
    if (asked.flags & SWP_HIDEWINDOW) LeaveInput(handle);
    if (!(asked.flags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) && IsWindowVisible(handle) &&
        !(GetWindowLongPtrW(handle, GWL_STYLE) & WS_CHILD)) {
        SetActiveWindow(handle);
    }
    return TRUE;
}

BOOL MoveWindow(HWND handle, int x, int y, int width, int height, BOOL repaint) noexcept {
    const UINT quiet = repaint ? 0 : SWP_NOREDRAW;
    return SetWindowPos(handle, nullptr, x, y, width, height,
                        SWP_NOZORDER | SWP_NOACTIVATE | quiet);
}

BOOL GetWindowRect(HWND handle, RECT* rect) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window || !rect) return FALSE;
    const POINT origin = OriginOf(*window);
    *rect = {origin.x, origin.y, origin.x + WidthOf(window->place),
             origin.y + HeightOf(window->place)};
    return TRUE;
}

BOOL GetClientRect(HWND handle, RECT* rect) noexcept {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window || !rect) return FALSE;
    *rect = {0, 0, WidthOf(window->client), HeightOf(window->client)};
    return TRUE;
}

BOOL ClientToScreen(HWND handle, POINT* point) noexcept {
    POINT way;
    if (!handle) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return handle && MapPoints(handle, nullptr, point, 1, way);
}

BOOL ScreenToClient(HWND handle, POINT* point) noexcept {
    POINT way;
    if (!handle) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return handle && MapPoints(nullptr, handle, point, 1, way);
}

int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count) noexcept {
    POINT way;
    if (!MapPoints(from, to, points, count, way)) return 0;
    return MAKELONG(static_cast<DWORD_PTR>(way.x), static_cast<DWORD_PTR>(way.y));
}

BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL hasMenu, DWORD exStyle) noexcept {
    if (!rect || hasMenu) return platform::Fail(ERROR_INVALID_PARAMETER);
    const RECT frame = FrameOf(style, exStyle);
    *rect = {rect->left - frame.left, rect->top - frame.top, rect->right + frame.right,
             rect->bottom + frame.bottom};
    return TRUE;
}
