#include <charconv>
#include <string>

#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/text.h"

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam,
                            LPARAM lParam) noexcept {
    const HWND control = GetDlgItem(dialog, id);
    return control ? SendMessageW(control, message, wParam, lParam) : 0;
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) noexcept {
    return static_cast<BOOL>(
        SendDlgItemMessageW(dialog, id, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR buffer, int size) noexcept {
    if (!buffer || size <= 0) return 0;
    buffer[0] = 0;
    return static_cast<UINT>(SendDlgItemMessageW(dialog, id, WM_GETTEXT, static_cast<WPARAM>(size),
                                                 reinterpret_cast<LPARAM>(buffer)));
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) noexcept {
    const std::string digits =
        isSigned ? std::to_string(static_cast<INT>(value)) : std::to_string(value);
    return SetDlgItemTextW(dialog, id, platform::FromUtf8(digits).c_str());
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL isSigned) noexcept {
    WCHAR text[32];
    GetDlgItemTextW(dialog, id, text, 32);
    const std::string digits = platform::ToUtf8(text);
    const std::size_t start = std::min(digits.find_first_not_of(" \t\r\n"), digits.size());
    const char* const end = digits.data() + digits.size();
    LONGLONG value = 0;
    const std::errc error = std::from_chars(digits.data() + start, end, value).ec;
    const LONGLONG low = isSigned ? INT32_MIN : 0;
    const LONGLONG high = isSigned ? INT32_MAX : LONGLONG{UINT32_MAX};
    const bool isNumber = error == std::errc() && value >= low && value <= high;
    if (translated) *translated = isNumber;
    return isNumber ? static_cast<UINT>(value) : 0;
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check) noexcept {
    SendDlgItemMessageW(dialog, id, BM_SETCHECK, check, 0);
    return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int id) noexcept {
    return static_cast<UINT>(SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL CheckRadioButton(HWND dialog, int first, int last, int checked) noexcept {
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(child);
        if (id < first || id > last) continue;
        SendMessageW(child, BM_SETCHECK, id == checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    return TRUE;
}
