#include "platform/posix/user/toolbar.h"

#include <algorithm>
#include <utility>

namespace platform::user {
namespace {

POINT PointOf(LPARAM lParam) {
    return {static_cast<SHORT>(LOWORD(static_cast<DWORD_PTR>(lParam))),
            static_cast<SHORT>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
}

SIZE SizeOf(LPARAM lParam) {
    const POINT point = PointOf(lParam);
    return {point.x, point.y};
}

void Repaint(const Toolbar& toolbar) { InvalidateRect(toolbar.window, nullptr, TRUE); }

LRESULT InsertButton(Toolbar& toolbar, WPARAM index, const TBBUTTON* button) {
    if (!button) return FALSE;
    const std::size_t place = std::min<std::size_t>(index, toolbar.buttons.size());
    toolbar.buttons.insert(toolbar.buttons.begin() + static_cast<std::ptrdiff_t>(place), {*button});
    Repaint(toolbar);
    return TRUE;
}

LRESULT SetButtonInfo(Toolbar& toolbar, int command, const TBBUTTONINFOW* info) {
    const int index = toolbar.IndexOf(command);
    if (index < 0 || !info || info->cbSize != sizeof *info) return FALSE;
    if (info->dwMask & TBIF_SIZE) {
        toolbar.buttons[static_cast<std::size_t>(index)].width = info->cx;
    }
    Repaint(toolbar);
    return TRUE;
}

LRESULT GetItemRect(const Toolbar& toolbar, WPARAM index, RECT* rect) {
    if (!rect || !toolbar.HasButton(index)) return FALSE;
    *rect = toolbar.RectOf(index);
    return TRUE;
}

void SetHot(Toolbar& toolbar, int index) {
    if (toolbar.hot == index) return;
    toolbar.hot = index;
    Repaint(toolbar);
}

/// Opens the button's menu by way of the parent. \return whether the press has been used up.
bool DropDown(Toolbar& toolbar, std::size_t index) {
    NMTOOLBARW opened{};
    opened.iItem = toolbar.buttons[index].info.idCommand;
    opened.tbButton = toolbar.buttons[index].info;
    opened.rcButton = toolbar.RectOf(index);
    return NotifyParent(toolbar, TBN_DROPDOWN, opened.hdr) != TBDDRET_TREATPRESSED;
}

void PressButton(Toolbar& toolbar, POINT point) {
    const int at = toolbar.ButtonAt(point);
    if (at < 0) return;
    const auto index = static_cast<std::size_t>(at);
    if (!(toolbar.buttons[index].info.fsState & TBSTATE_ENABLED)) return;
    const RECT arrow = toolbar.ArrowOf(index);
    // The notification may end the control.
    const HWND window = toolbar.window;
    if (!IsEmpty(arrow) && point.x >= arrow.left && DropDown(toolbar, index)) return;
    if (!IsWindow(window)) return;
    toolbar.pressed = at;
    SetCapture(window);
    Repaint(toolbar);
}

void ReleaseButton(Toolbar& toolbar, POINT point) {
    const int index = std::exchange(toolbar.pressed, -1);
    if (index < 0) return;
    Repaint(toolbar);
    if (GetCapture() == toolbar.window) ReleaseCapture();
    if (toolbar.ButtonAt(point) != index) return;
    const int command = toolbar.buttons[static_cast<std::size_t>(index)].info.idCommand;
    SendMessageW(GetParent(toolbar.window), WM_COMMAND,
                 MAKEWPARAM(static_cast<DWORD_PTR>(command), 0),
                 reinterpret_cast<LPARAM>(toolbar.window));
}

LRESULT Handle(Toolbar& toolbar, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case TB_BUTTONSTRUCTSIZE:
            return 0;
        case TB_BUTTONCOUNT:
            return static_cast<LRESULT>(toolbar.buttons.size());
        case TB_COMMANDTOINDEX:
            return toolbar.IndexOf(static_cast<int>(wParam));
        case TB_GETITEMRECT:
            return GetItemRect(toolbar, wParam, reinterpret_cast<RECT*>(lParam));
        case TB_SETBUTTONSIZE:
            toolbar.button = SizeOf(lParam);
            return TRUE;
        case TB_SETBITMAPSIZE:
            toolbar.bitmap = SizeOf(lParam);
            return TRUE;
        case TB_SETPADDING: {
            const SIZE old = std::exchange(toolbar.padding, SizeOf(lParam));
            return MAKELONG(static_cast<DWORD_PTR>(old.cx), static_cast<DWORD_PTR>(old.cy));
        }
        case TB_SETEXTENDEDSTYLE:
            return std::exchange(toolbar.exStyle, static_cast<DWORD>(lParam));
        case TB_INSERTBUTTONW:
            return InsertButton(toolbar, wParam, reinterpret_cast<const TBBUTTON*>(lParam));
        case TB_SETBUTTONINFOW:
            return SetButtonInfo(toolbar, static_cast<int>(wParam),
                                 reinterpret_cast<const TBBUTTONINFOW*>(lParam));
        case WM_LBUTTONDOWN:
            PressButton(toolbar, PointOf(lParam));
            return 0;
        case WM_LBUTTONUP:
            ReleaseButton(toolbar, PointOf(lParam));
            return 0;
        case WM_MOUSEMOVE:
            SetHot(toolbar, toolbar.ButtonAt(PointOf(lParam)));
            return 0;
        case WM_MOUSELEAVE:
            SetHot(toolbar, -1);
            return 0;
        case WM_COMMAND:
            return SendMessageW(GetParent(toolbar.window), message, wParam, lParam);
        case WM_PAINT:
            PaintToolbar(toolbar);
            return 0;
        case WM_ERASEBKGND:
            if (GetWindowLongPtrW(toolbar.window, GWL_STYLE) & TBSTYLE_TRANSPARENT) {
                return EraseToolbar(toolbar, reinterpret_cast<HDC>(wParam));
            }
            break;
        default:
            break;
    }
    return DefWindowProcW(toolbar.window, message, wParam, lParam);
}

LRESULT CALLBACK ToolbarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto made = std::make_unique<Toolbar>();
        made->window = window;
        SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(made.release()));
    }
    auto* toolbar = reinterpret_cast<Toolbar*>(GetWindowLongPtrW(window, 0));
    if (!toolbar) return DefWindowProcW(window, message, wParam, lParam);
    if (message != WM_NCDESTROY) return Handle(*toolbar, message, wParam, lParam);
    SetWindowLongPtrW(window, 0, 0);
    const std::unique_ptr<Toolbar> last(toolbar);
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace
}  // namespace platform::user

BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* wanted) noexcept {
    if (!wanted || wanted->dwSize != sizeof *wanted) return FALSE;
    if (wanted->dwICC & ICC_BAR_CLASSES) {
        platform::user::RegisterSystemClass(TOOLBARCLASSNAMEW, CS_DBLCLKS,
                                            platform::user::ToolbarProcedure,
                                            sizeof(platform::user::Toolbar*));
    }
    return TRUE;
}
