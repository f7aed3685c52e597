#pragma once

#include <cstddef>

#include "foundation/wstring_view.h"

namespace AUX::CAB {

/// Stands in stripped text for the quote of an escape, so that every quote there ends or begins a
/// string.
inline constexpr WCHAR kHiddenQuote = 1;

[[nodiscard]] bool HasBackslash(WStringView text) noexcept;

/// Decodes the escapes of a stripped text. `out` has room for as many units as the text has; the
/// result is never longer. An escape that the end cuts off gives its units as they stand, without
/// the backslash if anything follows it. \return the units written.
[[nodiscard]] std::size_t DecodeEscapes(WStringView text, WCHAR* out) noexcept;

/// Copies a text.
void CopyUnits(WStringView text, WCHAR* out) noexcept;

/// Copies a stripped text with its quotes restored; `out` has room for it. \return the end.
[[nodiscard]] WCHAR* CopyWithQuotes(WStringView text, WCHAR* out) noexcept;

/// The most units that one unit becomes.
inline constexpr std::size_t kMaxEscape = 6;

/// Encodes a text: all but printable ASCII, quotes, backslashes and slashes become escapes. `out`
/// has room for kMaxEscape times its units. \return the end of what was written.
[[nodiscard]] WCHAR* EncodeEscapes(WStringView text, WCHAR* out) noexcept;

}  // namespace AUX::CAB
