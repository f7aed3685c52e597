#include "platform/locale.h"

namespace {

thread_local LCID threadLocale = 0x0400;

}  // namespace

LCID GetThreadLocale() noexcept { return threadLocale; }

BOOL SetThreadLocale(LCID locale) noexcept {
    if (locale == 0) {
        SetLastError(static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        return FALSE;
    }
    threadLocale = locale;
    return TRUE;
}
