#pragma once

#include <cstdint>

#include "platform/base.h"

namespace AUX {

/// Text to numbers. Each operation stops at the first character that does not fit, reads no
/// character behind `length`, and may be called from any thread.
///
/// \param text         UTF-16; null is an empty text.
/// \param length       UTF-16 units; negative: as far as characters fit, so the text needs a
///                     terminator.
/// \param outConsumed  Gets the number of units consumed, leading blanks and sign included. If no
///                     number was there, the negated count of what was consumed up to there.

enum class Exponent { kNotAllowed, kAllowed };

/// `[blanks] [sign] digits [. digits] [letter [sign] digits]`, where a lone `.` is 0, the letter is
/// one of D, E, d, e, and at most three digits of an exponent count behind its leading zeros.
/// A number too large is an infinity; no text gives a NaN.
/// \param outConsumed  May be null.
[[nodiscard]] double ParseDecimal(const WCHAR* text, std::int32_t length, std::int32_t* outConsumed,
                                  Exponent allowExponent) noexcept;

/// `[blanks] [sign] digits`: leading zeros and at most ten further digits, which wrap in 32 bits.
/// \param outConsumed  May be null.
[[nodiscard]] std::int32_t ParseInteger(const WCHAR* text, std::int32_t length,
                                        std::int32_t* outConsumed) noexcept;

/// At most eight hexadecimal digits in either case, without blanks or sign.
/// \param outConsumed  Gets the number of digits read, 0 if none. Not null.
[[nodiscard]] std::uint32_t ParseHex(const WCHAR* text, std::int32_t length,
                                     std::int32_t* outConsumed) noexcept;

}  // namespace AUX
