#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/modules.h"
#include "platform/system.h"
#include "platform/user.h"

namespace {

using testing::ElementsAre;

constexpr WCHAR kClass[] = TEXT("QuvadaRecorder");

std::vector<std::string> seen;
LRESULT createResult = 0;

struct Known {
    UINT message;
    const char* name;
};
constexpr Known kNoted[] = {
    {WM_NCCREATE, "nccreate"},   {WM_NCCALCSIZE, "nccalcsize"},
    {WM_CREATE, "create"},       {WM_SIZE, "size"},
    {WM_MOVE, "move"},           {WM_SHOWWINDOW, "show"},
    {WM_ENABLE, "enable"},       {WM_SETFOCUS, "setfocus"},
    {WM_KILLFOCUS, "killfocus"}, {WM_DESTROY, "destroy"},
    {WM_NCDESTROY, "ncdestroy"}, {WM_PARENTNOTIFY, "parentnotify"},
    {WM_USER, "user"},           {WM_TIMER, "timer"},
    {WM_PAINT, "paint"},
};

/// Notes what comes as id, name and parameter, and does what the system does by default.
LRESULT CALLBACK Record(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    for (const Known& known : kNoted) {
        if (known.message != message) continue;
        std::ostringstream line;
        line << GetDlgCtrlID(window) << ' ' << known.name;
        if (message == WM_SIZE || message == WM_MOVE) {
            line << ' ' << LOWORD(lParam) << ',' << HIWORD(lParam);
        } else if (message == WM_PARENTNOTIFY) {
            line << (LOWORD(wParam) == WM_CREATE ? " create" : " destroy");
        } else if (message == WM_SHOWWINDOW || message == WM_ENABLE || message == WM_USER) {
            line << ' ' << wParam;
        }
        seen.push_back(line.str());
    }
    if (message == WM_CREATE && createResult != 0) return createResult;
    if (message == WM_USER) return static_cast<LRESULT>(wParam) * 2;
    return DefWindowProcW(window, message, wParam, lParam);
}

std::vector<std::string> TakeSeen() { return std::exchange(seen, {}); }

class Windows : public testing::Test {
protected:
    Windows() {
        WNDCLASSEXW info{};
        info.cbSize = sizeof info;
        info.lpfnWndProc = Record;
        info.cbWndExtra = 16;
        info.lpszClassName = kClass;
        RegisterClassExW(&info);
        top_ = Make(nullptr, 0, WS_POPUP, 100, 50, 200, 100);
        createResult = 0;
        seen.clear();
    }
    ~Windows() override {
        DestroyWindow(top_);
        UnregisterClassW(kClass, nullptr);
    }
    static HWND Make(HWND parent, int id, DWORD style, int x, int y, int width, int height) {
        return CreateWindowExW(0, kClass, TEXT("text"), style, x, y, width, height, parent,
                               reinterpret_cast<HMENU>(INT_PTR{id}), nullptr, nullptr);
    }
    HWND MakeChild(HWND parent, int id, DWORD style = WS_VISIBLE) {
        return Make(parent, id, WS_CHILD | style, 10, 20, 30, 40);
    }

    HWND top_;
};

TEST_F(Windows, AreToldOfTheirLifeInTheDocumentedOrder) {
    const HWND child = MakeChild(top_, 1);
    ASSERT_TRUE(child);
    EXPECT_THAT(TakeSeen(), ElementsAre("1 nccreate", "1 nccalcsize", "1 create", "1 size 30,40",
                                        "1 move 10,20", "0 parentnotify create", "1 show 1"));
    const HWND grandchild = MakeChild(child, 2, 0);
    TakeSeen();
    EXPECT_TRUE(MoveWindow(child, 11, 20, 30, 40, FALSE));
    EXPECT_TRUE(MoveWindow(child, 11, 20, 31, 40, FALSE));
    EXPECT_THAT(TakeSeen(), ElementsAre("1 move 11,20", "1 nccalcsize", "1 size 31,40"));
    EXPECT_TRUE(DestroyWindow(child));
    std::vector<std::string> end = TakeSeen();
    std::erase(end, "1 show 0");  // The system hides it first, in its own way.
    EXPECT_THAT(end, ElementsAre("0 parentnotify destroy", "1 destroy", "2 destroy", "2 ncdestroy",
                                 "1 ncdestroy"));
    for (const HWND gone : {child, grandchild}) {
        SetLastError(0);
        EXPECT_FALSE(IsWindow(gone));
        RECT rect{};
        EXPECT_FALSE(GetClientRect(gone, &rect));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_EQ(SendMessageW(gone, WM_USER, 1, 0), 0);
        EXPECT_FALSE(PostMessageW(gone, WM_USER, 1, 0));
        EXPECT_FALSE(DestroyWindow(gone));
    }
}

TEST_F(Windows, ThatCannotBeMadeSayWhy) {
    createResult = -1;
    EXPECT_EQ(MakeChild(top_, 1), nullptr);
    std::vector<std::string> end = TakeSeen();
    EXPECT_THAT(end, testing::Contains("1 ncdestroy"));
    createResult = 0;
    EXPECT_EQ(MakeChild(nullptr, 1), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_TLW_WITH_WSCHILD);
    EXPECT_EQ(CreateWindowExW(0, TEXT("NoSuchClass"), nullptr, WS_POPUP, 0, 0, 1, 1, nullptr,
                              nullptr, nullptr, nullptr),
              nullptr);
    EXPECT_FALSE(UnregisterClassW(kClass, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_CLASS_HAS_WINDOWS);
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    EXPECT_FALSE(GetClassInfoExW(nullptr, kClass, &info)) << "not one of the system's";
    EXPECT_TRUE(GetClassInfoExW(GetModuleHandleW(nullptr), kClass, &info));
    EXPECT_EQ(RegisterClassExW(&info), 0);
    EXPECT_EQ(GetLastError(), ERROR_CLASS_ALREADY_EXISTS);
    --info.cbSize;
    info.lpszClassName = TEXT("QuvadaOther");
    EXPECT_EQ(RegisterClassExW(&info), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(Windows, KeepWordsTextAndPlace) {
    const HWND child = MakeChild(top_, 1);
    EXPECT_EQ(GetWindowLongPtrW(child, GWLP_ID), 1);
    EXPECT_EQ(GetDlgItem(top_, 1), child);
    EXPECT_EQ(GetDlgItem(top_, 2), nullptr);
    EXPECT_EQ(GetParent(child), top_);
    EXPECT_EQ(SetWindowLongPtrW(child, 8, 77), 0);
    EXPECT_EQ(SetWindowLongPtrW(child, 8, 78), 77);
    SetLastError(0);
    EXPECT_EQ(SetWindowLongPtrW(child, 9, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_INDEX);
    WCHAR text[4];
    EXPECT_EQ(GetWindowTextW(child, text, 4), 3);
    EXPECT_TRUE(std::u16string_view(reinterpret_cast<const char16_t*>(text)) == u"tex");
    EXPECT_EQ(GetWindowTextLengthW(child), 4);
    POINT point{1, 2};
    EXPECT_TRUE(ClientToScreen(child, &point));
    EXPECT_EQ(point.x, 111);
    EXPECT_EQ(point.y, 72);
    EXPECT_TRUE(ScreenToClient(top_, &point));
    EXPECT_EQ(point.x, 11);
    EXPECT_EQ(MapWindowPoints(top_, child, &point, 1), MAKELONG(-10, -20));
    EXPECT_EQ(point.x, 1);
    EXPECT_EQ(point.y, 2);
    RECT rect{};
    EXPECT_TRUE(GetWindowRect(child, &rect));
    EXPECT_EQ(rect.right, 140);
    EXPECT_EQ(rect.bottom, 110);
    const HWND second = MakeChild(top_, 2);
    EXPECT_EQ(GetWindow(top_, GW_CHILD), child) << "a new child lies below";
    EXPECT_EQ(GetWindow(child, GW_HWNDNEXT), second);
    EXPECT_EQ(GetWindow(second, GW_HWNDNEXT), nullptr);
}

TEST_F(Windows, OfAClassMadeFromAnotherReachItsProcedure) {
    static WNDPROC base;
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    ASSERT_TRUE(GetClassInfoExW(GetModuleHandleW(nullptr), kClass, &info));
    base = info.lpfnWndProc;
    info.lpszClassName = TEXT("QuvadaDerived");
    info.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_USER) wParam += 5;
        return CallWindowProcW(base, window, message, wParam, lParam);
    };
    const ATOM atom = RegisterClassExW(&info);
    ASSERT_NE(atom, 0);
    const HWND window = CreateWindowExW(0, reinterpret_cast<LPCWSTR>(ULONG_PTR{atom}), nullptr,
                                        WS_CHILD, 0, 0, 1, 1, top_, nullptr, nullptr, nullptr);
    ASSERT_TRUE(window);
    EXPECT_EQ(SendMessageW(window, WM_USER, 1, 0), 12);
    WCHAR name[64];
    EXPECT_EQ(GetClassNameW(window, name, 64), 13);
    DestroyWindow(window);
    EXPECT_TRUE(UnregisterClassW(TEXT("quvadaderived"), nullptr)) << "case does not count";
}

TEST_F(Windows, TakeFocusAndLoseItWhenDisabledOrHidden) {
    const HWND first = MakeChild(top_, 1);
    const HWND second = MakeChild(top_, 2);
    ShowWindow(top_, SW_SHOW);
    EXPECT_EQ(GetActiveWindow(), top_);
    SetFocus(first);
    TakeSeen();
    EXPECT_EQ(SetFocus(second), first);
    EXPECT_THAT(TakeSeen(), ElementsAre("1 killfocus", "2 setfocus"));
    EXPECT_FALSE(EnableWindow(first, FALSE));
    EXPECT_TRUE(EnableWindow(first, FALSE)) << "was disabled before";
    EXPECT_EQ(SetFocus(first), nullptr);
    EXPECT_EQ(GetFocus(), second);
    EXPECT_THAT(TakeSeen(), ElementsAre("1 enable 0"));
    ShowWindow(second, SW_HIDE);
    EXPECT_EQ(GetFocus(), top_);
    EXPECT_FALSE(IsWindowVisible(second));
    SetFocus(nullptr);
    ShowWindow(top_, SW_HIDE);
    EXPECT_FALSE(IsWindowVisible(first)) << "its parent is hidden";
}

TEST_F(Windows, GiveTheirMessagesInOrder) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    TakeSeen();
    ShowWindow(top_, SW_SHOW);
    SetTimer(top_, 5, USER_TIMER_MINIMUM, nullptr);
    InvalidateRect(top_, nullptr, FALSE);
    PostQuitMessage(9);
    PostMessageW(top_, WM_USER, 1, 0);
    PostMessageW(top_, WM_USER, 2, 0);
    EXPECT_TRUE(PeekMessageW(&message, top_, WM_USER, WM_USER, PM_NOREMOVE));
    TakeSeen();
    while (GetMessageW(&message, nullptr, 0, 0)) DispatchMessageW(&message);
    EXPECT_EQ(message.wParam, 9u);
    EXPECT_THAT(TakeSeen(), ElementsAre("0 user 1", "0 user 2")) << "the end comes before painting";
    UpdateWindow(top_);
    while (GetMessageW(&message, nullptr, 0, 0) && message.message != WM_TIMER) {
        DispatchMessageW(&message);
    }
    EXPECT_EQ(message.wParam, 5u);
    EXPECT_TRUE(KillTimer(top_, 5));
    EXPECT_FALSE(KillTimer(top_, 5));
    EXPECT_THAT(TakeSeen(), ElementsAre("0 paint"));
    UpdateWindow(top_);
    EXPECT_THAT(TakeSeen(), ElementsAre()) << "all is valid";
    EXPECT_EQ(GetMessageW(&message, reinterpret_cast<HWND>(ULONG_PTR{0x7FFE0}), 0, 0), -1);
}

TEST_F(Windows, AnswerOtherThreadsOnTheirOwn) {
    const DWORD self = GetCurrentThreadId();
    HWND theirs = nullptr;
    LRESULT answer = 0;
    std::thread other([&] {
        theirs = Make(nullptr, 0, WS_POPUP, 0, 0, 10, 10);
        EXPECT_EQ(GetWindowThreadProcessId(top_, nullptr), self);
        EXPECT_FALSE(DestroyWindow(top_));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        // While it waits it answers in turn.
        answer = SendMessageW(top_, WM_USER + 1, reinterpret_cast<WPARAM>(theirs), 0);
        PostMessageW(top_, WM_USER + 2, 0, 0);
    });
    static WNDPROC before;
    static DWORD ranOn;
    before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(top_, GWLP_WNDPROC,
                          reinterpret_cast<LONG_PTR>(+[](HWND window, UINT message, WPARAM wParam,
                                                         LPARAM lParam) -> LRESULT {
                              if (message != WM_USER + 1)
                                  return before(window, message, wParam, lParam);
                              ranOn = GetCurrentThreadId();
                              return SendMessageW(reinterpret_cast<HWND>(wParam), WM_USER, 21, 0);
                          })));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) && message.message != WM_USER + 2) {
        DispatchMessageW(&message);
    }
    other.join();
    EXPECT_EQ(ranOn, self);
    EXPECT_EQ(answer, 42);
    EXPECT_FALSE(IsWindow(theirs)) << "it went with its thread";
}

}  // namespace
