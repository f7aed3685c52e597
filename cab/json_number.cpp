#include "cab/json_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace AUX::CAB {
namespace {

constexpr bool IsDigit(WCHAR unit) noexcept { return unit >= '0' && unit <= '9'; }
constexpr bool IsOctalDigit(WCHAR unit) noexcept { return unit >= '0' && unit <= '7'; }
constexpr bool IsExponent(WCHAR unit) noexcept { return (unit | 0x20) == 'e'; }
constexpr bool IsSign(WCHAR unit) noexcept { return unit == '+' || unit == '-'; }
constexpr bool IsSpace(WCHAR unit) noexcept { return unit == ' ' || (unit >= 9 && unit <= 13); }

constexpr int HexValue(WCHAR unit) noexcept {
    if (IsDigit(unit)) return unit - '0';
    const int letter = unit | 0x20;
    return unit < 128 && letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

template <class Accept>
bool AllOf(WStringView text, Accept accept) noexcept {
    return std::all_of(text.begin(), text.end(), accept);
}

/// The rest of a number: digits, a point, an exponent.
bool IsTail(WStringView text, std::size_t at, bool hasPoint, bool hasExponent) noexcept {
    for (; at < text.size(); ++at) {
        if (IsDigit(text[at])) continue;
        if (text[at] == '.') {
            if (hasPoint || hasExponent) return false;
            hasPoint = true;
        } else if (IsExponent(text[at])) {
            if (hasExponent) return false;
            hasExponent = true;
            if (at + 1 < text.size() && IsSign(text[at + 1])) ++at;
            if (at + 1 >= text.size() || !IsDigit(text[at + 1])) return false;
        } else {
            return false;
        }
    }
    return true;
}

bool IsNumberFromZero(WStringView piece) noexcept {
    if (piece.size() == 1) return true;
    const WCHAR next = piece[1];
    if (next == '.') return IsTail(piece, 2, true, false);
    if (next != '0' && IsOctalDigit(next)) return AllOf(piece.substr(1), IsOctalDigit);
    if (next == 'x') {
        return AllOf(piece.substr(2), [](WCHAR unit) { return HexValue(unit) >= 0; });
    }
    if (!IsExponent(next) || piece.size() < 3) return false;
    if (!IsSign(piece[2]) && !IsDigit(piece[2])) return false;
    return IsTail(piece, 3, false, true);
}

/// A decimal number in its parts, up to where the digits that count fit 64 bits.
struct Decimal {
    std::uint64_t digits = 0;
    std::int64_t exponent = 0;  // Of ten.
    bool isExact = true;        // All digits are in `digits`.
    std::size_t length = 0;     // Units that belong to the number; 0 if there is none.
};

Decimal ReadDecimal(const WCHAR* text, std::size_t size) noexcept {
    constexpr int kMostDigits = 19;
    constexpr std::int64_t kMostExponent = 100'000'000;
    Decimal number;
    int count = 0;
    bool hasDigit = false;
    bool hasPoint = false;
    std::size_t at = 0;
    for (; at < size; ++at) {
        if (IsDigit(text[at])) {
            hasDigit = true;
            if (count < kMostDigits) {
                number.digits = number.digits * 10 + static_cast<std::uint64_t>(text[at] - '0');
                count += number.digits != 0;
                number.exponent -= hasPoint;
            } else {
                number.isExact = false;
            }
        } else if (text[at] == '.' && !hasPoint) {
            hasPoint = true;
        } else {
            break;
        }
    }
    if (!hasDigit) return {};
    number.length = at;
    if (at >= size || !IsExponent(text[at])) return number;
    ++at;
    const bool isNegative = at < size && text[at] == '-';
    if (at < size && IsSign(text[at])) ++at;
    if (at >= size || !IsDigit(text[at])) return number;
    std::int64_t exponent = 0;
    for (; at < size && IsDigit(text[at]); ++at) {
        exponent = std::min(exponent * 10 + (text[at] - '0'), kMostExponent);
    }
    number.exponent += isNegative ? -exponent : exponent;
    number.length = at;
    return number;
}

constexpr std::size_t kShortText = 64;

// All those that a double holds exactly.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

double OutOfRange(std::int64_t magnitude) noexcept {
    return magnitude > 0 ? std::numeric_limits<double>::infinity() : 0;
}

double ReadShort(const WCHAR* text, const Decimal& number) noexcept {
    char narrow[kShortText];
    for (std::size_t i = 0; i < number.length; ++i) narrow[i] = static_cast<char>(text[i]);
    double value = 0;
    const std::from_chars_result result = std::from_chars(narrow, narrow + number.length, value);
    if (result.ec != std::errc::result_out_of_range) return value;
    // The limits of a double are far from where the digits before the exponent decide.
    return OutOfRange(number.exponent + static_cast<std::int64_t>(kShortText) / 2);
}

/// Of a number that is too long for a buffer. Digits that 800 others precede
/// cannot change the result any more, once one of them stands for those that are not 0.
double ReadSlowly(const WCHAR* text, const Decimal& number) noexcept {
    constexpr std::size_t kBufferSize = 900;
    char buffer[kBufferSize];
    std::size_t length = 0;
    std::size_t significant = 0;
    std::int64_t dropped = 0;
    bool hasPoint = false;
    bool dropsMore = false;
    std::size_t at = 0;
    std::int64_t exponent = 0;
    for (; at < number.length && !IsExponent(text[at]); ++at) {
        if (text[at] == '.') {
            hasPoint = true;
            continue;
        }
        exponent -= hasPoint;
        if (significant == 0 && text[at] == '0') continue;
        if (significant < 800) {
            buffer[length++] = static_cast<char>(text[at]);
            ++significant;
        } else {
            ++dropped;
            dropsMore |= text[at] != '0';
        }
    }
    if (significant == 0) return 0;
    if (dropsMore) {
        buffer[length++] = '1';
        --dropped;
    }
    exponent += dropped;
    if (at < number.length) {  // The exponent's own digits; ReadDecimal has limited them.
        std::int64_t own = 0;
        const bool isNegative = text[at + 1] == '-';
        for (++at; at < number.length; ++at) {
            if (IsDigit(text[at]))
                own = std::min<std::int64_t>(own * 10 + (text[at] - '0'), 1 << 30);
        }
        exponent += isNegative ? -own : own;
    }
    // Beyond all doubles the exact figure does not matter.
    exponent = std::clamp<std::int64_t>(exponent, -9999, 9999);
    buffer[length++] = 'e';
    const std::to_chars_result end =
        std::to_chars(buffer + length, buffer + kBufferSize, static_cast<int>(exponent));
    double value = 0;
    const std::from_chars_result result = std::from_chars(buffer, end.ptr, value);
    if (result.ec != std::errc::result_out_of_range) return value;
    return OutOfRange(exponent + static_cast<std::int64_t>(significant));
}

double ReadHex(WStringView digits) noexcept {
    double value = 0;
    for (const WCHAR unit : digits) {
        const int digit = HexValue(unit);
        if (digit < 0) break;
        value = value * 16 + digit;
    }
    return value;
}

double ReadUnsigned(WStringView text) noexcept {
    if (text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x')
        return ReadHex(text.substr(2));
    const Decimal number = ReadDecimal(text.data(), text.size());
    // Both are exact then, so that their product or quotient is rounded once.
    constexpr std::int64_t kMostPower = std::ssize(kPowersOfTen) - 1;
    if (number.isExact && number.digits <= std::uint64_t{1} << 53 &&
        number.exponent >= -kMostPower && number.exponent <= kMostPower) {
        const auto digits = static_cast<double>(number.digits);
        return number.exponent < 0 ? digits / kPowersOfTen[-number.exponent]
                                   : digits * kPowersOfTen[number.exponent];
    }
    return number.length < kShortText ? ReadShort(text.data(), number)
                                      : ReadSlowly(text.data(), number);
}

std::size_t Widen(const char* first, const char* last, WCHAR* out) noexcept {
    std::copy(first, last, out);
    return static_cast<std::size_t>(last - first);
}

}  // namespace

bool IsJsonNumber(WStringView piece) noexcept {
    if (piece.empty()) return false;
    const WCHAR first = piece[0];
    if (first >= '1' && first <= '9') return IsTail(piece, 1, false, false);
    if (first == '0') return IsNumberFromZero(piece);
    if (first == '.') return IsTail(piece, 1, true, false);
    if (!IsSign(first) || piece.size() == 1) return false;
    const WCHAR next = piece[1];
    if (next == '.' || IsExponent(next)) return false;
    return IsTail(piece, next == '0' ? 2 : 1, false, false);
}

bool ReadShortNumber(WStringView piece, double& value) noexcept {
    constexpr std::size_t kMostUnits = 16;  // With a sign or a point: a double holds the digits.
    if (piece.empty() || piece.size() > kMostUnits) return false;
    const WCHAR* at = piece.data();
    const WCHAR* const end = at + piece.size();
    const bool isNegative = *at == '-';
    at += isNegative;
    const WCHAR* const first = at;
    std::uint64_t digits = 0;
    for (; at != end && IsDigit(*at); ++at) {
        digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    // Zeros in front may mean another base.
    if (at == first || (*first == '0' && at - first > 1) || at - first == kMostUnits) return false;
    std::ptrdiff_t decimals = 0;
    if (at != end) {
        if (*at++ != '.') return false;
        for (; at != end && IsDigit(*at); ++at, ++decimals) {
            digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
        }
        if (at != end) return false;
    }
    // Both are exact, so that their quotient is rounded once.
    const double magnitude = static_cast<double>(digits) / kPowersOfTen[decimals];
    value = isNegative ? -magnitude : magnitude;
    return true;
}

double ReadJsonNumber(WStringView text) noexcept {
    if (!AllOf(text, [](WCHAR unit) { return unit <= 0xFF; })) return 0;
    std::size_t at = 0;
    while (at < text.size() && IsSpace(text[at])) ++at;
    return ReadPlainNumber(text.substr(at));
}

double ReadPlainNumber(WStringView text) noexcept {
    std::size_t at = 0;
    const bool isNegative = at < text.size() && text[at] == '-';
    if (at < text.size() && IsSign(text[at])) ++at;
    const double value = ReadUnsigned(text.substr(at));
    return isNegative ? -value : value;
}

std::size_t FormatJsonInteger(std::int64_t value, WCHAR* out) noexcept {
    char digits[24];
    return Widen(digits, std::to_chars(digits, std::end(digits), value).ptr, out);
}

std::size_t FormatJsonNumber(double value, WCHAR* out) noexcept {
    constexpr double kNear = 1e-05;
    constexpr double kTwo63 = 9223372036854775808.0;
    char digits[kMaxNumberUnits + 1];
    char* const last = digits + kMaxNumberUnits;
    if (!std::isfinite(value)) {
        static constexpr char kNull[] = {'n', 'u', 'l', 'l'};
        return Widen(std::begin(kNull), std::end(kNull), out);
    }
    if (value >= 0 && value < 2 * kTwo63 && value - std::trunc(value) < kNear) {
        return Widen(digits, std::to_chars(digits, last, static_cast<std::uint64_t>(value)).ptr,
                     out);
    }
    if (value < 0 && value >= -kTwo63 && std::trunc(value) - value < kNear) {
        return FormatJsonInteger(static_cast<std::int64_t>(value), out);
    }
    std::to_chars_result end = std::to_chars(digits, last, value, std::chars_format::fixed, 6);
    if (end.ec != std::errc()) {
        end = std::to_chars(digits, last, value, std::chars_format::scientific);
        return Widen(digits, end.ptr, out);
    }
    while (end.ptr[-1] == '0') --end.ptr;
    if (end.ptr[-1] == '.') --end.ptr;
    return Widen(digits, end.ptr, out);
}

}  // namespace AUX::CAB
