#include <algorithm>
#include <string>

#include "platform/gdi.h"
#include "platform/posix/last_error.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog.h"
#include "platform/posix/user/dialog_template.h"
#include "platform/posix/user/screen.h"
#include "platform/posix/user/window.h"
#include "platform/resources.h"

namespace platform::user {
namespace {

constexpr SIZE kSystemUnits = {8, 16};
constexpr int kUnitsFont = 11;  // pixels of the font that 6 x 13 pixels are the units of
constexpr int kPointsAnInch = 72;

LONG Scale(LONG value, LONG factor, LONG divisor) {
    const LONGLONG product = LONGLONG{value} * factor;
    const LONGLONG half = product < 0 ? -divisor / 2 : divisor / 2;
    return static_cast<LONG>((product + half) / divisor);
}

SIZE UnitsOf(const DialogTemplate& dialog) {
    if (dialog.fontPoints == 0) return kSystemUnits;
    const int dpi = GetDeviceCaps(WindowDc(nullptr).Get(), LOGPIXELSY);
    const LONG font = std::max<LONG>(1, Scale(dialog.fontPoints, dpi, kPointsAnInch));
    return {std::max<LONG>(1, Scale(6, font, kUnitsFont)),
            std::max<LONG>(1, Scale(13, font, kUnitsFont))};
}

POINT ToPixels(const POINT& place, const SIZE& units) {
    return {Scale(place.x, units.cx, 4), Scale(place.y, units.cy, 8)};
}

SIZE ToPixels(const SIZE& size, const SIZE& units) {
    return {Scale(size.cx, units.cx, 4), Scale(size.cy, units.cy, 8)};
}

/// The styles that the window gets.
void Adjust(DialogTemplate& dialog) {
    if (dialog.style & DS_MODALFRAME) dialog.exStyle |= WS_EX_DLGMODALFRAME;
    if (dialog.style & DS_CONTROL) {
        dialog.style &= ~(WS_CAPTION | WS_SYSMENU);
        dialog.exStyle |= WS_EX_CONTROLPARENT;
    }
}

/// Where a dialog of its own lies on the screen, of which it does not leave the edges.
POINT PlaceOnScreen(const DialogTemplate& dialog, POINT place, const RECT& outer, HWND owner) {
    const LONG width = WidthOf(outer);
    const LONG height = HeightOf(outer);
    if (dialog.style & DS_CENTER) {
        place = {(kScreenWidth - width) / 2, (kScreenHeight - height) / 2};
    } else {
        if (owner && !(dialog.style & DS_ABSALIGN)) ClientToScreen(owner, &place);
        place = {place.x + outer.left, place.y + outer.top};
    }
    return {std::max<LONG>(0, std::min(place.x, kScreenWidth - width)),
            std::max<LONG>(0, std::min(place.y, kScreenHeight - height))};
}

HWND MakeWindow(HINSTANCE module, const DialogTemplate& dialog, const SIZE& units, HWND owner) {
    const SIZE size = ToPixels(dialog.size, units);
    RECT outer{0, 0, size.cx, size.cy};
    AdjustWindowRectEx(&outer, dialog.style, FALSE, dialog.exStyle);
    POINT place = ToPixels(dialog.place, units);
    if (dialog.style & WS_CHILD) {
        place = {place.x + outer.left, place.y + outer.top};
    } else {
        place = PlaceOnScreen(dialog, place, outer, owner);
    }
    const LPCWSTR name = dialog.className.empty() ? WC_DIALOG : dialog.className.c_str();
    return CreateWindowExW(dialog.exStyle, name, dialog.title.c_str(), dialog.style & ~WS_VISIBLE,
                           place.x, place.y, WidthOf(outer), HeightOf(outer), owner, nullptr,
                           module, nullptr);
}

bool MakeControls(HINSTANCE module, const DialogTemplate& dialog, HWND window, Dialog& state) {
    for (const DialogItem& item : dialog.items) {
        const POINT place = ToPixels(item.place, state.units);
        const SIZE size = ToPixels(item.size, state.units);
        const auto* extra = item.extra.empty() ? nullptr : item.extra.data();
        const HWND control = CreateWindowExW(
            item.exStyle | WS_EX_NOPARENTNOTIFY, item.className.c_str(), item.text.c_str(),
            item.style | WS_CHILD, place.x, place.y, size.cx, size.cy, window,
            reinterpret_cast<HMENU>(ULONG_PTR{item.id}), module, const_cast<std::byte*>(extra));
        if (!IsWindow(window)) return false;
        if (!control && !(dialog.style & DS_NOFAILCREATE)) return false;
        if (control && DialogCode(control) & DLGC_DEFPUSHBUTTON) state.defaultId = item.id;
    }
    return true;
}

void Attach(HWND window, std::shared_ptr<Dialog> state) {
    const Lock lock(UserLock());
    if (Window* found = FindWindow(window)) found->dialog = std::move(state);
}

/// Lets the dialog fill itself, and gives its first control the focus unless it has done so.
void Initialize(HWND window, LPARAM parameter) {
    const HWND first = GetNextDlgTabItem(window, nullptr, FALSE);
    const LRESULT takesFocus =
        SendMessageW(window, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter);
    if (!takesFocus || !IsWindow(window)) return;
    // What may take it can have changed.
    if (const HWND now = GetNextDlgTabItem(window, nullptr, FALSE)) FocusControl(window, now);
}

}  // namespace

HWND MakeDialog(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter,
                HWND disabledOwner) noexcept {
    const std::span<const std::byte> bytes = ResourceBytes(module, name, RT_DIALOG);
    if (bytes.empty()) return nullptr;
    std::optional<DialogTemplate> dialog = ReadDialogTemplate(bytes);
    if (!dialog) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    Adjust(*dialog);
    const auto state = std::make_shared<Dialog>();
    state->units = UnitsOf(*dialog);
    state->disabledOwner = disabledOwner;
    const HWND window = MakeWindow(module, *dialog, state->units, owner);
    if (!window) return nullptr;
    Attach(window, state);
    SetWindowLongPtrW(window, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(procedure));
    if (!MakeControls(module, *dialog, window, *state)) {
        const DWORD error = GetLastError();
        DestroyWindow(window);
        SetLastError(error);
        return nullptr;
    }
    Initialize(window, parameter);
    if (dialog->style & WS_VISIBLE && !state->hasEnded) ShowWindow(window, SW_SHOWNORMAL);
    return IsWindow(window) ? window : nullptr;
}

}  // namespace platform::user

using namespace platform::user;

HWND CreateDialogParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure,
                        LPARAM parameter) noexcept {
    return MakeDialog(module, name, owner, procedure, parameter, nullptr);
}

BOOL MapDialogRect(HWND dialog, RECT* rect) noexcept {
    const std::shared_ptr<Dialog> state = DialogOf(dialog);
    if (!state || !rect) return platform::Fail(ERROR_INVALID_WINDOW_HANDLE);
    const POINT first = ToPixels(POINT{rect->left, rect->top}, state->units);
    const POINT last = ToPixels(POINT{rect->right, rect->bottom}, state->units);
    *rect = {first.x, first.y, last.x, last.y};
    return TRUE;
}
