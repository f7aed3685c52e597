#include "browser/fine_toolbar.h"

#include <atomic>

#include "browser/screen_scale.h"
#include "browser/window_classes.h"
#include "capture/selection_capture.h"
#include "foundation/module_folder.h"
#include "options/reflection.h"
#include "platform/html.h"
#include "platform/resources.h"
#include "resources/resource_ids.h"

namespace {

constexpr DWORD kNoHighlight = 0x10;  // CCS_NOHILITE, which not every system's header still has
constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_TABSTOP |
                         TBSTYLE_TRANSPARENT | TBSTYLE_LIST | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS |
                         CCS_NODIVIDER | kNoHighlight | CCS_NOPARENTALIGN | CCS_NORESIZE | CCS_TOP;
static_assert(kStyle == 0x5401995D);

// In pixels at 96 dots an inch.
constexpr int kPictureBox = 20;
constexpr int kButton = 24;
constexpr int kPadding = 10;
constexpr int kButtonWidth = 41;

constexpr WPARAM kAtTheEnd = static_cast<WPARAM>(-1);
constexpr UINT kPressedLook = CDIS_HOT | CDIS_SELECTED;

/// The system's procedure of a toolbar, the same for all. Threads that register the class at once
/// store the same value.
constinit std::atomic<WNDPROC> baseProcedure{nullptr};

LPARAM Pair(int low, int high) {
    return MAKELPARAM(static_cast<DWORD_PTR>(low), static_cast<DWORD_PTR>(high));
}

LRESULT CallBase(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(baseProcedure.load(), window, message, wParam, lParam);
}

}  // namespace

RECT PicturePlace(const RECT& item, UINT state, int margin, LONG height) noexcept {
    LONG side = item.bottom - item.top - 2 * margin;
    if (side < height + 2) side = height;
    const LONG moved = state == kPressedLook ? 1 : 0;
    const LONG left = item.left + margin + moved;
    const LONG top = item.top + margin + moved;
    return {left, top, left + side, top + side};
}

bool FineToolbar::Register() noexcept {
    INITCOMMONCONTROLSEX wanted{sizeof wanted, ICC_BAR_CLASSES};
    InitCommonControlsEx(&wanted);
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    if (!GetClassInfoExW(nullptr, TOOLBARCLASSNAMEW, &info)) return false;
    baseProcedure.store(info.lpfnWndProc);
    info.lpfnWndProc = Procedure;
    info.style &= ~static_cast<UINT>(CS_GLOBALCLASS);  // Other modules have no use for it.
    info.hInstance = ModuleInstance();
    info.lpszClassName = kFineToolbarClass;
    return RegisterWindowClass(info);
}

bool FineToolbar::Create(HWND parent) noexcept {
    if (!Register()) return false;
    CreateWindowExW(0, kFineToolbarClass, nullptr, kStyle, 0, 0, 0, 0, parent, nullptr,
                    ModuleInstance(), this);
    return Window != nullptr;
}

void FineToolbar::Relayout() noexcept {
    if (!IsWindow(Window)) return;
    SendMessageW(Window, WM_SIZE, 0, 0);
    InvalidateRect(Window, nullptr, TRUE);
}

LONG FineToolbar::ButtonsBottom() const noexcept {
    if (!IsWindow(Window)) return 0;
    const LRESULT count = SendMessageW(Window, TB_BUTTONCOUNT, 0, 0);
    RECT last{};
    if (count <= 0 || !Send(TB_GETITEMRECT, static_cast<WPARAM>(count - 1), &last)) return 0;
    return last.bottom;
}

LRESULT FineToolbar::Send(UINT message, WPARAM wParam, const void* data) const noexcept {
    return SendMessageW(Window, message, wParam, reinterpret_cast<LPARAM>(data));
}

LRESULT CALLBACK FineToolbar::Procedure(HWND window, UINT message, WPARAM wParam,
                                        LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* made = static_cast<FineToolbar*>(
            reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        made->Window = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    auto* self = reinterpret_cast<FineToolbar*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self) return CallBase(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->Window = nullptr;
        return CallBase(window, message, wParam, lParam);
    }
    return self->OnMessage(message, wParam, lParam);
}

LRESULT FineToolbar::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
        case WM_CREATE: {
            const LRESULT result = CallBase(Window, message, wParam, lParam);
            if (result != -1) SetUp();
            return result;
        }
        case WM_MOVE:
        case WM_SIZE:
            return 0;
        case WM_DESTROY:
            Picture.Reset();
            break;
        case WM_COMMAND:
            // A choice from the menu, which this window owns.
            return SendMessageW(GetParent(Window), message, wParam, lParam);
        case WM_NOTIFY + kReflected: {
            const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
            LRESULT result = 0;
            if (header.code == NM_CUSTOMDRAW &&
                OnCustomDraw(*reinterpret_cast<const NMCUSTOMDRAW*>(lParam), result)) {
                return result;
            }
            if (header.code == TBN_DROPDOWN) {
                OnDropDown(reinterpret_cast<const NMTOOLBARW*>(lParam)->iItem);
                return TBDDRET_DEFAULT;
            }
            break;
        }
        default:
            break;
    }
    return CallBase(Window, message, wParam, lParam);
}

void FineToolbar::SetUp() noexcept {
    Picture.Reset(LoadBitmapW(ModuleInstance(), MAKEINTRESOURCEW(QVD_BITMAP_BUTTON)));
    SendMessageW(Window, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    SendMessageW(Window, TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_DRAWDDARROWS);
    SendMessageW(Window, TB_SETBITMAPSIZE, 0, Pair(Scale(kPictureBox), Scale(kPictureBox)));
    SendMessageW(Window, TB_SETBUTTONSIZE, 0, Pair(Scale(kButton), Scale(kButton)));
    SendMessageW(Window, TB_SETPADDING, 0, Pair(0, Scale(kPadding)));
    TBBUTTON button{};
    button.idCommand = QVD_COMMAND_BUTTON;
    button.fsState = TBSTATE_ENABLED;
    button.fsStyle = BTNS_DROPDOWN | BTNS_AUTOSIZE;
    Send(TB_INSERTBUTTONW, kAtTheEnd, &button);
    TBBUTTONINFOW width{};
    width.cbSize = sizeof width;
    width.dwMask = TBIF_SIZE;
    width.cx = static_cast<WORD>(Scale(kButtonWidth));
    Send(TB_SETBUTTONINFOW, QVD_COMMAND_BUTTON, &width);
    Menu.Reset(LoadMenuW(ModuleInstance(), MAKEINTRESOURCEW(QVD_MENU_BUTTON)));
    SendMessageW(Window, WM_SIZE, 0, 0);
}

bool FineToolbar::OnCustomDraw(const NMCUSTOMDRAW& draw, LRESULT& result) const noexcept {
    result = 0;
    switch (draw.dwDrawStage) {
        case CDDS_PREPAINT:
            result = CDRF_NOTIFYITEMDRAW;
            return true;
        case CDDS_ITEMPREPAINT:
            result = CDRF_NOTIFYPOSTPAINT;
            return true;
        case CDDS_ITEMPOSTPAINT:
            if (draw.dwItemSpec == QVD_COMMAND_BUTTON) DrawPicture(draw);
            result = CDRF_SKIPDEFAULT;
            return true;
        case CDDS_POSTPAINT:
        case CDDS_PREERASE:
        case CDDS_POSTERASE:
        case CDDS_ITEMPREERASE:
        case CDDS_ITEMPOSTERASE:
        case CDDS_ITEMPREPAINT | CDDS_SUBITEM:
            return true;
        default:
            return false;
    }
}

void FineToolbar::DrawPicture(const NMCUSTOMDRAW& draw) const noexcept {
    BITMAP info{};
    if (!Picture || !GetObjectW(Picture.Get(), sizeof info, &info)) return;
    const platform::MemoryDc memory(CreateCompatibleDC(draw.hdc));
    if (!memory) return;
    const platform::SelectedBitmap selected(memory.Get(), Picture.Get());
    const RECT place =
        PicturePlace(draw.rc, draw.uItemState, ScreenScale::OfScreen().Margin(), info.bmHeight);
    StretchBlt(draw.hdc, place.left, place.top, place.right - place.left, place.bottom - place.top,
               memory.Get(), 0, 0, info.bmWidth, info.bmHeight, SRCCOPY);
}

void FineToolbar::OnDropDown(int command) noexcept {
    const auto index = SendMessageW(Window, TB_COMMANDTOINDEX, static_cast<WPARAM>(command), 0);
    RECT button{};
    Send(TB_GETITEMRECT, static_cast<WPARAM>(index), &button);
    MapWindowPoints(Window, HWND_DESKTOP, reinterpret_cast<POINT*>(&button), 2);
    if (!Menu) return;
    const bool hasSelection = HasSelection();
    EnableMenuItem(Menu.Get(), QVD_COMMAND_CONVERT_SELECTION,
                   MF_BYCOMMAND | (hasSelection ? MF_ENABLED : MF_GRAYED));
    // While the menu is open the tab may close, and this object end: nothing of it is used after.
    TrackPopupMenu(GetSubMenu(Menu.Get(), 0), TPM_RIGHTBUTTON, button.left, button.bottom, 0,
                   Window, nullptr);
}

bool FineToolbar::HasSelection() const noexcept {
    if (!Browser) return false;
    platform::ComPtr<IDispatch> object;
    if (FAILED(Browser->get_Document(object.Put())) || !object) return false;
    auto document = object.As<IHTMLDocument2>();
    platform::ComPtr<IHTMLSelectionObject> selection;
    return FindSelection(document, selection) == S_OK && selection;
}
