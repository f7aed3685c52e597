#include "platform/letters.h"

#include "platform/posix/case_fold.h"

int lstrcmpiW(LPCWSTR a, LPCWSTR b) noexcept {
    if (!a || !b) return (a != nullptr) - (b != nullptr);
    for (;; ++a, ++b) {
        const WCHAR first = platform::FoldUnit(*a);
        const WCHAR second = platform::FoldUnit(*b);
        if (first != second) return first < second ? -1 : 1;
        if (first == 0) return 0;
    }
}

DWORD CharLowerBuffW(LPWSTR text, DWORD length) noexcept {
    for (DWORD i = 0; i < length; ++i) text[i] = platform::SmallUnit(text[i]);
    return length;
}
