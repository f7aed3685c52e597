#include "options/bindings.h"

#include "platform/controls.h"
#include "settings/password_text.h"

bool IsChecked(HWND dialog, int id) noexcept {
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

void SetChecked(HWND dialog, int id, bool isChecked) noexcept {
    CheckDlgButton(dialog, id, isChecked ? BST_CHECKED : BST_UNCHECKED);
}

void LimitTexts(HWND dialog, std::span<const TextBinding> rows) noexcept {
    for (const TextBinding& row : rows) {
        SendDlgItemMessageW(dialog, row.id, EM_SETLIMITTEXT, kTextUnits - 1, 0);
    }
}

void FillList(HWND dialog, int id, std::span<const WCHAR* const> names) noexcept {
    const HWND list = GetDlgItem(dialog, id);
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const WCHAR* name : names) {
        SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    }
}

void SelectRow(HWND dialog, int id, std::uint32_t row) noexcept {
    const HWND list = GetDlgItem(dialog, id);
    const LRESULT count = SendMessageW(list, CB_GETCOUNT, 0, 0);
    // Of a row that it does not have, not every system's control clears the selection; of -1, all.
    const WPARAM wanted = row < count ? row : static_cast<WPARAM>(-1);
    SendMessageW(list, CB_SETCURSEL, wanted, 0);
}

std::uint32_t SelectedRow(HWND dialog, int id, std::uint32_t otherwise) noexcept {
    const LRESULT row = SendMessageW(GetDlgItem(dialog, id), CB_GETCURSEL, 0, 0);
    return row >= 0 ? static_cast<std::uint32_t>(row) : otherwise;
}

void EnableControls(HWND dialog, std::span<const int> ids, bool isEnabled) noexcept {
    for (const int id : ids) EnableWindow(GetDlgItem(dialog, id), isEnabled);
}

void ShowFields(HWND dialog, std::span<const CheckBinding> rows,
                ConversionSettings& settings) noexcept {
    for (const CheckBinding& row : rows) SetChecked(dialog, row.id, row.field(settings));
}

void ShowFields(HWND dialog, std::span<const ListBinding> rows,
                ConversionSettings& settings) noexcept {
    for (const ListBinding& row : rows) SelectRow(dialog, row.id, row.field(settings));
}

void ShowFields(HWND dialog, std::span<const TextBinding> rows,
                ConversionSettings& settings) noexcept {
    for (const TextBinding& row : rows) SetDlgItemTextW(dialog, row.id, row.field(settings).Text());
}

void StoreFields(HWND dialog, std::span<const CheckBinding> rows,
                 ConversionSettings& settings) noexcept {
    for (const CheckBinding& row : rows) row.field(settings) = IsChecked(dialog, row.id);
}

void StoreFields(HWND dialog, std::span<const ListBinding> rows,
                 ConversionSettings& settings) noexcept {
    for (const ListBinding& row : rows) {
        std::uint32_t& number = row.field(settings);
        number = SelectedRow(dialog, row.id, number);
    }
}

void StoreFields(HWND dialog, std::span<const TextBinding> rows,
                 ConversionSettings& settings) noexcept {
    for (const TextBinding& row : rows) (void)ReadText(dialog, row.id, row.field(settings));
}

bool ReadText(HWND dialog, int id, AUX::WString& text) noexcept {
    AUX::WString read;
    if (!read.SetLength(kTextUnits - 1)) return false;
    read.Data()[0] = 0;
    const UINT length = GetDlgItemTextW(dialog, id, read.Data(), kTextUnits);
    (void)read.SetLength(length);  // Shorter, so it fits.
    text.Swap(read);
    WipeText(read);  // What it was may have been a password.
    return true;
}
