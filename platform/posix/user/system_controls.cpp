#include "platform/posix/user/system_controls.h"

#include "platform/gdi.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/window.h"

namespace platform::user {

void RegisterUserClasses() noexcept {
    static bool isDone = false;  // guarded by the lock
    if (isDone) return;
    isDone = true;
    RegisterSystemClass(WC_DIALOG, CS_DBLCLKS, DefDlgProcW, DLGWINDOWEXTRA,
                        GetSysColorBrush(COLOR_BTNFACE));
    RegisterButton();
    RegisterEdit();
    RegisterStatic();
    RegisterComboBox();
    // The system makes these known with the module that has them, before any program asks.
    RegisterUpDown();
    RegisterTabControl();
}

}  // namespace platform::user
