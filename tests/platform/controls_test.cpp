#include "platform/controls.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "platform/testing_gui.h"

namespace platform {
namespace {

using ::testing::ElementsAre;
using Notes = std::vector<std::string>;

Notes notes;
LRESULT notifyResult = 0;
int notifyDelta = 0;  // what the parent makes of an up-down's step; 0 leaves it

Notes TakeNotes() { return std::exchange(notes, {}); }

/// Notes what controls tell their parent.
LRESULT CALLBACK NoteAll(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    std::string note;
    if (message == WM_COMMAND) {
        note = std::to_string(LOWORD(wParam)) + ' ' + std::to_string(HIWORD(wParam));
    } else if (message == WM_VSCROLL) {
        note = "scroll " + std::to_string(LOWORD(wParam)) + ' ' + std::to_string(HIWORD(wParam));
    } else if (message == WM_NOTIFY) {
        auto& step = *reinterpret_cast<NMUPDOWN*>(lParam);
        if (step.hdr.code == UDN_DELTAPOS) {
            note = "delta " + std::to_string(step.iPos) + ' ' + std::to_string(step.iDelta);
            if (notifyDelta != 0) step.iDelta = notifyDelta;
        } else if (step.hdr.code == TCN_SELCHANGE || step.hdr.code == TCN_SELCHANGING) {
            const LRESULT tab = SendMessageW(step.hdr.hwndFrom, TCM_GETCURSEL, 0, 0);
            note =
                (step.hdr.code == TCN_SELCHANGE ? "changed " : "changing ") + std::to_string(tab);
        }
        if (!note.empty()) {
            notes.push_back(note);
            return notifyResult;
        }
    }
    if (!note.empty()) notes.push_back(note);
    return DefWindowProcW(window, message, wParam, lParam);
}

class Controls : public ::testing::Test {
protected:
    Controls() {
        WNDCLASSEXW info{};
        info.cbSize = sizeof info;
        info.lpfnWndProc = NoteAll;
        info.lpszClassName = TEXT("QuvadaNotes");
        RegisterClassExW(&info);
        INITCOMMONCONTROLSEX wanted{sizeof wanted, ICC_TAB_CLASSES | ICC_UPDOWN_CLASS};
        EXPECT_TRUE(InitCommonControlsEx(&wanted));
        top_ = CreateWindowExW(0, info.lpszClassName, nullptr, WS_POPUP | WS_VISIBLE, 0, 0, 300,
                               300, nullptr, nullptr, nullptr, nullptr);
        notifyResult = 0;
        notifyDelta = 0;
        TakeNotes();
    }
    ~Controls() override {
        DestroyWindow(top_);
        UnregisterClassW(TEXT("QuvadaNotes"), nullptr);
    }
    HWND Make(LPCWSTR name, int id, DWORD style, LPCWSTR text = nullptr, int height = 20) {
        const HWND control = CreateWindowExW(
            0, name, text, WS_CHILD | WS_VISIBLE | style, 10, 10 + 25 * made_++, 100, height, top_,
            reinterpret_cast<HMENU>(INT_PTR{id}), nullptr, nullptr);
        EXPECT_TRUE(control);
        return control;
    }
    static LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageW(window, message, wParam, lParam);
    }
    static LRESULT Send(HWND window, UINT message, WPARAM wParam, LPCWSTR text) {
        return SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(text));
    }
    static std::string TextOf(HWND window) {
        WCHAR text[64] = {};
        GetWindowTextW(window, text, 64);
        return ToUtf8(text);
    }
    static void Type(HWND window, const char* text) {
        for (const WCHAR unit : FromUtf8(text)) Send(window, WM_CHAR, unit, 1);
    }
    static void Key(HWND window, WPARAM key) {
        Send(window, WM_KEYDOWN, key, 1);
        Send(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    }
    static void ClickAt(HWND window, LONG x, LONG y) {
        const LPARAM at = MAKELPARAM(static_cast<DWORD_PTR>(x), static_cast<DWORD_PTR>(y));
        Send(window, WM_LBUTTONDOWN, 1, at);
        Send(window, WM_LBUTTONUP, 0, at);
    }
    static RECT PlaceOf(HWND window) {
        RECT place{};
        GetWindowRect(window, &place);
        return place;
    }

    HWND top_;
    int made_ = 0;
};

TEST_F(Controls, ButtonsAreCheckedByClicks) {
    const struct {
        const char* why;
        DWORD type;
        std::vector<LRESULT> checks;  // after each click
        LRESULT highest;              // what BM_SETCHECK makes of 2
        LRESULT code;
    } kCases[] = {
        {"push", BS_PUSHBUTTON, {0, 0}, 0, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON},
        {"default", BS_DEFPUSHBUTTON, {0, 0}, 0, DLGC_BUTTON | DLGC_DEFPUSHBUTTON},
        {"check", BS_CHECKBOX, {0, 0}, 1, DLGC_BUTTON},
        {"automatic check", BS_AUTOCHECKBOX, {1, 0}, 1, DLGC_BUTTON},
        {"radio", BS_RADIOBUTTON, {0, 0}, 1, DLGC_BUTTON | DLGC_RADIOBUTTON},
        {"automatic radio", BS_AUTORADIOBUTTON, {1, 1}, 1, DLGC_BUTTON | DLGC_RADIOBUTTON},
        {"three states", BS_AUTO3STATE, {1, 2, 0}, 2, DLGC_BUTTON},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        const HWND button = Make(WC_BUTTONW, 7, c.type, TEXT("text"));
        TakeNotes();
        for (const LRESULT check : c.checks) {
            Send(button, BM_CLICK);
            EXPECT_EQ(Send(button, BM_GETCHECK), check);
            EXPECT_THAT(TakeNotes(), ElementsAre("7 0"));
        }
        EXPECT_EQ(Send(button, WM_GETDLGCODE), c.code);
        Send(button, BM_SETCHECK, 2);
        EXPECT_EQ(Send(button, BM_GETCHECK), c.highest);
        EXPECT_THAT(TakeNotes(), ElementsAre()) << "the program has set it";
        Send(button, BM_SETCHECK, 0);
        SetFocus(button);
        TakeNotes();
        Key(button, VK_SPACE);
        EXPECT_THAT(TakeNotes(), ElementsAre("7 0"));
        SetFocus(nullptr);
        DestroyWindow(button);
    }
    const HWND box = Make(WC_BUTTONW, 8, BS_GROUPBOX, TEXT("group"));
    EXPECT_EQ(Send(box, WM_GETDLGCODE), DLGC_STATIC);
    EXPECT_EQ(Send(Make(WC_STATICW, 9, SS_LEFT), WM_GETDLGCODE), DLGC_STATIC);
}

TEST_F(Controls, ButtonsArePressedByTheMouse) {
    const HWND button = Make(WC_BUTTONW, 7, BS_PUSHBUTTON | BS_NOTIFY, TEXT("text"));
    Send(button, WM_LBUTTONDOWN, 1, MAKELPARAM(5, 5));
    EXPECT_EQ(GetFocus(), button);
    EXPECT_EQ(GetCapture(), button);
    EXPECT_EQ(Send(button, BM_GETSTATE) & (BST_PUSHED | BST_FOCUS), BST_PUSHED | BST_FOCUS);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 6"));
    Send(button, WM_LBUTTONUP, 0, MAKELPARAM(5, 500));
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_THAT(TakeNotes(), ElementsAre()) << "let go outside";
    ClickAt(button, 5, 5);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 0"));
    SetFocus(top_);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 7"));
    EXPECT_EQ(Send(button, BM_GETSTATE) & (BST_PUSHED | BST_FOCUS), 0);
    EnableWindow(button, FALSE);
    Send(button, BM_CLICK);
    EXPECT_EQ(Send(button, BM_GETSTATE) & (BST_PUSHED | BST_FOCUS), 0);
}

TEST_F(Controls, RadioButtonsOfAGroupExcludeEachOther) {
    HWND radios[4];
    for (int i = 0; i < 4; ++i) {
        const DWORD group = i == 0 || i == 3 ? WS_GROUP : 0;
        radios[i] = Make(WC_BUTTONW, i, BS_AUTORADIOBUTTON | group, TEXT("text"));
    }
    const auto state = [&] {
        std::string text;
        for (const HWND radio : radios) {
            const bool isStop = GetWindowLongPtrW(radio, GWL_STYLE) & WS_TABSTOP;
            text += Send(radio, BM_GETCHECK) ? (isStop ? 'X' : 'x') : (isStop ? 'O' : 'o');
        }
        return text;
    };
    for (const HWND radio : {radios[1], radios[3], radios[2]}) Send(radio, BM_CLICK);
    EXPECT_EQ(state(), "ooXX");
    Send(radios[0], BM_SETCHECK, BST_CHECKED);
    EXPECT_EQ(state(), "XoXX") << "set by the program: the others stay";
    EnableWindow(radios[2], FALSE);
    Send(radios[1], BM_CLICK);
    EXPECT_EQ(state(), "oXXX") << "a disabled one stays";
}

TEST_F(Controls, EditsTakeWhatIsTyped) {
    const struct {
        const char* why;
        DWORD style;
        WPARAM limit;
        const char* text;
        int first, last;
        const char* typed;
        const char* expected;
        Notes notes;
    } kCases[] = {
        {"at the start", 0, 0, "bc", 0, 0, "a", "abc", {"7 1024", "7 768"}},
        {"over the selection", 0, 0, "abcd", 1, 3, "X", "aXd", {"7 1024", "7 768"}},
        {"over all", 0, 0, "abcd", 0, -1, "X", "X", {"7 1024", "7 768"}},
        {"backspace", 0, 0, "abcd", 2, 2, "\b", "acd", {"7 1024", "7 768"}},
        {"backspace at the start", 0, 0, "abcd", 0, 0, "\b", "abcd", {}},
        {"backspace over the selection", 0, 0, "abcd", 1, 3, "\b", "ad", {"7 1024", "7 768"}},
        {"up to the limit", 0, 3, "abc", 3, 3, "d", "abc", {"7 1281"}},
        {"a text beyond the limit", 0, 2, "abc", 0, 1, "X", "bc", {"7 1281", "7 1024", "7 768"}},
        {"a letter among digits", ES_NUMBER, 0, "12", 2, 2, "a", "12", {}},
        {"a digit among digits", ES_NUMBER, 0, "12", 2, 2, "3", "123", {"7 1024", "7 768"}},
        {"only to be read", ES_READONLY, 0, "ab", 2, 2, "c", "ab", {}},
        {"a password", ES_PASSWORD, 0, "ab", 2, 2, "c", "abc", {"7 1024", "7 768"}},
        {"return", 0, 0, "ab", 2, 2, "\r", "ab", {}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        const HWND edit = Make(WC_EDITW, 7, c.style | ES_AUTOHSCROLL, TEXT("before"));
        SetWindowTextW(edit, FromUtf8(c.text).c_str());
        EXPECT_FALSE(Send(edit, EM_GETMODIFY));
        if (c.limit) Send(edit, EM_LIMITTEXT, c.limit);
        Send(edit, EM_SETSEL, static_cast<WPARAM>(c.first), c.last);
        SetFocus(edit);
        TakeNotes();
        Type(edit, c.typed);
        EXPECT_EQ(TextOf(edit), c.expected);
        Notes told = TakeNotes();
        // Where nothing fits, some systems tell of a change that is none.
        if (c.text == std::string(c.expected)) told.resize(std::min(told.size(), c.notes.size()));
        EXPECT_EQ(told, c.notes);
        DestroyWindow(edit);
    }
}

TEST_F(Controls, EditsKeepASelection) {
    const HWND edit = Make(WC_EDITW, 7, ES_AUTOHSCROLL, TEXT("abcdef"));
    EXPECT_THAT(TakeNotes(), ElementsAre());
    EXPECT_EQ(TextOf(edit), "abcdef");
    const auto selection = [&] { return Send(edit, EM_GETSEL); };
    const struct {
        int first, last;
        LRESULT expected;
    } kCases[] = {
        {1, 3, MAKELONG(1, 3)},  {3, 1, MAKELONG(1, 3)},  {0, -1, MAKELONG(0, 6)},
        {4, 99, MAKELONG(4, 6)}, {-1, 0, MAKELONG(6, 6)},
    };
    for (const auto& c : kCases) {
        Send(edit, EM_SETSEL, static_cast<WPARAM>(c.first), c.last);
        EXPECT_EQ(selection(), c.expected) << c.first << ' ' << c.last;
    }
    SetFocus(edit);
    Send(edit, EM_SETSEL, 3, 3);
    Key(edit, VK_RIGHT);
    EXPECT_EQ(selection(), MAKELONG(4, 4));
    Key(edit, VK_DELETE);
    EXPECT_EQ(TextOf(edit), "abcdf");
    EXPECT_TRUE(Send(edit, EM_GETMODIFY));
    {
        const testing::HeldKey shift(VK_SHIFT);
        Key(edit, VK_HOME);
    }
    EXPECT_EQ(selection(), MAKELONG(0, 4));
    TakeNotes();
    Send(edit, EM_REPLACESEL, FALSE, TEXT("12"));
    EXPECT_EQ(TextOf(edit), "12f");
    EXPECT_EQ(selection(), MAKELONG(2, 2));
    EXPECT_THAT(TakeNotes(), ElementsAre("7 1024", "7 768"));
    SetWindowTextW(edit, TEXT("new"));
    EXPECT_THAT(TakeNotes(), ElementsAre("7 1024", "7 768"));
    EXPECT_EQ(selection(), 0);
    Send(edit, EM_LIMITTEXT, 2);
    SetWindowTextW(edit, TEXT("long"));
    EXPECT_EQ(TextOf(edit), "long") << "the limit is the user's";
    TakeNotes();
    SetFocus(top_);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 512"));
    EXPECT_EQ(SendMessageA(edit, WM_GETTEXTLENGTH, 0, 0), 4);
    char narrow[4];
    EXPECT_EQ(SendMessageA(edit, WM_GETTEXT, 4, reinterpret_cast<LPARAM>(narrow)), 3);
    EXPECT_STREQ(narrow, "lon");
    EXPECT_TRUE(SetWindowTextA(edit, "1.5"));
    EXPECT_EQ(TextOf(edit), "1.5");
}

TEST_F(Controls, DropListsHoldRows) {
    const HWND list = Make(WC_COMBOBOXW, 7, CBS_DROPDOWNLIST, nullptr, 200);
    EXPECT_LT(PlaceOf(list).bottom - PlaceOf(list).top, 40) << "only the closed part";
    RECT dropped{};
    Send(list, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&dropped));
    EXPECT_GT(dropped.bottom - dropped.top, 150);
    for (const WCHAR* row : {TEXT("points"), TEXT("inches"), TEXT("mm"), TEXT("Mile")}) {
        Send(list, CB_ADDSTRING, 0, row);
    }
    EXPECT_EQ(Send(list, CB_GETCOUNT), 4);
    EXPECT_EQ(Send(list, CB_GETCURSEL), CB_ERR);
    EXPECT_EQ(TextOf(list), "");
    EXPECT_EQ(Send(list, CB_SETCURSEL, 2), 2);
    EXPECT_EQ(TextOf(list), "mm");
    EXPECT_FALSE(SetWindowTextW(list, TEXT("inches")) == TRUE) << "there is nothing to type in";
    WCHAR text[16] = {};
    EXPECT_EQ(Send(list, CB_GETLBTEXT, 1, text), 6);
    EXPECT_EQ(ToUtf8(text), "inches");
    EXPECT_EQ(Send(list, CB_GETLBTEXT, 4, text), CB_ERR);
    EXPECT_EQ(Send(list, CB_GETLBTEXTLEN, 0), 6);
    EXPECT_NE(Send(list, CB_SETITEMDATA, 1, 77), CB_ERR);
    EXPECT_EQ(Send(list, CB_GETITEMDATA, 1), 77);
    EXPECT_EQ(Send(list, CB_GETITEMDATA, 0), 0);
    EXPECT_EQ(Send(list, CB_SETITEMDATA, 4, 1), CB_ERR);
    constexpr auto kAll = static_cast<WPARAM>(-1);
    EXPECT_EQ(Send(list, CB_FINDSTRINGEXACT, kAll, TEXT("MM")), 2);
    EXPECT_EQ(Send(list, CB_FINDSTRINGEXACT, kAll, TEXT("m")), CB_ERR);
    EXPECT_EQ(Send(list, CB_FINDSTRING, kAll, TEXT("m")), 2);
    EXPECT_EQ(Send(list, CB_FINDSTRING, 2, TEXT("m")), 3);
    EXPECT_EQ(Send(list, CB_FINDSTRING, 3, TEXT("m")), 2) << "round to the start";
    EXPECT_EQ(Send(list, CB_INSERTSTRING, 0, TEXT("first")), 0);
    EXPECT_EQ(Send(list, CB_GETCURSEL), 3) << "the chosen row moves";
    EXPECT_EQ(Send(list, CB_GETITEMDATA, 2), 77);
    EXPECT_EQ(Send(list, CB_DELETESTRING, 3), 4);
    EXPECT_EQ(Send(list, CB_GETCURSEL), CB_ERR);
    EXPECT_EQ(Send(list, CB_SELECTSTRING, kAll, TEXT("po")), 1);
    EXPECT_EQ(Send(list, CB_SETCURSEL, 9), CB_ERR);
    EXPECT_EQ(Send(list, CB_SETCURSEL, kAll), CB_ERR);
    EXPECT_EQ(Send(list, CB_GETCURSEL), CB_ERR);
    Send(list, CB_RESETCONTENT);
    EXPECT_EQ(Send(list, CB_GETCOUNT), 0);
    EXPECT_THAT(TakeNotes(), ElementsAre()) << "all by the program";
}

TEST_F(Controls, DropListsAreChosenFromByKeys) {
    const HWND list = Make(WC_COMBOBOXW, 7, CBS_DROPDOWNLIST, nullptr, 200);
    for (const WCHAR* row : {TEXT("points"), TEXT("inches"), TEXT("mm"), TEXT("Mile")}) {
        Send(list, CB_ADDSTRING, 0, row);
    }
    SetFocus(list);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 3"));
    const struct {
        const char* why;
        LRESULT from;
        UINT message;
        WPARAM key;
        LRESULT to;
        bool isTold;
    } kCases[] = {
        {"down", 0, WM_KEYDOWN, VK_DOWN, 1, true},
        {"up", 1, WM_KEYDOWN, VK_UP, 0, true},
        {"up at the top", 0, WM_KEYDOWN, VK_UP, 0, false},
        {"down at the bottom", 3, WM_KEYDOWN, VK_DOWN, 3, false},
        {"end", 1, WM_KEYDOWN, VK_END, 3, true},
        {"home", 3, WM_KEYDOWN, VK_HOME, 0, true},
        {"first letter", 0, WM_CHAR, 'm', 2, true},
        {"first letter again", 2, WM_CHAR, 'm', 3, true},
        {"no such letter", 0, WM_CHAR, 'x', 0, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        Send(list, CB_SETCURSEL, static_cast<WPARAM>(c.from));
        TakeNotes();
        Send(list, c.message, c.key, 1);
        EXPECT_EQ(Send(list, CB_GETCURSEL), c.to);
        if (c.isTold) {
            EXPECT_THAT(TakeNotes(), ElementsAre("7 9", "7 1"));
        }
    }
    Send(list, CB_SETCURSEL, 0);
    TakeNotes();
    Key(list, VK_F4);
    EXPECT_TRUE(Send(list, CB_GETDROPPEDSTATE));
    MSG escape{list, WM_KEYDOWN, VK_ESCAPE, 1, 0, {}};
    EXPECT_TRUE(Send(list, WM_GETDLGCODE, VK_ESCAPE, reinterpret_cast<LPARAM>(&escape)) &
                DLGC_WANTMESSAGE);
    Key(list, VK_DOWN);
    Key(list, VK_RETURN);
    EXPECT_FALSE(Send(list, CB_GETDROPPEDSTATE));
    EXPECT_EQ(Send(list, CB_GETCURSEL), 1);
    EXPECT_THAT(TakeNotes(), ElementsAre("7 7", "7 1", "7 9", "7 8"));
    EXPECT_FALSE(Send(list, WM_GETDLGCODE, VK_ESCAPE, reinterpret_cast<LPARAM>(&escape)) &
                 DLGC_WANTMESSAGE);
    SetFocus(top_);
    EXPECT_THAT(TakeNotes(), ::testing::Contains("7 4"));
}

TEST_F(Controls, UpDownsStepWithTheirBuddy) {
    const HWND edit = Make(WC_EDITW, 6, ES_AUTOHSCROLL, TEXT("5"));
    const RECT before = PlaceOf(edit);
    const HWND arrows =
        Make(UPDOWN_CLASSW, 7, UDS_AUTOBUDDY | UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS);
    EXPECT_EQ(reinterpret_cast<HWND>(Send(arrows, UDM_GETBUDDY)), edit);
    EXPECT_NEAR(PlaceOf(arrows).right, before.right, 2);
    EXPECT_EQ(PlaceOf(arrows).top, before.top);
    EXPECT_EQ(PlaceOf(arrows).bottom, before.bottom);
    EXPECT_EQ(PlaceOf(edit).left, before.left);
    EXPECT_LT(PlaceOf(edit).right, before.right);
    EXPECT_EQ(static_cast<LONG>(Send(arrows, UDM_GETRANGE)), MAKELONG(0, 100)) << "high first";
    Send(arrows, UDM_SETRANGE32, 1, 2000);
    int low = 0, high = 0;
    Send(arrows, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low), reinterpret_cast<LPARAM>(&high));
    EXPECT_EQ(std::pair(low, high), std::pair(1, 2000));
    Send(arrows, UDM_SETPOS32, 0, 1998);
    EXPECT_EQ(Send(arrows, UDM_SETPOS32, 0, 1999), 1998) << "the old position";
    EXPECT_EQ(TextOf(edit), "1,999");
    TakeNotes();
    ClickAt(arrows, 3, 2);
    EXPECT_THAT(TakeNotes(),
                ::testing::IsSupersetOf({"delta 1999 1", "scroll 4 2000", "scroll 8 2000"}));
    EXPECT_EQ(TextOf(edit), "2,000");
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), 2000);
    ClickAt(arrows, 3, 2);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), 2000) << "the end of the range";
    SetFocus(edit);
    TakeNotes();
    Key(edit, VK_DOWN);
    EXPECT_THAT(TakeNotes(), ::testing::Contains("delta 2000 -1"));
    EXPECT_EQ(TextOf(edit), "1,999");
    notifyDelta = -99;
    ClickAt(arrows, 3, 2);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), 1900) << "the parent's step";
    notifyResult = 1;
    ClickAt(arrows, 3, 2);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), 1900) << "the parent refuses";
    SetWindowTextW(edit, TEXT("7"));
    BOOL failed = 5;
    EXPECT_EQ(Send(arrows, UDM_GETPOS32, 0, reinterpret_cast<LPARAM>(&failed)), 7);
    EXPECT_FALSE(failed);
    SetWindowTextW(edit, TEXT("none"));
    Send(arrows, UDM_GETPOS32, 0, reinterpret_cast<LPARAM>(&failed));
    EXPECT_TRUE(failed);
    EXPECT_EQ(Send(arrows, UDM_SETPOS32, 0, 3000), 7);
    EXPECT_EQ(TextOf(edit), "2,000") << "held in the range";
}

TEST_F(Controls, UpDownsCountEitherWayAndRound) {
    const HWND arrows = Make(UPDOWN_CLASSW, 7, UDS_WRAP);
    EXPECT_EQ(Send(arrows, UDM_GETBUDDY), 0);
    Send(arrows, UDM_SETPOS32, 0, 50);
    ClickAt(arrows, 3, 2);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), 49) << "up goes to the upper end, which is 0 at first";
    Send(arrows, UDM_SETRANGE, 0, MAKELPARAM(static_cast<WORD>(-1), static_cast<WORD>(-3)));
    EXPECT_EQ(static_cast<LONG>(Send(arrows, UDM_GETRANGE)),
              MAKELONG(static_cast<WORD>(-1), static_cast<WORD>(-3)));
    Send(arrows, UDM_SETPOS, 0, MAKELPARAM(static_cast<WORD>(-1), 0));
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), -1);
    ClickAt(arrows, 3, 2);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), -3) << "round to the other end";
    ClickAt(arrows, 3, PlaceOf(arrows).bottom - PlaceOf(arrows).top - 3);
    EXPECT_EQ(Send(arrows, UDM_GETPOS32), -1);
}

TEST_F(Controls, TabsAreChosenByTheUserOrTheProgram) {
    const HWND tabs = Make(WC_TABCONTROLW, 7, WS_TABSTOP, nullptr, 150);
    MoveWindow(tabs, 0, 0, 250, 150, FALSE);
    const auto insert = [&](WPARAM place, const WCHAR* text, LPARAM data) {
        TCITEMW item{};
        item.mask = TCIF_TEXT | TCIF_PARAM;
        item.pszText = const_cast<LPWSTR>(text);
        item.lParam = data;
        return Send(tabs, TCM_INSERTITEMW, place, reinterpret_cast<LPARAM>(&item));
    };
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), -1);
    EXPECT_EQ(insert(0, TEXT("A"), 10), 0);
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), 0) << "the first one is selected";
    EXPECT_EQ(insert(9, TEXT("C"), 30), 1);
    EXPECT_EQ(insert(1, TEXT("B"), 20), 1);
    EXPECT_EQ(Send(tabs, TCM_GETITEMCOUNT), 3);
    WCHAR text[8] = {};
    TCITEMW item{};
    item.mask = TCIF_TEXT | TCIF_PARAM;
    item.pszText = text;
    item.cchTextMax = 8;
    EXPECT_TRUE(Send(tabs, TCM_GETITEMW, 2, reinterpret_cast<LPARAM>(&item)));
    EXPECT_EQ(item.lParam, 30);
    EXPECT_EQ(ToUtf8(item.pszText), "C");
    EXPECT_FALSE(Send(tabs, TCM_GETITEMW, 3, reinterpret_cast<LPARAM>(&item)));

    EXPECT_EQ(Send(tabs, TCM_SETCURSEL, 2), 0);
    EXPECT_EQ(Send(tabs, TCM_SETCURSEL, 3), -1);
    EXPECT_THAT(TakeNotes(), ElementsAre()) << "by the program";
    RECT first{}, last{}, page{};
    EXPECT_TRUE(Send(tabs, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&first)));
    EXPECT_TRUE(Send(tabs, TCM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&last)));
    EXPECT_FALSE(Send(tabs, TCM_GETITEMRECT, 3, reinterpret_cast<LPARAM>(&page)));
    EXPECT_LT(first.right, last.right);
    Send(tabs, TCM_SETCURSEL, 0);
    ClickAt(tabs, last.left + 3, last.top + 5);
    EXPECT_THAT(TakeNotes(), ElementsAre("changing 0", "changed 2"));
    ClickAt(tabs, last.left + 3, last.top + 5);
    EXPECT_THAT(TakeNotes(), ElementsAre()) << "it is selected already";
    notifyResult = 1;
    ClickAt(tabs, first.left + 3, first.top + 5);
    EXPECT_THAT(TakeNotes(), ElementsAre("changing 2"));
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), 2) << "the parent refused";
    notifyResult = 0;
    SetFocus(tabs);
    Key(tabs, VK_LEFT);
    EXPECT_THAT(TakeNotes(), ElementsAre("changing 2", "changed 1"));

    RECT client{};
    GetClientRect(tabs, &client);
    page = client;
    Send(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&page));
    EXPECT_GE(page.top, first.bottom);
    EXPECT_TRUE(page.left > 0 && page.right < client.right && page.bottom < client.bottom);
    Send(tabs, TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&page));
    EXPECT_EQ(page.top, client.top);
    EXPECT_EQ(page.right, client.right);
    EXPECT_EQ(page.bottom, client.bottom);
    Send(tabs, TCM_DELETEITEM, 0);
    EXPECT_EQ(Send(tabs, TCM_GETCURSEL), 0) << "the selected tab moves";
    Send(tabs, TCM_DELETEALLITEMS);
    EXPECT_EQ(Send(tabs, TCM_GETITEMCOUNT), 0);
}

LRESULT CALLBACK AddDigit(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                          DWORD_PTR data) {
    if (message == WM_USER && wParam != 0) RemoveWindowSubclass(window, AddDigit, id);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    return message == WM_USER ? result * 10 + static_cast<LRESULT>(data) : result;
}

TEST_F(Controls, AreSubclassedInAStack) {
    const HWND label = Make(WC_STATICW, 7, SS_LEFT);
    const auto procedure = GetWindowLongPtrW(label, GWLP_WNDPROC);
    EXPECT_TRUE(SetWindowSubclass(label, AddDigit, 1, 1));
    EXPECT_TRUE(SetWindowSubclass(label, AddDigit, 2, 2));
    EXPECT_TRUE(SetWindowSubclass(label, AddDigit, 3, 3));
    EXPECT_EQ(Send(label, WM_USER), 123) << "the newest is asked first";
    EXPECT_TRUE(SetWindowSubclass(label, AddDigit, 2, 5));
    EXPECT_EQ(Send(label, WM_USER), 153);
    EXPECT_TRUE(RemoveWindowSubclass(label, AddDigit, 2));
    EXPECT_FALSE(RemoveWindowSubclass(label, AddDigit, 2));
    EXPECT_EQ(Send(label, WM_USER, 1), 13) << "each takes itself away, and passes on";
    EXPECT_EQ(Send(label, WM_USER), 0);
    EXPECT_EQ(GetWindowLongPtrW(label, GWLP_WNDPROC), procedure);
}

}  // namespace
}  // namespace platform
