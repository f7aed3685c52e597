#include <algorithm>
#include <string>
#include <utility>

#include "platform/posix/user/control.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/subclass_calls.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/up_down_calls.h"
#include "platform/posix/user/window.h"
#include "platform/text.h"

namespace platform::user {
namespace {

constexpr LONG kWidth = 17;
constexpr UINT_PTR kTimer = 1;
constexpr UINT kFirstRepeatMs = 500;
constexpr UINT kRepeatMs = 100;

/// Two arrows that move a number, which another window, the buddy, may show.
class UpDown {
public:
    explicit UpDown(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    [[nodiscard]] DWORD Style() const {
        return static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
    }
    [[nodiscard]] int Clamped(LONGLONG position) const;
    LRESULT SetPosition(int position);
    LRESULT GetPosition(BOOL* failed);
    LRESULT SetBuddy(HWND buddy);
    void LeaveBuddy();
    void Align();
    void ShowNumber();
    bool TakeNumber();
    void SetRange(int lower, int upper);
    /// One click on an arrow.
    void Step(bool isUp);
    void Press(POINT point);
    void Release();
    static LRESULT CALLBACK WatchKeys(HWND buddy, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR id, DWORD_PTR control);

    HWND window_;
    HWND buddy_ = nullptr;
    int lower_ = 100;
    int upper_ = 0;
    int position_ = 0;
    bool isHeld_ = false;
    bool isUpHeld_ = false;
};

int UpDown::Clamped(LONGLONG position) const {
    return static_cast<int>(
        std::clamp<LONGLONG>(position, std::min(lower_, upper_), std::max(lower_, upper_)));
}

LRESULT UpDown::SetPosition(int position) {
    const int old = std::exchange(position_, Clamped(position));
    ShowNumber();
    return old;
}

LRESULT UpDown::GetPosition(BOOL* failed) {
    const bool isGood = TakeNumber();
    if (failed) *failed = !isGood;
    return position_;
}

/// Reads the number that the buddy shows, if it shows any. \return false for another text.
bool UpDown::TakeNumber() {
    if (!(Style() & UDS_SETBUDDYINT) || !IsWindow(buddy_)) return true;
    WCHAR text[32];
    const int length = GetWindowTextW(buddy_, text, 32);
    std::string digits = ToUtf8(WideView(text, static_cast<std::size_t>(length)));
    std::erase(digits, ',');
    char* end = nullptr;
    const LONGLONG value = std::strtoll(digits.c_str(), &end, 10);
    if (digits.empty() || *end != 0 || Clamped(value) != value) return false;
    position_ = static_cast<int>(value);
    return true;
}

void UpDown::ShowNumber() {
    if (!(Style() & UDS_SETBUDDYINT) || !IsWindow(buddy_)) return;
    std::string digits = std::to_string(position_);
    if (!(Style() & UDS_NOTHOUSANDS)) {
        const std::size_t first = position_ < 0 ? 1 : 0;
        for (std::size_t place = digits.size(); place > first + 3;) {
            place -= 3;
            digits.insert(place, 1, ',');
        }
    }
    const WideString text = FromUtf8(digits);
    WCHAR old[32];
    const int length = GetWindowTextW(buddy_, old, 32);
    if (WideView(old, static_cast<std::size_t>(length)) == text) return;
    SetWindowTextW(buddy_, text.c_str());
}

void UpDown::SetRange(int lower, int upper) {
    lower_ = lower;
    upper_ = upper;
}

/// Lies beside the buddy's frame, whose width it takes from it.
void UpDown::Align() {
    if (!buddy_ || !(Style() & (UDS_ALIGNLEFT | UDS_ALIGNRIGHT))) return;
    RECT rect{};
    GetWindowRect(buddy_, &rect);
    const HWND parent = GetParent(buddy_);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    const bool isRight = Style() & UDS_ALIGNRIGHT;
    const LONG left = isRight ? rect.left : rect.left + kWidth;
    MoveWindow(buddy_, left, rect.top, std::max<LONG>(0, WidthOf(rect) - kWidth), HeightOf(rect),
               TRUE);
    MoveWindow(window_, isRight ? rect.right - kWidth : rect.left, rect.top, kWidth, HeightOf(rect),
               TRUE);
}

void UpDown::LeaveBuddy() {
    if (buddy_) RemoveWindowSubclass(buddy_, WatchKeys, reinterpret_cast<UINT_PTR>(window_));
    buddy_ = nullptr;
}

LRESULT UpDown::SetBuddy(HWND buddy) {
    const HWND old = buddy_;
    LeaveBuddy();
    if (IsWindow(buddy)) {
        buddy_ = buddy;
        if (Style() & UDS_ARROWKEYS) {
            SetWindowSubclass(buddy_, WatchKeys, reinterpret_cast<UINT_PTR>(window_), 0);
        }
        Align();
    }
    return reinterpret_cast<LRESULT>(old);
}

LRESULT CALLBACK UpDown::WatchKeys(HWND buddy, UINT message, WPARAM wParam, LPARAM lParam,
                                   UINT_PTR id, DWORD_PTR) {
    const HWND control = reinterpret_cast<HWND>(id);
    const bool isArrow = message == WM_KEYDOWN && (wParam == VK_UP || wParam == VK_DOWN);
    if (isArrow && IsWindowEnabled(control)) {
        SendMessageW(control, WM_KEYDOWN, wParam, lParam);
        return 0;
    }
    return DefSubclassProc(buddy, message, wParam, lParam);
}

void UpDown::Step(bool isUp) {
    (void)TakeNumber();
    const int direction = (isUp ? 1 : -1) * (upper_ < lower_ ? -1 : 1);
    NMUPDOWN step{};
    step.iPos = position_;
    step.iDelta = direction;
    const HWND window = window_;
    if (Notify(window, UDN_DELTAPOS, step.hdr) != 0 || !IsWindow(window)) return;
    LONGLONG wanted = LONGLONG{position_} + step.iDelta;
    if (Style() & UDS_WRAP && Clamped(wanted) != wanted) {
        const int high = std::max(lower_, upper_);
        wanted = wanted > high ? std::min(lower_, upper_) : high;
    }
    position_ = Clamped(wanted);
    ShowNumber();
    const UINT scroll = Style() & UDS_HORZ ? WM_HSCROLL : WM_VSCROLL;
    SendMessageW(GetParent(window), scroll,
                 MAKEWPARAM(SB_THUMBPOSITION, static_cast<DWORD_PTR>(position_)),
                 reinterpret_cast<LPARAM>(window));
}

void UpDown::Press(POINT point) {
    RECT client{};
    GetClientRect(window_, &client);
    const bool isHorizontal = Style() & UDS_HORZ;
    isUpHeld_ = isHorizontal ? point.x >= client.right / 2 : point.y < client.bottom / 2;
    isHeld_ = true;
    if (IsWindow(buddy_) && IsWindowEnabled(buddy_)) SetFocus(buddy_);
    SetCapture(window_);
    SetTimer(window_, kTimer, kFirstRepeatMs, nullptr);
    Step(isUpHeld_);
}

void UpDown::Release() {
    if (!std::exchange(isHeld_, false)) return;
    KillTimer(window_, kTimer);
    if (GetCapture() == window_) ReleaseCapture();
    const UINT scroll = Style() & UDS_HORZ ? WM_HSCROLL : WM_VSCROLL;
    SendMessageW(GetParent(window_), scroll,
                 MAKEWPARAM(SB_ENDSCROLL, static_cast<DWORD_PTR>(position_)),
                 reinterpret_cast<LPARAM>(window_));
}

LRESULT UpDown::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto low = static_cast<SHORT>(LOWORD(static_cast<DWORD_PTR>(lParam)));
    const auto high = static_cast<SHORT>(HIWORD(static_cast<DWORD_PTR>(lParam)));
    switch (message) {
        case WM_CREATE:
            if (Style() & UDS_AUTOBUDDY) SetBuddy(GetWindow(window_, GW_HWNDPREV));
            return 0;
        case WM_DESTROY:
            LeaveBuddy();
            return 0;
        case UDM_SETRANGE:
            SetRange(high, low);
            return 0;
        case UDM_GETRANGE:
            return MAKELONG(static_cast<DWORD_PTR>(upper_), static_cast<DWORD_PTR>(lower_));
        case UDM_SETRANGE32:
            SetRange(static_cast<int>(wParam), static_cast<int>(lParam));
            return 0;
        case UDM_GETRANGE32:
            if (wParam) *reinterpret_cast<int*>(wParam) = lower_;
            if (lParam) *reinterpret_cast<int*>(lParam) = upper_;
            return 0;
        case UDM_SETPOS:
            return SetPosition(low);
        case UDM_SETPOS32:
            return SetPosition(static_cast<int>(lParam));
        case UDM_GETPOS: {
            BOOL failed = FALSE;
            const auto position = static_cast<DWORD_PTR>(GetPosition(&failed));
            return MAKELONG(position, static_cast<DWORD_PTR>(failed));
        }
        case UDM_GETPOS32:
            return GetPosition(reinterpret_cast<BOOL*>(lParam));
        case UDM_SETBUDDY:
            return SetBuddy(reinterpret_cast<HWND>(wParam));
        case UDM_GETBUDDY:
            return reinterpret_cast<LRESULT>(buddy_);
        case WM_KEYDOWN:
            if (!(Style() & UDS_ARROWKEYS) || (wParam != VK_UP && wParam != VK_DOWN)) break;
            Step(wParam == VK_UP);
            return 0;
        case WM_LBUTTONDOWN:
            Press(PointOf(lParam));
            return 0;
        case WM_LBUTTONUP:
            Release();
            return 0;
        case WM_TIMER:
            SetTimer(window_, kTimer, kRepeatMs, nullptr);
            if (isHeld_) Step(isUpHeld_);
            return 0;
        case WM_CAPTURECHANGED:
            Release();
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

}  // namespace

void RegisterUpDown() noexcept {
    RegisterSystemClass(UPDOWN_CLASSW, CS_DBLCLKS, ControlProcedure<UpDown>, 0);
}

}  // namespace platform::user
