#include <algorithm>
#include <utility>

#include "platform/posix/user/control.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

constexpr std::size_t kFirstLimit = 30000;
constexpr std::size_t kHighestLimit = 0x7FFFFFFE;
constexpr WCHAR kPasswordCharacter = 0x25CF;

/// A text of one line with a selection.
class Edit {
public:
    explicit Edit(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    [[nodiscard]] DWORD Style() const {
        return static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
    }
    [[nodiscard]] std::size_t First() const { return std::min(anchor_, caret_); }
    [[nodiscard]] std::size_t Last() const { return std::max(anchor_, caret_); }
    LRESULT Create(const CREATESTRUCTW& wanted);
    LRESULT SetText(LPCWSTR text);
    LRESULT GetText(WPARAM size, LPWSTR buffer) const;
    LRESULT GetSelection(DWORD* first, DWORD* last) const;
    void Select(int first, int last);
    /// Puts a text in place of the selection, as much of it as fits.
    void Replace(WideView text);
    void Erase(std::size_t from, std::size_t to);
    void Type(WCHAR unit);
    void PressKey(WPARAM key);
    void MoveTo(std::size_t place);
    LRESULT SetReadOnly(bool isReadOnly);
    void SayChanged();

    HWND window_;
    WideString text_;
    std::size_t anchor_ = 0;  // where the selection began
    std::size_t caret_ = 0;   // where it ends
    std::size_t limit_ = kFirstLimit;
    WCHAR mask_ = 0;
    bool isModified_ = false;
};

LRESULT Edit::Create(const CREATESTRUCTW& wanted) {
    if (static_cast<DWORD>(wanted.style) & ES_PASSWORD) mask_ = kPasswordCharacter;
    if (wanted.lpszName) text_ = wanted.lpszName;
    return TRUE;
}

void Edit::SayChanged() {
    NotifyCommand(window_, EN_UPDATE);
    InvalidateRect(window_, nullptr, TRUE);
    if (IsWindow(window_)) NotifyCommand(window_, EN_CHANGE);
}

LRESULT Edit::SetText(LPCWSTR text) {
    text_ = text ? text : TEXT("");
    anchor_ = caret_ = 0;
    isModified_ = false;
    SayChanged();
    return TRUE;
}

LRESULT Edit::GetText(WPARAM size, LPWSTR buffer) const {
    if (size == 0 || !buffer) return 0;
    const std::size_t length = text_.copy(buffer, size - 1);
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT Edit::GetSelection(DWORD* first, DWORD* last) const {
    if (first) *first = static_cast<DWORD>(First());
    if (last) *last = static_cast<DWORD>(Last());
    const bool fits = Last() <= 0xFFFF;
    return fits ? static_cast<LRESULT>(MAKEWPARAM(First(), Last())) : -1;
}

void Edit::Select(int first, int last) {
    if (first < 0) {
        // Only takes the selection away.
        anchor_ = caret_;
    } else {
        const auto clamp = [&](int place) {
            return place < 0 ? text_.size()
                             : std::min(static_cast<std::size_t>(place), text_.size());
        };
        anchor_ = clamp(first);
        caret_ = clamp(last);
        // Given the wrong way round, the end comes first.
        if (anchor_ > caret_) std::swap(anchor_, caret_);
    }
    InvalidateRect(window_, nullptr, FALSE);
}

void Edit::Replace(WideView text) {
    const std::size_t rest = text_.size() - (Last() - First());
    const std::size_t room = limit_ > rest ? limit_ - rest : 0;
    if (text.size() > room) {
        text = text.substr(0, room);
        NotifyCommand(window_, EN_MAXTEXT);
        if (!IsWindow(window_) || (text.empty() && First() == Last())) return;
    }
    const std::size_t first = std::min(First(), text_.size());
    text_.replace(first, Last() - First(), text);
    anchor_ = caret_ = first + text.size();
    isModified_ = true;
    SayChanged();
}

void Edit::Erase(std::size_t from, std::size_t to) {
    if (from == to) return;
    text_.erase(from, to - from);
    anchor_ = caret_ = from;
    isModified_ = true;
    SayChanged();
}

void Edit::Type(WCHAR unit) {
    if (Style() & ES_READONLY) return;
    if (unit == VK_BACK) {
        const std::size_t first = First();
        Erase(first == Last() && first > 0 ? first - 1 : first, Last());
        return;
    }
    constexpr WCHAR kDelete = 0x7F;
    if (unit < VK_SPACE || unit == kDelete) return;
    if (Style() & ES_NUMBER && (unit < '0' || unit > '9')) return;
    Replace(WideView(&unit, 1));
}

void Edit::MoveTo(std::size_t place) {
    caret_ = place;
    if (GetKeyState(VK_SHIFT) >= 0) anchor_ = place;
    InvalidateRect(window_, nullptr, FALSE);
}

void Edit::PressKey(WPARAM key) {
    const bool extends = GetKeyState(VK_SHIFT) < 0;
    const bool hasSelection = anchor_ != caret_;
    switch (key) {
        case VK_LEFT:
        case VK_UP:
            MoveTo(hasSelection && !extends ? First() : caret_ - (caret_ > 0));
            return;
        case VK_RIGHT:
        case VK_DOWN:
            MoveTo(hasSelection && !extends ? Last() : caret_ + (caret_ < text_.size()));
            return;
        case VK_HOME:
            MoveTo(0);
            return;
        case VK_END:
            MoveTo(text_.size());
            return;
        case VK_DELETE:
            if (Style() & ES_READONLY) return;
            Erase(First(), hasSelection || Last() == text_.size() ? Last() : Last() + 1);
            return;
        default:
            return;
    }
}

LRESULT Edit::SetReadOnly(bool isReadOnly) {
    const DWORD style = isReadOnly ? Style() | ES_READONLY : Style() & ~ES_READONLY;
    SetWindowLongPtrW(window_, GWL_STYLE, static_cast<LONG_PTR>(style));
    InvalidateRect(window_, nullptr, TRUE);
    return TRUE;
}

LRESULT Edit::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE:
            return Create(*reinterpret_cast<const CREATESTRUCTW*>(lParam));
        case WM_GETDLGCODE:
            return DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
        case WM_SETTEXT:
            return SetText(reinterpret_cast<LPCWSTR>(lParam));
        case WM_GETTEXT:
            return GetText(wParam, reinterpret_cast<LPWSTR>(lParam));
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(text_.size());
        case EM_GETSEL:
            return GetSelection(reinterpret_cast<DWORD*>(wParam), reinterpret_cast<DWORD*>(lParam));
        case EM_SETSEL:
            Select(static_cast<int>(wParam), static_cast<int>(lParam));
            return 1;
        case EM_REPLACESEL:
            if (lParam) Replace(reinterpret_cast<LPCWSTR>(lParam));
            return 0;
        case EM_GETMODIFY:
            return isModified_;
        case EM_SETMODIFY:
            isModified_ = wParam != 0;
            return 0;
        case EM_LIMITTEXT:
            limit_ = wParam == 0 ? kHighestLimit : std::min<std::size_t>(wParam, kHighestLimit);
            return 0;
        case EM_GETLIMITTEXT:
            return static_cast<LRESULT>(limit_);
        case EM_SETREADONLY:
            return SetReadOnly(wParam != 0);
        case EM_SETPASSWORDCHAR:
            mask_ = static_cast<WCHAR>(wParam);
            InvalidateRect(window_, nullptr, TRUE);
            return 1;
        case EM_GETPASSWORDCHAR:
            return mask_;
        case WM_CHAR:
            Type(static_cast<WCHAR>(wParam));
            return 0;
        case WM_KEYDOWN:
            PressKey(wParam);
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(window_);
            return 0;
        case WM_SETFOCUS:
            NotifyCommand(window_, EN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            NotifyCommand(window_, EN_KILLFOCUS);
            return 0;
        case WM_ENABLE:
            InvalidateRect(window_, nullptr, TRUE);
            return 0;
        default:
            return DefWindowProcW(window_, message, wParam, lParam);
    }
}

}  // namespace

void RegisterEdit() noexcept {
    RegisterSystemClass(WC_EDITW, CS_DBLCLKS, ControlProcedure<Edit>, 0);
}

}  // namespace platform::user
