#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/controls.h"
#include "platform/modules.h"
#include "platform/resources.h"
#include "platform/system.h"
#include "platform/testing.h"
#include "platform/testing_gui.h"

namespace platform {
namespace {

using testing::DialogScript;
using ::testing::ElementsAre;
using testing::HeldKey;
using testing::PostKey;

constexpr int kEdit = 10, kCheck = 11, kOne = 12, kTwo = 13, kThree = 14, kList = 15, kPress = 16;

std::vector<std::string> commands;

std::vector<std::string> TakeCommands() { return std::exchange(commands, {}); }

std::string TextOf(HWND dialog, int id) {
    WCHAR text[64] = {};
    GetDlgItemTextW(dialog, id, text, 64);
    return ToUtf8(text);
}

/// Notes clicks and changes as id and code; `parameter` is what WM_INITDIALOG answers.
INT_PTR CALLBACK Note(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) return static_cast<INT_PTR>(lParam);
    if (message != WM_COMMAND) return FALSE;
    commands.push_back(std::to_string(LOWORD(wParam)) + ' ' + std::to_string(HIWORD(wParam)));
    const bool isEnd = LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL;
    if (isEnd && HIWORD(wParam) == BN_CLICKED) EndDialog(dialog, LOWORD(wParam));
    return TRUE;
}

class Dialogs : public ::testing::Test {
protected:
    Dialogs() : module_(LoadLibraryW(FromUtf8(TEST_MODULES "\\probe.dll").c_str())) {
        commands.clear();
        INITCOMMONCONTROLSEX wanted{sizeof wanted, ICC_TAB_CLASSES | ICC_UPDOWN_CLASS};
        InitCommonControlsEx(&wanted);
        owner_ = CreateWindowExW(0, TEXT("Static"), nullptr, WS_POPUP | WS_VISIBLE, 0, 0, 300, 200,
                                 nullptr, nullptr, nullptr, nullptr);
    }
    ~Dialogs() override {
        DestroyWindow(owner_);
        FreeLibrary(module_);
    }
    INT_PTR Run(int id, std::vector<DialogScript::Step> steps, LPARAM takesFocus = TRUE) {
        DialogScript script(std::move(steps));
        const INT_PTR result =
            DialogBoxParamW(module_, MAKEINTRESOURCEW(id), owner_, Note, takesFocus);
        EXPECT_TRUE(script.IsDone());
        return result;
    }

    HMODULE module_;
    std::unique_ptr<HeldKey> shift_;
    HWND owner_;
};

// Tests beside this one show windows, too, of which any may become the active one.
TEST_F(Dialogs, AreWorkedOnBehindAnotherProgramsWindow) {
    if (testing::kOwnsTheSystem) GTEST_SKIP() << "no other program's windows are here";
    EXPECT_EQ(Run(1, {[](HWND) {
                          SetActiveWindow(nullptr);
                          EXPECT_EQ(GetActiveWindow(), nullptr);
                      },
                      [](HWND dialog) {
                          EXPECT_EQ(GetActiveWindow(), dialog);
                          EndDialog(dialog, 5);
                      }}),
              5);
}

TEST_F(Dialogs, RunUntilTheirEndWithTheOwnerDisabled) {
    EXPECT_EQ(Run(1, {[&](HWND dialog) {
                      EXPECT_FALSE(IsWindowEnabled(owner_));
                      EXPECT_TRUE(IsWindowVisible(dialog));
                      EXPECT_EQ(GetWindow(dialog, GW_OWNER), owner_);
                      EXPECT_EQ(GetFocus(), GetDlgItem(dialog, kEdit));
                      EXPECT_EQ(TextOf(dialog, kPress), "&Press");
                      EXPECT_TRUE(EndDialog(dialog, 77));
                      EXPECT_TRUE(IsWindowEnabled(owner_));
                      EXPECT_FALSE(IsWindowVisible(dialog));
                  }}),
              77);
    EXPECT_EQ(GetActiveWindow(), owner_);
}

TEST_F(Dialogs, ReportWhatCannotBeMade) {
    EXPECT_EQ(DialogBoxParamW(module_, MAKEINTRESOURCEW(99), owner_, Note, 0), -1);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_NAME_NOT_FOUND);
    EXPECT_EQ(CreateDialogParamW(module_, MAKEINTRESOURCEW(4), owner_, Note, 0), nullptr);
    EXPECT_EQ(DialogBoxParamW(module_, MAKEINTRESOURCEW(4), owner_, Note, 0), -1);
    EXPECT_TRUE(IsWindowEnabled(owner_));
    const HWND lenient = CreateDialogParamW(module_, MAKEINTRESOURCEW(5), owner_, Note, 0);
    EXPECT_EQ(GetDlgItem(lenient, 10), nullptr);
    EXPECT_EQ(TextOf(lenient, 11), "text");
    EXPECT_FALSE(IsWindowVisible(lenient));
    DestroyWindow(lenient);
    EXPECT_EQ(DialogBoxParamW(module_, MAKEINTRESOURCEW(1), lenient, Note, 0), 0) << "no window";
}

TEST_F(Dialogs, LieWhereTheTemplateSays) {
    const HWND dialog = CreateDialogParamW(module_, MAKEINTRESOURCEW(1), owner_, Note, 0);
    ASSERT_TRUE(dialog);
    RECT wanted{110, 40, 110 + 50, 40 + 14};
    RECT size{0, 0, 200, 100};
    RECT corner{10, 20, 0, 0};
    EXPECT_TRUE(MapDialogRect(dialog, &wanted));
    EXPECT_TRUE(MapDialogRect(dialog, &size));
    EXPECT_TRUE(MapDialogRect(dialog, &corner));
    EXPECT_GT(wanted.right, 50) << "a unit is larger than a pixel";
    RECT place{};
    GetWindowRect(GetDlgItem(dialog, kPress), &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    EXPECT_EQ(place.left, wanted.left);
    EXPECT_EQ(place.top, wanted.top);
    EXPECT_NEAR(place.right, wanted.right, 1);
    EXPECT_NEAR(place.bottom, wanted.bottom, 1);
    GetClientRect(dialog, &place);
    EXPECT_EQ(place.right, size.right);
    EXPECT_EQ(place.bottom, size.bottom);
    GetWindowRect(dialog, &place);
    AdjustWindowRectEx(&corner, static_cast<DWORD>(GetWindowLongPtrW(dialog, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(dialog, GWL_EXSTYLE)));
    EXPECT_EQ(place.left, corner.left) << "the owner lies at the screen's corner";
    EXPECT_EQ(place.top, corner.top);
    EXPECT_TRUE(GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_DLGMODALFRAME);
    DestroyWindow(dialog);
}

/// What a key does in the old dialog, from a control that has the focus.
struct KeyCase {
    const char* why;
    int from;
    WPARAM key;
    bool hasShift;
    int focus;  // afterwards
    std::vector<std::string> commands;
};

TEST_F(Dialogs, AreWorkedByKeys) {
    const KeyCase kCases[] = {
        {"tab", kEdit, VK_TAB, false, kCheck, {"10 512"}},
        {"tab back", kCheck, VK_TAB, true, kEdit, {"10 256"}},
        {"tab to the checked one of a group", kCheck, VK_TAB, false, kTwo, {}},
        {"tab out of a group", kTwo, VK_TAB, false, kList, {"15 3"}},
        {"tab from the last", IDCANCEL, VK_TAB, false, kEdit, {"10 256"}},
        {"tab back from the first", kEdit, VK_TAB, true, IDCANCEL, {"10 512"}},
        {"down in a group", kTwo, VK_DOWN, false, kThree, {"14 0"}},
        {"left in a group", kTwo, VK_LEFT, false, kOne, {"12 0"}},
        {"round in a group", kThree, VK_RIGHT, false, kOne, {"12 0"}},
        {"an edit keeps its arrows", kEdit, VK_RIGHT, false, kEdit, {}},
        {"a check box by the space bar", kCheck, VK_SPACE, false, kCheck, {"11 0"}},
        {"a button by the space bar", kPress, VK_SPACE, false, kPress, {"16 0"}},
        {"a button by return", kPress, VK_RETURN, false, kPress, {"16 0"}},
        {"mnemonic of a label", kPress, 'N', false, kEdit, {"10 256"}},
        {"mnemonic of a button", kCheck, 'P', false, kPress, {"16 0"}},
        {"mnemonic of a check box", kPress, 'C', false, kCheck, {"11 0"}},
        {"no mnemonic", kPress, 'X', false, kPress, {}},
    };
    for (const KeyCase& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(
            Run(1, {[&](HWND dialog) {
                        CheckRadioButton(dialog, kOne, kThree, c.from == kThree ? kThree : kTwo);
                        SendMessageW(dialog, WM_NEXTDLGCTL,
                                     reinterpret_cast<WPARAM>(GetDlgItem(dialog, c.from)), TRUE);
                        TakeCommands();
                        PostKey(c.key);
                        shift_ = std::make_unique<HeldKey>(c.hasShift ? VK_SHIFT : VK_F4);
                    },
                    [&](HWND dialog) {
                        shift_.reset();
                        EXPECT_EQ(GetDlgCtrlID(GetFocus()), c.focus);
                        EXPECT_EQ(TakeCommands(), c.commands);
                        EndDialog(dialog, 5);
                    }}),
            5);
    }
}

TEST_F(Dialogs, EndByReturnEscapeAndClosing) {
    const struct {
        const char* why;
        int from;
        UINT message;
        WPARAM key;
        INT_PTR result;
    } kCases[] = {
        {"return means the default button", kCheck, WM_KEYDOWN, VK_RETURN, IDOK},
        {"return in an edit", kEdit, WM_KEYDOWN, VK_RETURN, IDOK},
        {"return on another button", IDCANCEL, WM_KEYDOWN, VK_RETURN, IDCANCEL},
        {"escape", kEdit, WM_KEYDOWN, VK_ESCAPE, IDCANCEL},
        {"closing", kEdit, WM_CLOSE, 0, IDCANCEL},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Run(1, {[&](HWND dialog) {
                          SendMessageW(dialog, WM_NEXTDLGCTL,
                                       reinterpret_cast<WPARAM>(GetDlgItem(dialog, c.from)), TRUE);
                          PostMessageW(c.message == WM_CLOSE ? dialog : GetFocus(), c.message,
                                       c.key, 1);
                      }}),
                  c.result);
    }
}

TEST_F(Dialogs, HaveOneDefaultButtonThatFollowsTheFocus) {
    const auto code = [](HWND dialog, int id) {
        return SendDlgItemMessageW(dialog, id, WM_GETDLGCODE, 0, 0) &
               (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON);
    };
    const auto go = [](HWND dialog, int id) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, id)), TRUE);
    };
    Run(1, {[&](HWND dialog) {
            EXPECT_EQ(code(dialog, IDOK), DLGC_DEFPUSHBUTTON);
            EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELONG(IDOK, DC_HASDEFID));
            go(dialog, kPress);
            EXPECT_EQ(code(dialog, kPress), DLGC_DEFPUSHBUTTON);
            EXPECT_EQ(code(dialog, IDOK), DLGC_UNDEFPUSHBUTTON);
            EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELONG(IDOK, DC_HASDEFID));
            go(dialog, kEdit);
            EXPECT_EQ(code(dialog, kPress), DLGC_UNDEFPUSHBUTTON);
            EXPECT_EQ(code(dialog, IDOK), DLGC_DEFPUSHBUTTON);
            SendMessageW(dialog, DM_SETDEFID, kPress, 0);
            EXPECT_EQ(code(dialog, kPress), DLGC_DEFPUSHBUTTON);
            EXPECT_EQ(code(dialog, IDOK), DLGC_UNDEFPUSHBUTTON);
            EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELONG(kPress, DC_HASDEFID));
            EndDialog(dialog, 0);
        }});
}

TEST_F(Dialogs, TakeTheControlsOfTheirPagesIntoTheOrder) {
    Run(2, {[&](HWND dialog) {
            const HWND frame = GetDlgItem(dialog, 20);
            const HWND page = CreateDialogParamW(module_, MAKEINTRESOURCEW(3), frame, Note, TRUE);
            EXPECT_EQ(GetFocus(), GetDlgItem(page, 30)) << "it has asked for the focus";
            EXPECT_TRUE(IsWindowVisible(page));
            EXPECT_EQ(GetWindowLongPtrW(page, GWL_STYLE) & WS_CAPTION, 0);
            EXPECT_TRUE(GetWindowLongPtrW(page, GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
            const auto next = [&](HWND from, BOOL previous) {
                return GetDlgCtrlID(GetNextDlgTabItem(dialog, from, previous));
            };
            EXPECT_EQ(next(GetDlgItem(dialog, 10), FALSE), 30);
            EXPECT_EQ(next(GetDlgItem(page, 30), FALSE), 31);
            EXPECT_EQ(next(GetDlgItem(page, 31), FALSE), IDCANCEL);
            EXPECT_EQ(next(GetDlgItem(dialog, IDCANCEL), TRUE), 31);
            EXPECT_EQ(next(nullptr, FALSE), 10);
            // The window that stands for the page may have the focus itself.
            EXPECT_EQ(next(frame, FALSE), IDCANCEL);
            EXPECT_EQ(next(frame, TRUE), 10);
            ShowWindow(page, SW_HIDE);
            EXPECT_EQ(next(GetDlgItem(dialog, 10), FALSE), IDCANCEL);
            ShowWindow(page, SW_SHOW);
            EnableWindow(GetDlgItem(page, 30), FALSE);
            EXPECT_EQ(next(GetDlgItem(dialog, 10), FALSE), 31);
            SetFocus(GetDlgItem(page, 31));
            PostKey(VK_ESCAPE);
        }});
}

/// What the filters of a thread saw of a key, in their order.
std::string seen;
template <char Name, WPARAM Takes>
LRESULT CALLBACK Filter(int code, WPARAM wParam, LPARAM lParam) {
    const auto& message = *reinterpret_cast<const MSG*>(lParam);
    if (code == MSGF_DIALOGBOX && message.message == WM_KEYDOWN) {
        seen += Name;
        if (message.wParam == Takes) return 1;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(Dialogs, AskTheirFiltersFirst) {
    seen.clear();
    const auto set = [](HOOKPROC procedure) {
        return SetWindowsHookExW(WH_MSGFILTER, procedure, nullptr, GetCurrentThreadId());
    };
    const HHOOK a = set(Filter<'a', VK_ESCAPE>);
    const HHOOK b = set(Filter<'b', VK_RETURN>);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(Run(1, {[](HWND) { PostKey(VK_ESCAPE); }, [](HWND) { PostKey(VK_RETURN); },
                      [&](HWND) {
                          EXPECT_EQ(seen, "bab") << "the last first, and it may keep a message";
                          EXPECT_TRUE(UnhookWindowsHookEx(b));
                          PostKey(VK_RETURN);
                      }}),
              IDOK);
    EXPECT_EQ(seen, "baba");
    EXPECT_FALSE(UnhookWindowsHookEx(b));
    EXPECT_TRUE(UnhookWindowsHookEx(a));
}

TEST_F(Dialogs, RunOneInAnother) {
    int inner = 0;
    EXPECT_EQ(Run(1, {[&](HWND dialog) {
                          inner = static_cast<int>(DialogBoxParamW(
                              module_, MAKEINTRESOURCEW(2), GetDlgItem(dialog, kPress), Note, 0));
                          EXPECT_TRUE(IsWindowEnabled(dialog));
                          EXPECT_EQ(GetActiveWindow(), dialog);
                          EXPECT_FALSE(IsWindowEnabled(owner_));
                          PostKey(VK_RETURN);
                      },
                      [&](HWND dialog) {
                          const HWND below = GetWindow(dialog, GW_OWNER);
                          EXPECT_FALSE(IsWindowEnabled(below)) << "the top of the control's tree";
                          EXPECT_TRUE(GetDlgItem(below, kPress));
                          PostKey(VK_ESCAPE);
                      }}),
              IDOK);
    EXPECT_EQ(inner, IDCANCEL);
    PostQuitMessage(3);
    EXPECT_NE(DialogBoxParamW(module_, MAKEINTRESOURCEW(1), owner_, Note, 0), -1);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "it stays";
    EXPECT_EQ(message.wParam, 3u);
}

TEST_F(Dialogs, ReadAndWriteTheirControls) {
    const HWND dialog = CreateDialogParamW(module_, MAKEINTRESOURCEW(1), owner_, Note, 0);
    const struct {
        const char* text;
        bool isSigned, isNumber;
        UINT value;
    } kNumbers[] = {
        {"0", false, true, 0},
        {" 12", true, true, 12},
        {"-12", true, true, static_cast<UINT>(-12)},
        {"2147483648", true, false, 0},
        {"4294967296", false, false, 0},
        {"12a", false, true, 12},
        {"", false, false, 0},
    };
    for (const auto& c : kNumbers) {
        SCOPED_TRACE(c.text);
        SetDlgItemTextW(dialog, kEdit, FromUtf8(c.text).c_str());
        BOOL isNumber = 7;
        EXPECT_EQ(GetDlgItemInt(dialog, kEdit, &isNumber, c.isSigned), c.value);
        EXPECT_EQ(isNumber, c.isNumber);
    }
    SetDlgItemInt(dialog, kEdit, static_cast<UINT>(-5), TRUE);
    EXPECT_EQ(TextOf(dialog, kEdit), "-5");
    SetDlgItemInt(dialog, kEdit, static_cast<UINT>(-5), FALSE);
    EXPECT_EQ(TextOf(dialog, kEdit), "4294967291");
    WCHAR text[4];
    EXPECT_EQ(GetDlgItemTextW(dialog, kEdit, text, 4), 3u);
    EXPECT_EQ(GetDlgItemTextW(dialog, 999, text, 4), 0u);
    EXPECT_EQ(text[0], 0);
    CheckDlgButton(dialog, kCheck, BST_CHECKED);
    EXPECT_EQ(IsDlgButtonChecked(dialog, kCheck), BST_CHECKED);
    CheckRadioButton(dialog, kOne, kThree, kThree);
    CheckRadioButton(dialog, kOne, kThree, kTwo);
    const auto checked = [&](int id) { return IsDlgButtonChecked(dialog, id); };
    EXPECT_THAT((std::vector{checked(kOne), checked(kTwo), checked(kThree)}),
                ElementsAre(0u, 1u, 0u));
    DestroyWindow(dialog);
}

}  // namespace
}  // namespace platform
