#include <algorithm>
#include <utility>
#include <vector>

#include "platform/posix/user/control.h"
#include "platform/posix/user/control_calls.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/system_controls.h"
#include "platform/posix/user/tab_calls.h"
#include "platform/posix/user/window.h"
#include "platform/text.h"

namespace platform::user {
namespace {

constexpr LONG kTabHeight = 19;
constexpr LONG kTabPadding = 12;  // beside the text
constexpr LONG kUnitWidth = 6;    // of a character
constexpr LONG kEdge = 2;         // around the tabs
constexpr LONG kBorder = 4;       // around the page

class TabControl {
public:
    explicit TabControl(HWND window) : window_(window) {}

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    struct Tab {
        WideString text;
        LPARAM data = 0;
    };

    LRESULT HandleTabs(UINT message, WPARAM wParam, LPARAM lParam);
    [[nodiscard]] bool HasTab(WPARAM tab) const { return tab < tabs_.size(); }
    [[nodiscard]] RECT RectOf(std::size_t tab) const;
    [[nodiscard]] int TabAt(POINT point) const;
    LRESULT Insert(WPARAM place, const TCITEMW* item);
    LRESULT Delete(WPARAM tab);
    LRESULT GetItem(WPARAM tab, TCITEMW* item) const;
    LRESULT SetItem(WPARAM tab, const TCITEMW* item);
    LRESULT Select(WPARAM tab);
    /// Selects a tab as the user does: the parent may refuse.
    void Choose(int tab);
    LRESULT GetRect(WPARAM tab, RECT* rect) const;
    static void Write(Tab& tab, const TCITEMW& item);
    void Repaint() { InvalidateRect(window_, nullptr, TRUE); }

    HWND window_;
    std::vector<Tab> tabs_;
    int selected_ = -1;
};

RECT TabControl::RectOf(std::size_t tab) const {
    LONG left = kEdge;
    for (std::size_t before = 0;; ++before) {
        const auto units = static_cast<LONG>(tabs_[before].text.size());
        const LONG width = units * kUnitWidth + kTabPadding;
        if (before == tab) return {left, kEdge, left + width, kEdge + kTabHeight};
        left += width;
    }
}

int TabControl::TabAt(POINT point) const {
    for (std::size_t tab = 0; tab < tabs_.size(); ++tab) {
        const RECT rect = RectOf(tab);
        const bool isIn = point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
                          point.y < rect.bottom;
        if (isIn) return static_cast<int>(tab);
    }
    return -1;
}

void TabControl::Write(Tab& tab, const TCITEMW& item) {
    if (item.mask & TCIF_TEXT) tab.text = item.pszText ? item.pszText : TEXT("");
    if (item.mask & TCIF_PARAM) tab.data = item.lParam;
}

LRESULT TabControl::Insert(WPARAM place, const TCITEMW* item) {
    if (!item) return -1;
    const std::size_t at = std::min<std::size_t>(place, tabs_.size());
    Tab added;
    Write(added, *item);
    tabs_.insert(tabs_.begin() + static_cast<std::ptrdiff_t>(at), std::move(added));
    const auto number = static_cast<int>(at);
    if (selected_ < 0) {
        selected_ = 0;  // the first one is selected
    } else if (selected_ >= number) {
        ++selected_;
    }
    Repaint();
    return number;
}

LRESULT TabControl::Delete(WPARAM tab) {
    if (!HasTab(tab)) return FALSE;
    tabs_.erase(tabs_.begin() + static_cast<std::ptrdiff_t>(tab));
    const auto deleted = static_cast<int>(tab);
    if (selected_ == deleted) selected_ = -1;
    if (selected_ > deleted) --selected_;
    Repaint();
    return TRUE;
}

LRESULT TabControl::GetItem(WPARAM number, TCITEMW* item) const {
    if (!item || !HasTab(number)) return FALSE;
    const Tab& tab = tabs_[number];
    if (item->mask & TCIF_PARAM) item->lParam = tab.data;
    if (item->mask & TCIF_TEXT && item->pszText && item->cchTextMax > 0) {
        const auto room = static_cast<std::size_t>(item->cchTextMax) - 1;
        item->pszText[tab.text.copy(item->pszText, room)] = 0;
    }
    return TRUE;
}

LRESULT TabControl::SetItem(WPARAM tab, const TCITEMW* item) {
    if (!item || !HasTab(tab)) return FALSE;
    Write(tabs_[tab], *item);
    Repaint();
    return TRUE;
}

LRESULT TabControl::Select(WPARAM tab) {
    if (!HasTab(tab)) return -1;
    const int old = std::exchange(selected_, static_cast<int>(tab));
    Repaint();
    return old;
}

void TabControl::Choose(int tab) {
    if (tab < 0 || tab >= static_cast<int>(tabs_.size()) || tab == selected_) return;
    NMHDR header{};
    if (Notify(window_, TCN_SELCHANGING, header) != 0 || !IsWindow(window_)) return;
    (void)Select(static_cast<WPARAM>(tab));
    Notify(window_, TCN_SELCHANGE, header);
}

LRESULT TabControl::GetRect(WPARAM tab, RECT* rect) const {
    if (!rect || !HasTab(tab)) return FALSE;
    *rect = RectOf(tab);
    return TRUE;
}

/// \param outwards  From the page to the window, or from the window to the page.
LRESULT AdjustRect(bool outwards, RECT* rect) {
    if (!rect) return -1;
    const LONG sign = outwards ? -1 : 1;
    rect->left += sign * kBorder;
    rect->top += sign * (kTabHeight + kEdge + kBorder);
    rect->right -= sign * kBorder;
    rect->bottom -= sign * kBorder;
    return 0;
}

LRESULT TabControl::HandleTabs(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case TCM_GETITEMCOUNT:
            return static_cast<LRESULT>(tabs_.size());
        case TCM_INSERTITEMW:
            return Insert(wParam, reinterpret_cast<const TCITEMW*>(lParam));
        case TCM_DELETEITEM:
            return Delete(wParam);
        case TCM_DELETEALLITEMS:
            tabs_.clear();
            selected_ = -1;
            Repaint();
            return TRUE;
        case TCM_GETITEMW:
            return GetItem(wParam, reinterpret_cast<TCITEMW*>(lParam));
        case TCM_SETITEMW:
            return SetItem(wParam, reinterpret_cast<const TCITEMW*>(lParam));
        case TCM_GETITEMRECT:
            return GetRect(wParam, reinterpret_cast<RECT*>(lParam));
        case TCM_GETCURSEL:
        case TCM_GETCURFOCUS:
            return selected_;
        case TCM_SETCURSEL:
            return Select(wParam);
        case TCM_SETCURFOCUS:
            Choose(static_cast<int>(wParam));
            return 0;
        case TCM_ADJUSTRECT:
            return AdjustRect(wParam != 0, reinterpret_cast<RECT*>(lParam));
        default:
            return DefWindowProcW(window_, message, wParam, lParam);
    }
}

LRESULT TabControl::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_KEYDOWN:
            if (wParam == VK_LEFT) Choose(selected_ - 1);
            if (wParam == VK_RIGHT) Choose(selected_ + 1);
            return 0;
        case WM_LBUTTONDOWN: {
            const int tab = TabAt(PointOf(lParam));
            if (tab >= 0 && tab == selected_) SetFocus(window_);
            Choose(tab);
            return 0;
        }
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            Repaint();
            return 0;
        default:
            return HandleTabs(message, wParam, lParam);
    }
}

}  // namespace

void RegisterTabControl() noexcept {
    RegisterSystemClass(WC_TABCONTROLW, CS_DBLCLKS, ControlProcedure<TabControl>, 0);
}

}  // namespace platform::user
