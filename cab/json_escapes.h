#pragma once

#include <cstddef>
#include <cstring>

#include "foundation/wstring_view.h"

namespace AUX::CAB {

[[nodiscard]] bool HasBackslash(WStringView text) noexcept;

/// Decodes the escapes of a stripped text. `out` has room for as many units as the text has; the
/// result is never longer. An escape that the end cuts off gives its units as they stand, without
/// the backslash if anything follows it. \return the units written.
[[nodiscard]] std::size_t DecodeEscapes(WStringView text, WCHAR* out) noexcept;

/// Copies a text of more than kFewUnits. \return the end of what was written.
WCHAR* CopyManyUnits(WStringView text, WCHAR* out) noexcept;
inline constexpr std::size_t kFewUnits = 16;

/// Copies a text; most are short, and a call would take longer. \return the end.
inline WCHAR* CopyUnits(WStringView text, WCHAR* out) noexcept {
    // Two moves of a fixed size, which may overlap, take all lengths up to double that size.
    const auto copy = [&]<std::size_t kUnits>() noexcept {
        WCHAR ends[2][kUnits];
        std::memcpy(ends[0], text.data(), sizeof ends[0]);
        std::memcpy(ends[1], text.data() + text.size() - kUnits, sizeof ends[1]);
        std::memcpy(out, ends[0], sizeof ends[0]);
        std::memcpy(out + text.size() - kUnits, ends[1], sizeof ends[1]);
    };
    if (text.size() > kFewUnits) return CopyManyUnits(text, out);
    if (text.size() >= 8) {
        copy.template operator()<8>();
    } else if (text.size() >= 4) {
        copy.template operator()<4>();
    } else {
        for (std::size_t i = 0; i < text.size(); ++i) out[i] = text[i];
    }
    return out + text.size();
}

/// Copies a stripped text with its quotes restored; `out` has room for it. \return the end.
[[nodiscard]] WCHAR* CopyWithQuotes(WStringView text, WCHAR* out) noexcept;

/// The room that `units` may take encoded: six each, and some that are written too far.
[[nodiscard]] constexpr std::size_t EncodedRoom(std::size_t units) noexcept {
    return units * 6 + 8;
}

/// Encodes a text: all but printable ASCII, quotes, backslashes and slashes become escapes. `out`
/// has the room that EncodedRoom tells. \return the end of what was written.
[[nodiscard]] WCHAR* EncodeEscapes(WStringView text, WCHAR* out) noexcept;

}  // namespace AUX::CAB
