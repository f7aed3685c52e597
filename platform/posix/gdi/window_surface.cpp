#include <algorithm>
#include <utility>

#include "platform/posix/faults.h"
#include "platform/posix/gdi/surface.h"

namespace platform::gdi {
namespace {

using namespace user;

int screenDpi = 96;  // guarded by the lock

/// Where the corner of a window's client area lies on its surface.
POINT ClientOnSurface(Window& window) {
    const POINT client = ClientOriginOf(window);
    const POINT top = OriginOf(TopOf(window));
    return {client.x - top.x, client.y - top.y};
}

/// Takes away what children of `parent` cover, down to the given one.
void SubtractChildren(Region& region, Window& parent, const Window* end) {
    const POINT base = ClientOnSurface(parent);
    for (const Window* child : parent.children) {
        if (child == end) break;
        if (child->style & WS_VISIBLE) Subtract(region, Moved(child->place, base.x, base.y));
    }
}

Region VisibleRegion(Window& window) {
    if (!IsShown(window)) return {};
    const auto clientOf = [](Window& any) {
        const POINT base = ClientOnSurface(any);
        return RECT{base.x, base.y, base.x + WidthOf(any.client), base.y + HeightOf(any.client)};
    };
    Region region{clientOf(window)};
    if (window.style & WS_CLIPCHILDREN) SubtractChildren(region, window, nullptr);
    for (Window* any = &window; any->parent; any = any->parent) {
        Cut(region, clientOf(*any->parent));
        if (any->style & WS_CLIPSIBLINGS) SubtractChildren(region, *any->parent, any);
    }
    return region;
}

}  // namespace

void Cut(Region& region, const RECT& bounds) {
    for (RECT& part : region) part = Intersection(part, bounds);
    std::erase_if(region, [](const RECT& part) { return IsEmpty(part); });
}

void Subtract(Region& region, const RECT& hole) {
    Region rest;
    for (const RECT& part : region) {
        const RECT common = Intersection(part, hole);
        if (IsEmpty(common)) {
            rest.push_back(part);
            continue;
        }
        const RECT sides[] = {{part.left, part.top, part.right, common.top},
                              {part.left, common.bottom, part.right, part.bottom},
                              {part.left, common.top, common.left, common.bottom},
                              {common.right, common.top, part.right, common.bottom}};
        for (const RECT& side : sides) {
            if (!IsEmpty(side)) rest.push_back(side);
        }
    }
    region = std::move(rest);
}

std::shared_ptr<Surface> SurfaceOf(Window& top) noexcept {
    const LONG width = WidthOf(top.place);
    const LONG height = HeightOf(top.place);
    std::shared_ptr<Surface>& surface = top.surface;
    if (surface && surface->width == width && surface->height == height) return surface;
    std::shared_ptr<Surface> made = Surface::Make(width, height);
    if (!made) return nullptr;
    std::fill(made->pixels.begin(), made->pixels.end(), PixelOf(GetSysColor(COLOR_BTNFACE)));
    if (surface) {
        const LONG common = std::min(surface->width, width);
        for (LONG y = 0; y < std::min(surface->height, height); ++y) {
            std::copy_n(surface->Row(y), common, made->Row(y));
        }
    }
    surface = std::move(made);
    return surface;
}

DeviceContext WindowContext(Window& window, const RECT* area) noexcept {
    DeviceContext dc;
    dc.surface = SurfaceOf(TopOf(window));
    if (!dc.surface) return dc;
    dc.origin = ClientOnSurface(window);
    dc.clip = VisibleRegion(window);
    Cut(dc.clip, dc.surface->Bounds());
    if (area) Cut(dc.clip, Moved(*area, dc.origin.x, dc.origin.y));
    return dc;
}

int SetScreenDpi(int dpi) noexcept {
    const Lock lock(UserLock());
    return std::exchange(screenDpi, dpi);
}

}  // namespace platform::gdi

using namespace platform::gdi;
using namespace platform::user;

HDC GetDC(HWND handle) noexcept {
    if (platform::InjectFault("GetDC")) return nullptr;
    const Lock lock(UserLock());
    if (!handle) return AddDc({});
    Window* window = FindWindow(handle);
    return window ? AddDc(WindowContext(*window, nullptr)) : nullptr;
}

int ReleaseDC(HWND, HDC dc) noexcept {
    const Lock lock(UserLock());
    return RemoveDc(dc);
}

int GetDeviceCaps(HDC dc, int what) noexcept {
    const Lock lock(UserLock());
    return FindDc(dc) && what == LOGPIXELSY ? screenDpi : 0;
}

HDC BeginPaint(HWND handle, PAINTSTRUCT* paint) noexcept {
    bool mustErase = false;
    {
        const Lock lock(UserLock());
        Window* window = FindWindow(handle);
        if (!window || !paint) return nullptr;
        *paint = {};
        paint->rcPaint = window->invalid;
        paint->hdc = AddDc(WindowContext(*window, &window->invalid));
        mustErase = window->mustErase;
        window->invalid = {};
        window->mustErase = false;
    }
    // A window that does not erase leaves that to its painting.
    if (mustErase) {
        paint->fErase =
            !SendMessageW(handle, WM_ERASEBKGND, reinterpret_cast<WPARAM>(paint->hdc), 0);
    }
    return paint->hdc;
}

BOOL EndPaint(HWND handle, const PAINTSTRUCT* paint) noexcept {
    if (paint) ReleaseDC(handle, paint->hdc);
    return TRUE;
}
