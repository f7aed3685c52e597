#include "platform/posix/gdi/gdi_calls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

LRESULT SetText(HWND handle, LPCWSTR text) {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return FALSE;
    window->text = text ? text : TEXT("");
    return TRUE;
}

LRESULT GetText(HWND handle, WPARAM size, LPWSTR buffer) {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window || size == 0 || !buffer) return 0;
    const std::size_t length = window->text.copy(buffer, size - 1);
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT GetTextLength(HWND handle) {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window ? static_cast<LRESULT>(window->text.size()) : 0;
}

LRESULT SubtractFrame(HWND handle, RECT& rect) {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window) return 0;
    const RECT frame = FrameOf(window->style, window->exStyle);
    rect = {rect.left + frame.left, rect.top + frame.top, rect.right - frame.right,
            rect.bottom - frame.bottom};
    if (rect.right < rect.left) rect.right = rect.left;
    if (rect.bottom < rect.top) rect.bottom = rect.top;
    return 0;
}

/// Turns a change of place into the messages that most windows handle.
LRESULT TellPlace(HWND handle, const WINDOWPOS& changed) {
    RECT client{};
    POINT corner{};
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return 0;
        client = window->client;
        corner = {window->place.left + client.left, window->place.top + client.top};
    }
    if (!(changed.flags & SWP_NOMOVE)) {
        SendMessageW(handle, WM_MOVE, 0, MAKELPARAM(corner.x, corner.y));
    }
    if (!(changed.flags & SWP_NOSIZE)) {
        SendMessageW(handle, WM_SIZE, SIZE_RESTORED, MAKELPARAM(WidthOf(client), HeightOf(client)));
    }
    return 0;
}

LRESULT Erase(HWND handle, HDC dc) {
    HBRUSH brush = nullptr;
    RECT client{};
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return 0;
        brush = window->windowClass->info.hbrBackground;
        client = {0, 0, WidthOf(window->client), HeightOf(window->client)};
    }
    return brush && FillRect(dc, &client, brush);
}

LRESULT PaintNothing(HWND handle) {
    PAINTSTRUCT paint;
    if (BeginPaint(handle, &paint)) EndPaint(handle, &paint);
    return 0;
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

LRESULT DefWindowProcW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
        case WM_NCCREATE:
            return SetText(handle, reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpszName);
        case WM_SETTEXT:
            return SetText(handle, reinterpret_cast<LPCWSTR>(lParam));
        case WM_GETTEXT:
            return GetText(handle, wParam, reinterpret_cast<LPWSTR>(lParam));
        case WM_GETTEXTLENGTH:
            return GetTextLength(handle);
        case WM_NCCALCSIZE:
            // Of the longer form the first rectangle is the one to change.
            return SubtractFrame(handle, *reinterpret_cast<RECT*>(lParam));
        case WM_WINDOWPOSCHANGED:
            return TellPlace(handle, *reinterpret_cast<const WINDOWPOS*>(lParam));
        case WM_ACTIVATE:
            if (LOWORD(wParam) != WA_INACTIVE) SetFocus(handle);
            return 0;
        case WM_NCACTIVATE:
            return TRUE;
        case WM_CLOSE:
            DestroyWindow(handle);
            return 0;
        case WM_NOTIFYFORMAT:
            return lParam == NF_QUERY ? NFR_UNICODE : 0;
        case WM_PAINT:
            return PaintNothing(handle);
        case WM_ERASEBKGND:
            return Erase(handle, reinterpret_cast<HDC>(wParam));
        default:
            return 0;
    }
}
