#include "options/options_dialog.h"

#include <iterator>

#include "foundation/module_folder.h"
#include "options/centre_window.h"
#include "platform/controls.h"
#include "platform/scope_exit.h"
#include "platform/system.h"
#include "resources/resource_ids.h"

namespace {

constexpr int kSecurityTab = 1;
constexpr const WCHAR* kTabNames[] = {TEXT("PDF page"), TEXT("Security"), TEXT("Advanced")};
constexpr UINT_PTR kSubclassId = 1;

}  // namespace

INT_PTR OptionsDialog::Run() noexcept {
    const HHOOK filter = SetWindowsHookExW(WH_MSGFILTER, FilterKeys, nullptr, GetCurrentThreadId());
    const platform::ScopeExit ended([filter]() noexcept {
        if (filter) UnhookWindowsHookEx(filter);
    });
    return DialogBoxParamW(ModuleInstance(), MAKEINTRESOURCEW(QVD_DIALOG_OPTIONS),
                           GetActiveWindow(), Procedure, reinterpret_cast<LPARAM>(this));
}

INT_PTR CALLBACK OptionsDialog::Procedure(HWND window, UINT message, WPARAM wParam,
                                          LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        reinterpret_cast<OptionsDialog*>(lParam)->OnInit(window);
        return FALSE;  // The focus is where it should be.
    }
    auto* self = reinterpret_cast<OptionsDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    if (!self) return FALSE;
    if (message == WM_COMMAND) return self->OnCommand(LOWORD(wParam));
    if (message == WM_NOTIFY) {
        const auto& notification = *reinterpret_cast<const NMHDR*>(lParam);
        if (notification.hwndFrom != self->TabControl || notification.code != TCN_SELCHANGE) {
            return FALSE;
        }
        self->LayOutPages();
        return TRUE;
    }
    return FALSE;
}

LRESULT CALLBACK OptionsDialog::FilterKeys(int code, WPARAM wParam, LPARAM lParam) noexcept {
    const LRESULT others = CallNextHookEx(nullptr, code, wParam, lParam);
    if (others || code != MSGF_DIALOGBOX) return others;
    const auto& message = *reinterpret_cast<const MSG*>(lParam);
    if (message.message != WM_KEYDOWN || message.wParam != VK_TAB) return 0;
    if (GetKeyState(VK_CONTROL) >= 0) return 0;
    for (HWND window = message.hwnd; window; window = GetParent(window)) {
        if (GetWindowLongPtrW(window, DWLP_DLGPROC) != reinterpret_cast<LONG_PTR>(Procedure)) {
            continue;
        }
        // Another dialog may lie over this one.
        if (!IsWindowEnabled(window)) return 0;
        reinterpret_cast<OptionsDialog*>(GetWindowLongPtrW(window, DWLP_USER))
            ->GoToNextTab(GetKeyState(VK_SHIFT) < 0);
        return 1;
    }
    return 0;
}

LRESULT CALLBACK OptionsDialog::TabProcedure(HWND window, UINT message, WPARAM wParam,
                                             LPARAM lParam, UINT_PTR id, DWORD_PTR data) noexcept {
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, TabProcedure, id);
        reinterpret_cast<OptionsDialog*>(data)->TabControl = nullptr;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

void OptionsDialog::OnInit(HWND window) noexcept {
    Window = window;
    CentreOnOwner(window);
    TabControl = GetDlgItem(window, QVD_TAB_CONTROL);
    (void)SetWindowSubclass(TabControl, TabProcedure, kSubclassId,
                            reinterpret_cast<DWORD_PTR>(this));
    const LONG_PTR style = GetWindowLongPtrW(TabControl, GWL_STYLE);
    SetWindowLongPtrW(TabControl, GWL_STYLE, style | static_cast<LONG_PTR>(WS_CLIPCHILDREN));

    // A page that cannot be made leaves its tab empty, and its settings as they are.
    (void)pdfPage_.Create(TabControl);
    pdfPage_.Bind(*settings_);
    (void)security_.Create(TabControl);
    security_.Bind(*settings_);
    (void)advanced_.Create(TabControl);
    advanced_.Bind(*settings_);

    WPARAM tab = 0;
    for (const WCHAR* name : kTabNames) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<LPWSTR>(name);  // Only read.
        SendMessageW(TabControl, TCM_INSERTITEMW, tab++, reinterpret_cast<LPARAM>(&item));
    }
    SelectTab(0);
    // Here the arrow keys change the tab; the keyboard goes from here into its page.
    SetFocus(TabControl);
}

bool OptionsDialog::OnCommand(int id) noexcept {
    switch (id) {
        case QVD_BUTTON_OK:
            OnOk();
            return true;
        case QVD_BUTTON_CANCEL:
            EndDialog(Window, IDCANCEL);
            return true;
        case QVD_BUTTON_RESET:
            settings_->ResetToDefaults();
            pdfPage_.Bind(*settings_);
            security_.Bind(*settings_);
            advanced_.Bind(*settings_);
            return true;
        default:
            return false;
    }
}

void OptionsDialog::OnOk() noexcept {
    if (!security_.Validate()) {
        SelectTab(kSecurityTab);
        return;
    }
    pdfPage_.WriteBack();
    security_.WriteBack();
    advanced_.WriteBack();
    (void)settings_->Save();  // Of a failure there is no message; the record keeps what was set.
    EndDialog(Window, IDOK);
}

void OptionsDialog::SelectTab(int tab) noexcept {
    SendMessageW(TabControl, TCM_SETCURSEL, static_cast<WPARAM>(tab), 0);
    LayOutPages();
}

void OptionsDialog::GoToNextTab(bool isBackwards) noexcept {
    constexpr int kTabs = static_cast<int>(std::size(kTabNames));
    const auto tab = static_cast<int>(SendMessageW(TabControl, TCM_GETCURSEL, 0, 0));
    SelectTab((tab + (isBackwards ? kTabs - 1 : 1)) % kTabs);
}

void OptionsDialog::LayOutPages() noexcept {
    const HWND pages[] = {pdfPage_.Window, security_.Window, advanced_.Window};
    const LRESULT selected = SendMessageW(TabControl, TCM_GETCURSEL, 0, 0);
    const HWND focus = GetFocus();
    LRESULT tab = 0;
    for (const HWND page : pages) {
        if (tab++ == selected) continue;
        ShowWindow(page, SW_HIDE);
        // The keyboard would be lost in a hidden page.
        if (page && IsChild(page, focus)) SetFocus(TabControl);
    }
    RECT area{};
    GetClientRect(TabControl, &area);
    SendMessageW(TabControl, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    if (selected < 0 || !pages[selected]) return;
    SetWindowPos(pages[selected], nullptr, area.left, area.top, area.right - area.left,
                 area.bottom - area.top, SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}
