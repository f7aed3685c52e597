#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "foundation/module_folder.h"
#include "platform/controls.h"
#include "platform/modules.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

/// A user at a dialog's real controls: what the mouse and the keyboard would send them.
namespace options_test {

inline platform::WideString TextOf(HWND window) {
    platform::WideString text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1,
                              TEXT(' '));
    const LRESULT length =
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}
inline std::string TextOf(HWND dialog, int id) {
    return platform::ToUtf8(TextOf(GetDlgItem(dialog, id)));
}

inline LRESULT RowOf(HWND dialog, int id) {
    return SendMessageW(GetDlgItem(dialog, id), CB_GETCURSEL, 0, 0);
}

inline bool IsEnabled(HWND dialog, int id) { return IsWindowEnabled(GetDlgItem(dialog, id)) != 0; }

inline void Press(HWND dialog, int id) {
    ASSERT_TRUE(GetDlgItem(dialog, id)) << id;
    SendMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

/// Replaces an edit's text, key by key.
inline void Type(HWND dialog, int id, const char* text) {
    const HWND edit = GetDlgItem(dialog, id);
    ASSERT_TRUE(edit) << id;
    SendMessageW(edit, EM_SETSEL, 0, -1);
    if (!*text) SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(TEXT("")));
    for (const WCHAR unit : platform::FromUtf8(text)) SendMessageW(edit, WM_CHAR, unit, 1);
}

inline void Choose(HWND dialog, int id, WPARAM row) {
    const HWND list = GetDlgItem(dialog, id);
    ASSERT_EQ(SendMessageW(list, CB_SETCURSEL, row, 0), static_cast<LRESULT>(row)) << id;
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(static_cast<DWORD_PTR>(id), CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(list));
}

/// Presses the upper (lower) arrow of an up-down.
inline void Click(HWND dialog, int id, bool isUp) {
    const HWND upDown = GetDlgItem(dialog, id);
    RECT area{};
    GetClientRect(upDown, &area);
    const LPARAM at = MAKELPARAM(static_cast<DWORD_PTR>(area.right / 2),
                                 static_cast<DWORD_PTR>(isUp ? 2 : area.bottom - 3));
    SendMessageW(upDown, WM_LBUTTONDOWN, 1, at);
    SendMessageW(upDown, WM_LBUTTONUP, 0, at);
}

/// Presses a tab of the Options dialog.
inline void SelectTab(HWND dialog, WPARAM tab) {
    const HWND control = GetDlgItem(dialog, 1002);
    RECT area{};
    SendMessageW(control, TCM_GETITEMRECT, tab, reinterpret_cast<LPARAM>(&area));
    const LPARAM at = MAKELPARAM(static_cast<DWORD_PTR>((area.left + area.right) / 2),
                                 static_cast<DWORD_PTR>((area.top + area.bottom) / 2));
    SendMessageW(control, WM_LBUTTONDOWN, 1, at);
    SendMessageW(control, WM_LBUTTONUP, 0, at);
}

/// The child dialog of `parent` that has these controls.
inline HWND PageWith(HWND parent, std::initializer_list<int> ids) {
    HWND page = GetWindow(parent, GW_CHILD);
    const auto has = [&](int id) { return GetDlgItem(page, id) != nullptr; };
    while (page && !std::ranges::all_of(ids, has)) page = GetWindow(page, GW_HWNDNEXT);
    return page;
}

/// The pages and panels of the Options dialog.
struct Pages {
    explicit Pages(HWND dialog)
        : tabs(GetDlgItem(dialog, 1002)),
          page(PageWith(tabs, {1003})),
          security(PageWith(tabs, {287})),
          advanced(PageWith(tabs, {291, 1028})),
          permissions40(PageWith(security, {293})),
          permissions128(PageWith(security, {297})),
          panel(PageWith(advanced, {1030})) {}
    HWND tabs, page, security, advanced, permissions40, permissions128, panel;
};

/// The module is the test program, which has the add-in's resources; a window for pages to lie in.
class DialogTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(AttachModule(GetModuleHandleW(nullptr)));
        frame_ = CreateWindowExW(0, TEXT("Static"), TEXT(""), WS_POPUP | WS_VISIBLE, 100, 60, 700,
                                 500, nullptr, nullptr, nullptr, nullptr);
        ASSERT_TRUE(frame_);
        SetActiveWindow(frame_);
    }
    void TearDown() override {
        DestroyWindow(frame_);
        DetachModule();
    }

    const test_support::TestProfile profile_;
    HWND frame_ = nullptr;
};

}  // namespace options_test
