#include "platform/locale.h"

#include <cstdint>
#include <cstring>
#include <langinfo.h>
#include <locale.h>

namespace {

thread_local LCID threadLocale = 0x0400;

// The height in millimetres tells the sheets apart.
DWORD PaperOfUser() noexcept {
    constexpr DWORD kLetter = 1, kLegal = 5, kA3 = 8, kA4 = 9;
    const locale_t user = newlocale(LC_PAPER_MASK, "", nullptr);
    if (!user) return kA4;
    // This item is a number in the place of the pointer.
    const auto height =
        static_cast<int>(reinterpret_cast<std::intptr_t>(nl_langinfo_l(_NL_PAPER_HEIGHT, user)));
    freelocale(user);
    return height == 279 ? kLetter : height == 356 ? kLegal : height == 420 ? kA3 : kA4;
}

}  // namespace

int GetLocaleInfoW(LCID, LCTYPE question, LPWSTR answer, int length) noexcept {
    constexpr int kUnits = sizeof(DWORD) / sizeof(WCHAR);
    if (question != (LOCALE_IPAPERSIZE | LOCALE_RETURN_NUMBER)) {
        SetLastError(static_cast<DWORD>(ERROR_INVALID_FLAGS));
        return 0;
    }
    if (length == 0) return kUnits;
    if (length < kUnits) {
        SetLastError(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
        return 0;
    }
    const DWORD paper = PaperOfUser();
    std::memcpy(answer, &paper, sizeof paper);
    return kUnits;
}

LCID GetThreadLocale() noexcept { return threadLocale; }

BOOL SetThreadLocale(LCID locale) noexcept {
    if (locale == 0) {
        SetLastError(static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        return FALSE;
    }
    threadLocale = locale;
    return TRUE;
}
