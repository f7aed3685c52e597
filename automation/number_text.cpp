#include "automation/number_text.h"

#include <cassert>
#include <limits>

namespace AUX {
namespace {

/// From here on further digits of a fraction change nothing; short of where a double overflows.
constexpr double kLargestDivisor = 1e300;
constexpr int kMaxExponentDigits = 3;
constexpr int kMaxIntegerDigits = 10;
constexpr int kMaxHexDigits = 8;

constexpr bool IsDigit(WCHAR unit) { return unit >= TEXT('0') && unit <= TEXT('9'); }
constexpr bool IsBlank(WCHAR unit) { return unit == TEXT(' ') || (unit >= 9 && unit <= 13); }

constexpr bool IsExponentLetter(WCHAR unit) {
    return unit == TEXT('D') || unit == TEXT('E') || unit == TEXT('d') || unit == TEXT('e');
}

/// The value of a hexadecimal digit, or -1.
constexpr int HexValue(WCHAR unit) {
    if (IsDigit(unit)) return unit - TEXT('0');
    if (unit >= TEXT('a') && unit <= TEXT('f')) return unit - TEXT('a') + 10;
    if (unit >= TEXT('A') && unit <= TEXT('F')) return unit - TEXT('A') + 10;
    return -1;
}

/// A place in a text. At the end it shows the terminator, which fits nowhere.
class Cursor {
public:
    Cursor(const WCHAR* text, std::int32_t length)
        : text_(text),
          end_(!text        ? 0
               : length < 0 ? std::numeric_limits<std::int32_t>::max()
                            : length) {}

    WCHAR Peek() const { return at_ < end_ ? text_[at_] : WCHAR{0}; }
    void Step() { ++at_; }
    std::int32_t Consumed() const { return at_; }

    void SkipBlanks() {
        while (IsBlank(Peek())) Step();
    }

    bool Take(WCHAR unit) {
        if (Peek() != unit) return false;
        Step();
        return true;
    }

    /// Takes one sign. \return true for a minus.
    bool TakeSign() {
        if (Take(TEXT('-'))) return true;
        (void)Take(TEXT('+'));  // Says nothing that its absence would not.
        return false;
    }

    /// \return true if there was at least one.
    bool SkipZeros() {
        const std::int32_t before = at_;
        while (Take(TEXT('0'))) {
        }
        return at_ != before;
    }

    /// The value of the next digit, which is taken, or -1.
    int TakeDigit() {
        const WCHAR unit = Peek();
        if (!IsDigit(unit)) return -1;
        Step();
        return unit - TEXT('0');
    }

private:
    const WCHAR* text_;
    std::int32_t end_;
    std::int32_t at_ = 0;
};

void Report(const Cursor& cursor, bool seen, std::int32_t* outConsumed) {
    if (outConsumed) *outConsumed = seen ? cursor.Consumed() : -cursor.Consumed();
}

double TakeFraction(Cursor& cursor) {
    double numerator = 0;
    double divisor = 1;
    for (int digit = cursor.TakeDigit(); digit >= 0; digit = cursor.TakeDigit()) {
        if (divisor >= kLargestDivisor) continue;
        numerator = numerator * 10 + digit;
        divisor *= 10;
    }
    return numerator / divisor;
}

double TakeExponent(Cursor& cursor, double value) {
    const bool negative = cursor.TakeSign();
    (void)cursor.SkipZeros();  // An exponent of 0 and none at all are the same.
    int exponent = 0;
    for (int count = 0; count < kMaxExponentDigits; ++count) {
        const int digit = cursor.TakeDigit();
        if (digit < 0) break;
        exponent = exponent * 10 + digit;
    }
    for (; exponent > 0; --exponent) value = negative ? value / 10 : value * 10;
    return value;
}

}  // namespace

double ParseDecimal(const WCHAR* text, std::int32_t length, std::int32_t* outConsumed,
                    Exponent allowExponent) noexcept {
    Cursor cursor(text, length);
    cursor.SkipBlanks();
    const bool negative = cursor.TakeSign();
    double value = 0;
    bool seen = false;
    for (int digit = cursor.TakeDigit(); digit >= 0; digit = cursor.TakeDigit()) {
        seen = true;
        value = value * 10 + digit;
    }
    if (cursor.Take(TEXT('.'))) {
        seen = true;
        value += TakeFraction(cursor);
    }
    if (seen && allowExponent == Exponent::kAllowed && IsExponentLetter(cursor.Peek())) {
        cursor.Step();
        value = TakeExponent(cursor, value);
    }
    Report(cursor, seen, outConsumed);
    return negative ? -value : value;
}

std::int32_t ParseInteger(const WCHAR* text, std::int32_t length,
                          std::int32_t* outConsumed) noexcept {
    Cursor cursor(text, length);
    cursor.SkipBlanks();
    const bool negative = cursor.TakeSign();
    bool seen = cursor.SkipZeros();
    std::uint32_t value = 0;
    for (int count = 0; count < kMaxIntegerDigits; ++count) {
        const int digit = cursor.TakeDigit();
        if (digit < 0) break;
        seen = true;
        value = value * 10 + static_cast<std::uint32_t>(digit);
    }
    Report(cursor, seen, outConsumed);
    return static_cast<std::int32_t>(negative ? 0 - value : value);
}

std::uint32_t ParseHex(const WCHAR* text, std::int32_t length, std::int32_t* outConsumed) noexcept {
    assert(outConsumed);
    Cursor cursor(text, length);
    std::uint32_t value = 0;
    for (int count = 0; count < kMaxHexDigits; ++count) {
        const int digit = HexValue(cursor.Peek());
        if (digit < 0) break;
        cursor.Step();
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    *outConsumed = cursor.Consumed();
    return value;
}

}  // namespace AUX
