#pragma once

#include <memory>
#include <vector>

#include "platform/posix/user/toolbar_calls.h"
#include "platform/posix/user/window.h"

namespace platform::user {

/// What a toolbar control keeps. Used by its window's thread only.
struct Toolbar {
    struct Button {
        TBBUTTON info;
        WORD width = 0;  // set by TB_SETBUTTONINFOW; 0: by the rules
    };

    HWND window = nullptr;
    std::vector<Button> buttons;
    DWORD exStyle = 0;
    SIZE bitmap = {16, 15};
    SIZE button = {24, 22};
    SIZE padding = {7, 6};
    int hot = -1;      // the button below the mouse
    int pressed = -1;  // the one that is held down

    [[nodiscard]] bool HasButton(WPARAM index) const { return index < buttons.size(); }
    /// -1 if no button has this command.
    [[nodiscard]] int IndexOf(int command) const;
    [[nodiscard]] RECT RectOf(std::size_t index) const;
    /// -1 if there is no button.
    [[nodiscard]] int ButtonAt(POINT point) const;
    /// The part of a button whose press opens its menu; empty if it has none.
    [[nodiscard]] RECT ArrowOf(std::size_t index) const;
    [[nodiscard]] UINT StateOf(std::size_t index) const;
};

void PaintToolbar(Toolbar& toolbar) noexcept;
/// What lies behind a transparent toolbar is its parent's to erase.
LRESULT EraseToolbar(const Toolbar& toolbar, HDC dc) noexcept;
/// Sends the parent a notification.
LRESULT NotifyParent(const Toolbar& toolbar, UINT code, NMHDR& header) noexcept;

}  // namespace platform::user
