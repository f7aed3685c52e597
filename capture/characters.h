#pragma once

#include "platform/base.h"

/// The classes of characters that markup and style text are read by.

constexpr WCHAR ToLowerAscii(WCHAR unit) noexcept {
    return unit >= TEXT('A') && unit <= TEXT('Z') ? static_cast<WCHAR>(unit | 0x20) : unit;
}

constexpr bool IsSameIgnoringCase(WCHAR a, WCHAR b) noexcept {
    return a == b || ToLowerAscii(a) == ToLowerAscii(b);
}

constexpr bool IsQuote(WCHAR unit) noexcept { return unit == TEXT('"') || unit == TEXT('\''); }

/// The blanks of the C library on Windows: no line ends.
constexpr bool IsBlank(WCHAR unit) noexcept {
    if (unit < 0xA0) return unit == TEXT(' ') || unit == TEXT('\t');
    return unit == 0xA0 || unit == 0x3000 || unit == 0xFEFF;
}

/// What stands in encoded text as it is.
constexpr bool IsPlainAscii(WCHAR unit) noexcept {
    return unit >= 32 && unit < 128 && !IsQuote(unit) && unit != TEXT('&') && unit != TEXT('<') &&
           unit != TEXT('>');
}

/// The white space of the C library on Windows.
constexpr bool IsSpace(WCHAR unit) noexcept {
    if (unit < 0xA0) return unit == TEXT(' ') || (unit >= 9 && unit <= 13);
    return unit == 0xA0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}
