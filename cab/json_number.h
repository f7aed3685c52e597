#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/wstring_view.h"

namespace AUX::CAB {

/// Whether a piece is taken for a number: RFC 8259's numbers, and signs, octal and hexadecimal
/// forms, numbers that begin or end with a point.
[[nodiscard]] bool IsJsonNumber(WStringView piece) noexcept;

/// Reads one that is short and has no exponent, as most are. \return false, with `value` as it was,
/// for any other and what is no number.
[[nodiscard]] bool ReadShortNumber(WStringView piece, double& value) noexcept;

/// The number that a text begins with, in decimal or as `0x` and hexadecimal digits; 0 if it begins
/// with none, or has a unit above 0xFF. A decimal one is rounded correctly; what is too large is an
/// infinity. The locale is not asked.
[[nodiscard]] double ReadJsonNumber(WStringView text) noexcept;

/// The most units that FormatJsonNumber writes.
inline constexpr std::size_t kMaxNumberUnits = 63;

/// The same for a text that IsJsonNumber takes.
[[nodiscard]] double ReadPlainNumber(WStringView text) noexcept;

/// Writes a number with six decimals at most, without zeros at the end; one that lies less than
/// 1e-05 above (or of a negative one, beside) an integer as that integer. One that would take more
/// units than there may be is written with an exponent, so that it reads back the same; one that
/// is not finite as "null", since JSON has no word for it. \return the units.
[[nodiscard]] std::size_t FormatJsonNumber(double value, WCHAR* out) noexcept;
[[nodiscard]] std::size_t FormatJsonInteger(std::int64_t value, WCHAR* out) noexcept;

}  // namespace AUX::CAB
