#pragma once

#include <memory>

#include "platform/posix/user/dialog_calls.h"

namespace platform::user {

/// What the dialog manager keeps of a dialog. Used by its window's thread only.
struct Dialog {
    SIZE units = {};               // the size of 4 x 8 dialog units, in pixels
    UINT defaultId = 0;            // of the button that Return presses; 0: none
    HWND lastFocus = nullptr;      // while the dialog is not active
    HWND disabledOwner = nullptr;  // while a modal dialog runs
    INT_PTR result = 0;
    bool hasEnded = false;
};

/// Null if the window is no dialog.
std::shared_ptr<Dialog> DialogOf(HWND window) noexcept;

/// Makes a dialog. \param owner  Disabled already, if the dialog is modal.
HWND MakeDialog(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter,
                HWND disabledOwner) noexcept;

/// Gives a control the focus as the keyboard does: the text of an edit is selected, and a push
/// button becomes the default one.
void FocusControl(HWND dialog, HWND control) noexcept;
/// Makes the look of the push buttons follow the focus.
void MoveDefaultButton(HWND dialog, HWND focus) noexcept;

LRESULT DialogCode(HWND control) noexcept;

}  // namespace platform::user
