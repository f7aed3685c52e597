#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "foundation/wstring.h"

/// Numbers from one type to another where nothing is lost.
namespace AUX::CAB {

/// \return false, with `to` unchanged, if the value has no equal in the other type. -0.0 is 0; a
///         truth value is 0 or 1.
template <class To, class From>
[[nodiscard]] bool ConvertExactly(From from, To& to) noexcept {
    if constexpr (std::is_same_v<To, bool>) {
        if (from != From{0} && from != From{1}) return false;
        to = from == From{1};
    } else if constexpr (std::is_same_v<From, bool> || std::is_same_v<To, From>) {
        to = static_cast<To>(from);
    } else if constexpr (std::is_same_v<From, double>) {
        // Both limits are powers of two, so that doubles hold them.
        constexpr double kEnd = -static_cast<double>(std::numeric_limits<To>::min());
        if (!(from >= -kEnd && from < kEnd) || from != std::trunc(from)) return false;
        to = static_cast<To>(from);
    } else if constexpr (std::is_same_v<To, double>) {
        const double rounded = static_cast<double>(from);
        From back = 0;
        if (!ConvertExactly(rounded, back) || back != from) return false;
        to = rounded;
    } else {
        if (from < std::numeric_limits<To>::min() || from > std::numeric_limits<To>::max()) {
            return false;
        }
        to = static_cast<To>(from);
    }
    return true;
}

/// Whether two values are the same, bit by bit: a NaN is the same as itself, -0.0 is not 0.
template <class T>
[[nodiscard]] bool IsSame(T a, T b) noexcept {
    if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    } else {
        return a == b;
    }
}

/// Reads a value from the beginning of a text, leading white space left out, whatever follows: a
/// decimal integer, or a number with an optional fraction and exponent, "inf" or "nan". A text that
/// begins with no number is 0.
/// \return false, with the value unchanged, for one out of range.
[[nodiscard]] bool ParseNumber(WStringView text, std::int32_t& value) noexcept;
[[nodiscard]] bool ParseNumber(WStringView text, std::int64_t& value) noexcept;
[[nodiscard]] bool ParseNumber(WStringView text, double& value) noexcept;
/// Takes "true" and "false" in any case, whole, and nothing else.
[[nodiscard]] bool ParseNumber(WStringView text, bool& value) noexcept;

/// Writes a value so that ParseNumber reads the same one. \return false when memory runs out.
[[nodiscard]] bool FormatNumber(bool value, WString& text) noexcept;
[[nodiscard]] bool FormatNumber(std::int64_t value, WString& text) noexcept;
[[nodiscard]] bool FormatNumber(double value, WString& text) noexcept;
inline bool FormatNumber(std::int32_t value, WString& text) noexcept {
    return FormatNumber(std::int64_t{value}, text);
}

}  // namespace AUX::CAB
