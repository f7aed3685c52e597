#pragma once

/// Decimal numbers of automation: their values and their texts.

#include <string>
#include <string_view>

#include "platform/posix/variant_types.h"

namespace platform {

/// The nearest number.
[[nodiscard]] decltype(0.0L) ToNumber(const DECIMAL& decimal) noexcept;

/// All of its digits, without zeros behind the last one of a fraction.
[[nodiscard]] std::string ToText(const DECIMAL& decimal);

/// Makes a decimal number of digits with a sign, a fraction and an exponent; blanks may be round
/// them. Digits of a fraction that there is no room for are cut off. \return false for a number
/// of more than 96 bits.
[[nodiscard]] bool MakeDecimal(std::string_view digits, DECIMAL& decimal) noexcept;

}  // namespace platform
