#pragma once

#include "platform/base.h"

/// What the operations on locations ask of single characters.
namespace AUX {

inline constexpr WCHAR kNoBreakSpace = 0x00A0;

[[nodiscard]] constexpr bool IsPathSeparator(WCHAR character) noexcept {
    return character == TEXT('\\') || character == TEXT('/');
}

/// A to Z in either case.
[[nodiscard]] constexpr bool IsPlainLetter(WCHAR character) noexcept {
    return (character >= TEXT('a') && character <= TEXT('z')) ||
           (character >= TEXT('A') && character <= TEXT('Z'));
}

}  // namespace AUX
