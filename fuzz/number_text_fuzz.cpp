#include <cmath>
#include <string>

#include "automation/number_text.h"
#include "fuzz/units.h"

namespace {

using AUX::Exponent;

std::string Consumed(const std::vector<WCHAR>& units, std::int32_t count) {
    return {units.begin(), units.begin() + count};
}

// The C library knows D and d as no exponents. A lone point is nothing to it, and so is 0.
double Expected(std::string text) {
    for (char& letter : text) letter = letter == 'D' || letter == 'd' ? 'e' : letter;
    return std::strtod(text.c_str(), nullptr);
}

void RequireSameDecimal(const std::vector<WCHAR>& units, Exponent exponent) {
    const auto length = static_cast<std::int32_t>(units.size());
    std::int32_t consumed = 0;
    const double value = AUX::ParseDecimal(units.data(), length, &consumed, exponent);
    fuzz::Require(std::abs(consumed) <= length && !std::isnan(value));
    if (consumed <= 0) {
        fuzz::Require(value == 0);
        return;
    }
    const double expected = Expected(Consumed(units, consumed));
    // Factors of ten are taken one at a time, each of which may round; what is tiny loses digits.
    constexpr double kRounding = 1e-11, kTiny = 1e-290, kHuge = 1e300;
    if (std::abs(expected) > kHuge || std::abs(value) > kHuge) return;
    // An exponent may bring back digits that stood too far behind the point.
    constexpr std::int32_t kPlaces = 300;
    if (consumed > kPlaces) return;
    fuzz::Require(std::abs(value - expected) <= kRounding * std::abs(expected) + kTiny);
    // A text that ends where its number ends says the same.
    std::int32_t again = 0;
    const double same = AUX::ParseDecimal(units.data(), consumed, &again, exponent);
    fuzz::Require(same == value && again == consumed);
}

}  // namespace

/// Decimals are those of the C library but for rounding; no parser takes more than there is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<WCHAR> units = fuzz::MakeUnits(data, size);
    const auto length = static_cast<std::int32_t>(units.size());
    RequireSameDecimal(units, Exponent::kAllowed);
    RequireSameDecimal(units, Exponent::kNotAllowed);
    std::int32_t consumed = 0;
    (void)AUX::ParseInteger(units.data(), length, &consumed);
    fuzz::Require(std::abs(consumed) <= length);
    const std::uint32_t hex = AUX::ParseHex(units.data(), length, &consumed);
    fuzz::Require(consumed >= 0 && consumed <= 8 && consumed <= length);
    const std::string digits = Consumed(units, consumed);
    fuzz::Require(digits.empty() ? hex == 0 : std::stoul(digits, nullptr, 16) == hex);
    return 0;
}
