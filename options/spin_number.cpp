#include "options/spin_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace {

constexpr std::size_t kMostFractionDigits = 4;

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr std::int64_t OneForZero(std::int32_t number) noexcept { return number != 0 ? number : 1; }

/// Cuts towards zero; of what passes 32 bits only that it does so is kept.
std::int64_t Cut(double number) noexcept {
    constexpr double kBeyond = 1e10;
    return static_cast<std::int64_t>(std::clamp(number, -kBeyond, kBeyond));
}

}  // namespace

std::int32_t SpinNumber::Clamp(std::int64_t number) const noexcept {
    if (number < Minimum) return Minimum;
    return number > Maximum ? Maximum : static_cast<std::int32_t>(number);
}

void SpinNumber::Show() noexcept {
    const double shown = static_cast<double>(Value) * static_cast<double>(OneForZero(Numerator)) /
                         static_cast<double>(OneForZero(Denominator));
    const double magnitude = std::abs(shown);
    auto whole = static_cast<std::uint64_t>(magnitude);
    const std::uint32_t decimals = std::min(Decimals, kMostDecimals);
    double scaled = magnitude - static_cast<double>(whole);
    std::uint64_t power = 1;
    for (std::uint32_t i = 0; i < decimals; ++i) {
        scaled *= 10;
        power *= 10;
    }
    auto fraction = static_cast<std::uint64_t>(scaled + 0.5);
    if (fraction >= power) {
        ++whole;
        fraction = 0;
    }
    char* end = LastText;
    if (shown < 0 && (whole != 0 || fraction != 0)) *end++ = '-';
    end = std::to_chars(end, std::end(LastText), whole).ptr;
    *end++ = '.';
    char* const first = end;
    for (char* digit = first + decimals; digit > first; fraction /= 10) {
        *--digit = static_cast<char>('0' + fraction % 10);
    }
    end += decimals;
    while (end > first + 1 && end[-1] == '0') --end;
    if (end == first) *end++ = '0';
    *end = 0;
}

void SpinNumber::TakeIn(std::string_view text) noexcept {
    if (text.empty()) {
        Value = Minimum;
        return;
    }
    if (text == LastText) return;
    std::size_t at = std::min(text.find_first_not_of(" \t"), text.size());
    const char sign = at < text.size() ? text[at] : '\0';
    if (sign == '-' || sign == '+') ++at;
    if (at == text.size() || !IsDigit(text[at])) {
        Value = Clamp(Value);
        return;
    }
    double number = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at) number = number * 10 + (text[at] - '0');
    if (at < text.size() && text[at] == '.') {
        double fraction = 0;
        double power = 1;
        for (std::size_t i = 0; i < kMostFractionDigits && ++at < text.size() && IsDigit(text[at]);
             ++i) {
            fraction = fraction * 10 + (text[at] - '0');
            power *= 10;
        }
        number += fraction / power;
    }
    const double value = number * static_cast<double>(OneForZero(Denominator)) /
                             static_cast<double>(OneForZero(Numerator)) +
                         0.5;
    Value = Clamp(sign == '-' ? -Cut(value) : Cut(value));
}

void SpinNumber::Step(std::int32_t clicks) noexcept {
    // The widest product of 32-bit numbers leaves room for one more.
    Value = Clamp(Value + OneForZero(Denominator) * clicks / OneForZero(Numerator));
}
