#include <algorithm>

#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

RECT Union(const RECT& a, const RECT& b) {
    if (IsEmpty(a)) return b;
    if (IsEmpty(b)) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

RECT ClientArea(const Window& window) {
    return {0, 0, WidthOf(window.client), HeightOf(window.client)};
}

Window* FindInvalidBelow(Window& window) {
    if (!(window.style & WS_VISIBLE)) return nullptr;
    if (!IsEmpty(window.invalid)) return &window;
    for (Window* child : window.children) {
        if (Window* found = FindInvalidBelow(*child)) return found;
    }
    return nullptr;
}

}  // namespace

void Invalidate(Window& window, const RECT* area, bool erase) noexcept {
    const RECT whole = ClientArea(window);
    const RECT wanted = area ? Intersection(*area, whole) : whole;
    if (IsEmpty(wanted)) return;
    window.invalid = Union(window.invalid, wanted);
    window.mustErase |= erase;
    Wake(*window.thread);
    if (window.style & WS_CLIPCHILDREN && area) return;
    for (Window* child : window.children) {
        const RECT part = Moved(wanted, -child->place.left - child->client.left,
                                -child->place.top - child->client.top);
        Invalidate(*child, &part, erase);
    }
}

Window* FindInvalid(const Thread& thread, const Window* inside) noexcept {
    for (Window* top : TopLevels()) {
        if (top->thread != &thread) continue;
        Window* found = FindInvalidBelow(*top);
        if (found && (!inside || IsInside(*inside, found))) return found;
    }
    return nullptr;
}

}  // namespace platform::user

using namespace platform::user;

BOOL InvalidateRect(HWND handle, const RECT* area, BOOL erase) noexcept {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return FALSE;
    const RECT whole = ClientArea(*window);
    Invalidate(*window, area ? area : &whole, erase);
    return TRUE;
}

BOOL ValidateRect(HWND handle, const RECT* area) noexcept {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return FALSE;
    const RECT wanted = area ? *area : window->invalid;
    const RECT common = Intersection(wanted, window->invalid);
    const bool isAll = common.left == window->invalid.left && common.top == window->invalid.top &&
                       common.right == window->invalid.right &&
                       common.bottom == window->invalid.bottom;
    // What is left of an area that is not whole would be no rectangle: it stays invalid.
    if (!isAll) return TRUE;
    window->invalid = {};
    window->mustErase = false;
    return TRUE;
}

BOOL UpdateWindow(HWND handle) noexcept {
    bool mustPaint = false;
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return FALSE;
        mustPaint = IsShown(*window) && !IsEmpty(window->invalid);
    }
    if (mustPaint) SendMessageW(handle, WM_PAINT, 0, 0);
    return TRUE;
}
