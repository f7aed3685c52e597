#include <algorithm>
#include <utility>
#include <vector>

#include "platform/gdi.h"
#include "platform/posix/case_fold.h"
#include "platform/posix/module_table.h"
#include "platform/posix/user/control.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

constexpr int kTextHeight = 13;  // at 96 dots an inch
constexpr int kFrame = 8;        // above and below the text of the closed list
constexpr int kNormalDpi = 96;
constexpr int kPageRows = 5;

/// A list of which one row shows until it is dropped down. The window's height covers the closed
/// part; the height that it was made with is that of the list dropped down.
class DropList {
public:
    explicit DropList(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    struct Row {
        WideString text;
        LPARAM data = 0;
    };

    LRESULT HandleList(UINT message, WPARAM wParam, LPARAM lParam);
    [[nodiscard]] bool HasRow(WPARAM row) const { return row < rows_.size(); }
    LRESULT Insert(int row, LPCWSTR text);
    LRESULT Add(LPCWSTR text);
    LRESULT Delete(WPARAM row);
    void Clear();
    LRESULT Select(WPARAM row);
    [[nodiscard]] LRESULT Find(WPARAM after, LPCWSTR text, bool isWhole) const;
    LRESULT GetRowText(WPARAM row, LPWSTR buffer) const;
    LRESULT GetText(WPARAM size, LPWSTR buffer) const;
    LRESULT GetData(WPARAM row) const;
    LRESULT SetData(WPARAM row, LPARAM data);
    LRESULT GetDroppedRect(RECT* rect) const;
    LRESULT Code(const MSG* message) const;
    void FitHeight();
    /// Opens or closes the list.
    void Drop(bool isDown, WORD how = CBN_SELENDCANCEL);
    /// Chooses a row as the user does.
    void Choose(int row);
    bool PressKey(WPARAM key);
    void TypeCharacter(WCHAR unit);
    void Repaint() { InvalidateRect(window_, nullptr, TRUE); }

    HWND window_;
    std::vector<Row> rows_;
    int chosen_ = -1;
    LONG droppedHeight_ = 0;
    bool isFitting_ = false;
    bool isDown_ = false;
};

bool HasStart(const WideString& text, WideView start) {
    return text.size() >= start.size() && IsSameName(WideView(text).substr(0, start.size()), start);
}

LRESULT DropList::Insert(int row, LPCWSTR text) {
    if (!text || row < -1 || row > static_cast<int>(rows_.size())) return CB_ERR;
    const std::size_t place = row < 0 ? rows_.size() : static_cast<std::size_t>(row);
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(place), {text, 0});
    if (chosen_ >= static_cast<int>(place)) ++chosen_;
    return static_cast<LRESULT>(place);
}

LRESULT DropList::Add(LPCWSTR text) {
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
    if (!text || !(style & CBS_SORT)) return Insert(-1, text);
    const WideString added = FoldCase(text);
    const auto place = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const Row& row) { return FoldCase(row.text) > added; });
    return Insert(static_cast<int>(place - rows_.begin()), text);
}

LRESULT DropList::Delete(WPARAM row) {
    if (!HasRow(row)) return CB_ERR;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row));
    const auto deleted = static_cast<int>(row);
    if (chosen_ == deleted) chosen_ = -1;
    if (chosen_ > deleted) --chosen_;
    Repaint();
    return static_cast<LRESULT>(rows_.size());
}

void DropList::Clear() {
    rows_.clear();
    chosen_ = -1;
    Repaint();
}

LRESULT DropList::Select(WPARAM row) {
    const bool isRow = HasRow(row);
    chosen_ = isRow ? static_cast<int>(row) : -1;
    Repaint();
    return isRow ? static_cast<LRESULT>(row) : CB_ERR;
}

LRESULT DropList::Find(WPARAM after, LPCWSTR text, bool isWhole) const {
    if (!text || rows_.empty()) return CB_ERR;
    const std::size_t count = rows_.size();
    const std::size_t first = HasRow(after) ? after + 1 : 0;
    for (std::size_t step = 0; step < count; ++step) {
        const std::size_t row = (first + step) % count;
        const WideString& known = rows_[row].text;
        if (isWhole ? IsSameName(known, text) : HasStart(known, text)) {
            return static_cast<LRESULT>(row);
        }
    }
    return CB_ERR;
}

LRESULT DropList::GetRowText(WPARAM row, LPWSTR buffer) const {
    if (!HasRow(row)) return CB_ERR;
    const WideString& text = rows_[row].text;
    if (buffer) buffer[text.copy(buffer, text.size())] = 0;
    return static_cast<LRESULT>(text.size());
}

LRESULT DropList::GetText(WPARAM size, LPWSTR buffer) const {
    if (size == 0 || !buffer) return 0;
    const WideView text = chosen_ < 0 ? WideView() : rows_[static_cast<std::size_t>(chosen_)].text;
    const std::size_t length = text.copy(buffer, size - 1);
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT DropList::GetData(WPARAM row) const { return HasRow(row) ? rows_[row].data : CB_ERR; }

LRESULT DropList::SetData(WPARAM row, LPARAM data) {
    if (!HasRow(row)) return CB_ERR;
    rows_[row].data = data;
    return CB_OKAY;
}

LRESULT DropList::GetDroppedRect(RECT* rect) const {
    if (!rect || !GetWindowRect(window_, rect)) return FALSE;
    rect->bottom = std::max(rect->bottom, rect->top + droppedHeight_);
    return TRUE;
}

/// While the list is down, return and escape close it and not the dialog.
LRESULT DropList::Code(const MSG* message) const {
    LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
    const bool isKey = message && message->message == WM_KEYDOWN;
    if (isDown_ && isKey && (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE)) {
        code |= DLGC_WANTMESSAGE;
    }
    return code;
}

void DropList::FitHeight() {
    if (isFitting_) return;
    RECT rect{};
    GetWindowRect(window_, &rect);
    const int dpi = GetDeviceCaps(WindowDc(nullptr).Get(), LOGPIXELSY);
    const LONG closed = kTextHeight * dpi / kNormalDpi + kFrame;
    if (HeightOf(rect) == closed) return;
    droppedHeight_ = HeightOf(rect);
    isFitting_ = true;
    SetWindowPos(window_, nullptr, 0, 0, WidthOf(rect), closed,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    isFitting_ = false;
}

void DropList::Drop(bool isDown, WORD how) {
    if (isDown_ == isDown) return;
    if (isDown) {
        NotifyCommand(window_, CBN_DROPDOWN);
        isDown_ = true;
    } else {
        isDown_ = false;
        NotifyCommand(window_, how);
        NotifyCommand(window_, CBN_CLOSEUP);
    }
    Repaint();
}

void DropList::Choose(int row) {
    const int last = static_cast<int>(rows_.size()) - 1;
    const int wanted = std::clamp(row, std::min(0, last), last);
    if (wanted < 0 || wanted == chosen_) return;
    chosen_ = wanted;
    Repaint();
    if (!isDown_) NotifyCommand(window_, CBN_SELENDOK);
    NotifyCommand(window_, CBN_SELCHANGE);
}

bool DropList::PressKey(WPARAM key) {
    switch (key) {
        case VK_UP:
        case VK_LEFT:
            Choose(chosen_ < 0 ? 0 : chosen_ - 1);
            return true;
        case VK_DOWN:
        case VK_RIGHT:
            Choose(chosen_ + 1);
            return true;
        case VK_HOME:
            Choose(0);
            return true;
        case VK_END:
            Choose(static_cast<int>(rows_.size()));
            return true;
        case VK_PRIOR:
            Choose(std::max(0, chosen_ - kPageRows));
            return true;
        case VK_NEXT:
            Choose(chosen_ + kPageRows);
            return true;
        case VK_F4:
            Drop(!isDown_, CBN_SELENDOK);
            return true;
        case VK_RETURN:
            Drop(false, CBN_SELENDOK);
            return true;
        case VK_ESCAPE:
            Drop(false, CBN_SELENDCANCEL);
            return true;
        default:
            return false;
    }
}

/// A character leads to the next row that begins with it.
void DropList::TypeCharacter(WCHAR unit) {
    if (unit < VK_SPACE) return;
    const WCHAR text[] = {unit, 0};
    const LRESULT row = Find(static_cast<WPARAM>(static_cast<INT_PTR>(chosen_)), text, false);
    if (row >= 0) Choose(static_cast<int>(row));
}

LRESULT DropList::HandleList(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto text = reinterpret_cast<LPCWSTR>(lParam);
    switch (message) {
        case CB_ADDSTRING:
            return Add(text);
        case CB_INSERTSTRING:
            return Insert(static_cast<int>(wParam), text);
        case CB_DELETESTRING:
            return Delete(wParam);
        case CB_RESETCONTENT:
            Clear();
            return CB_OKAY;
        case CB_GETCOUNT:
            return static_cast<LRESULT>(rows_.size());
        case CB_GETCURSEL:
            return chosen_;
        case CB_SETCURSEL:
            return Select(wParam);
        case CB_FINDSTRING:
            return Find(wParam, text, false);
        case CB_FINDSTRINGEXACT:
            return Find(wParam, text, true);
        case CB_SELECTSTRING: {
            const LRESULT row = Find(wParam, text, false);
            return row < 0 ? CB_ERR : Select(static_cast<WPARAM>(row));
        }
        case CB_GETLBTEXT:
            return GetRowText(wParam, reinterpret_cast<LPWSTR>(lParam));
        case CB_GETLBTEXTLEN:
            return GetRowText(wParam, nullptr);
        case CB_GETITEMDATA:
            return GetData(wParam);
        case CB_SETITEMDATA:
            return SetData(wParam, lParam);
        case CB_SHOWDROPDOWN:
            Drop(wParam != 0);
            return TRUE;
        case CB_GETDROPPEDSTATE:
            return isDown_;
        case CB_GETDROPPEDCONTROLRECT:
            return GetDroppedRect(reinterpret_cast<RECT*>(lParam));
        default:
            return DefWindowProcW(window_, message, wParam, lParam);
    }
}

LRESULT DropList::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return Code(reinterpret_cast<const MSG*>(lParam));
        case WM_SIZE:
            FitHeight();
            return 0;
        case WM_SETTEXT:
            return CB_ERR;
        case WM_GETTEXT:
            return GetText(wParam, reinterpret_cast<LPWSTR>(lParam));
        case WM_GETTEXTLENGTH:
            return chosen_ < 0 ? 0 : GetRowText(static_cast<WPARAM>(chosen_), nullptr);
        case WM_KEYDOWN:
            return PressKey(wParam) ? 0 : DefWindowProcW(window_, message, wParam, lParam);
        case WM_CHAR:
            TypeCharacter(static_cast<WCHAR>(wParam));
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(window_);
            Drop(!isDown_);
            return 0;
        case WM_SETFOCUS:
            Repaint();
            NotifyCommand(window_, CBN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            Drop(false);
            Repaint();
            if (IsWindow(window_)) NotifyCommand(window_, CBN_KILLFOCUS);
            return 0;
        case WM_ENABLE:
            Repaint();
            return 0;
        default:
            return HandleList(message, wParam, lParam);
    }
}

}  // namespace

void RegisterComboBox() noexcept {
    RegisterSystemClass(WC_COMBOBOXW, CS_DBLCLKS, ControlProcedure<DropList>, 0);
}

}  // namespace platform::user
