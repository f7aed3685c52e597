#include "options/option_page.h"

#include "foundation/module_folder.h"
#include "options/reflection.h"
#include "options/tab_texture.h"
#include "platform/controls.h"

namespace {

/// Gives the click of an up-down to the edit that belongs to it.
/// \return whether the edit took it; the up-down then changes nothing of its own.
bool PassToBuddy(WPARAM wParam, LPARAM lParam, LRESULT& result) noexcept {
    const auto& notification = *reinterpret_cast<const NMHDR*>(lParam);
    if (notification.code != UDN_DELTAPOS) return false;
    const auto buddy =
        reinterpret_cast<HWND>(SendMessageW(notification.hwndFrom, UDM_GETBUDDY, 0, 0));
    if (!buddy) return false;
    result = SendMessageW(buddy, WM_NOTIFY, wParam, lParam);
    return reinterpret_cast<const NMUPDOWN*>(lParam)->iDelta == 0;
}

}  // namespace

bool OptionPage::Create(HWND parent) noexcept {
    return CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(resource_), parent, Procedure,
                              reinterpret_cast<LPARAM>(this)) != nullptr;
}

void OptionPage::Bind(ConversionSettings& settings) noexcept {
    settings_ = &settings;
    if (Window) Show(settings);
}

void OptionPage::WriteBack() noexcept {
    if (Window && settings_) Store(*settings_);
}

void OptionPage::ShowAt(POINT corner) noexcept {
    SetWindowPos(Window, nullptr, corner.x, corner.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

bool OptionPage::OnCommand(int, UINT) noexcept { return false; }

POINT OptionPage::TakePlaceHolder(int id) noexcept {
    const HWND control = GetDlgItem(Window, id);
    RECT place{};
    GetWindowRect(control, &place);
    POINT corner{place.left, place.top};
    ScreenToClient(Window, &corner);
    ShowWindow(control, SW_HIDE);
    return corner;
}

INT_PTR CALLBACK OptionPage::Procedure(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        auto* made = reinterpret_cast<OptionPage*>(lParam);
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        made->Window = window;
        if (made->texture_ == TabTexture::Yes) EnableTabTexture(window);
        made->OnInit();
        return FALSE;  // The focus stays where it is.
    }
    auto* self = reinterpret_cast<OptionPage*>(GetWindowLongPtrW(window, DWLP_USER));
    if (!self) return FALSE;
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, DWLP_USER, 0);
        self->Window = nullptr;
        return FALSE;
    }
    return self->OnMessage(message, wParam, lParam);
}

INT_PTR OptionPage::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    LRESULT result = 0;
    const bool isDone = (message == WM_COMMAND && OnCommand(LOWORD(wParam), HIWORD(wParam))) ||
                        (message == WM_NOTIFY && PassToBuddy(wParam, lParam, result)) ||
                        // A control that has no answer leaves it to the dialog.
                        (Reflect(message, wParam, lParam, result) && result != 0);
    if (!isDone) return FALSE;
    SetWindowLongPtrW(Window, DWLP_MSGRESULT, result);
    // Of some messages a dialog gives the result itself.
    return message == WM_COMMAND || message == WM_NOTIFY ? TRUE : result;
}
