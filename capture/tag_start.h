#pragma once

#include "capture/search_kernels.h"

/// What the searches ask of the text around a sign. Internal to them: each form compiles its own
/// copy, for its own processor.
namespace {

// A letter that is one of two cases of `small`.
constexpr bool IsLetter(WCHAR unit, char small) noexcept { return (unit | 0x20) == small; }

bool HasOther(const WCHAR* place, const SoughtSign& sought) noexcept {
    return IsLetter(place[sought.distance], sought.other);
}

bool IsComment(const WCHAR* tag, const WCHAR* end) noexcept {
    return end - tag >= 3 && tag[0] == '!' && tag[1] == '-' && tag[2] == '-';
}

// Tells whether a tag's first letters promise work.
bool IsKnownTag(const WCHAR* tag, const WCHAR* end) noexcept {
    if (end - tag < 2) return false;
    switch (tag[0] | 0x20) {
        case 'a':
            return tag[1] == ' ';
        case 'i':
            return IsLetter(tag[1], 'm');
        case 'l':
            return end - tag >= 4 && IsLetter(tag[1], 'i') && IsLetter(tag[2], 'n') &&
                   IsLetter(tag[3], 'k');
        case 's':
            return IsLetter(tag[1], 'c');
        default:
            return false;
    }
}

}  // namespace
