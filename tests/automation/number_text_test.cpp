#include "automation/number_text.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace AUX {
namespace {

using Text = std::basic_string<WCHAR>;

TEST(NumberText, ReadsDecimalsAndCountsWhatItTook) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const struct {
        const WCHAR* text;
        std::int32_t length;
        Exponent exponent;
        double value;
        std::int32_t consumed;
    } kCases[] = {
        {TEXT("  -12.5e2x"), -1, Exponent::kAllowed, -1250, 9},
        {TEXT("  -12.5e2x"), -1, Exponent::kNotAllowed, -12.5, 7},
        {TEXT("12345"), 3, Exponent::kAllowed, 123, 3},
        {TEXT("\t\r+.5."), -1, Exponent::kAllowed, 0.5, 5},
        {TEXT("."), -1, Exponent::kAllowed, 0, 1},
        {TEXT(".e1"), -1, Exponent::kAllowed, 0, 3},
        {TEXT("7D-x"), -1, Exponent::kAllowed, 7, 3},
        {TEXT("1e00031"), -1, Exponent::kAllowed, 1e31, 7},
        {TEXT("1e9999"), -1, Exponent::kAllowed, kInfinity, 5},
        {TEXT("abc"), -1, Exponent::kAllowed, 0, 0},
        {TEXT("e5"), -1, Exponent::kAllowed, 0, 0},
        {TEXT("  -"), -1, Exponent::kAllowed, -0.0, -3},
        {TEXT("--1"), -1, Exponent::kAllowed, -0.0, -1},
        {TEXT("1"), 0, Exponent::kAllowed, 0, 0},
        {nullptr, 5, Exponent::kAllowed, 0, 0},
    };
    for (const auto& c : kCases) {
        std::int32_t consumed = 99;
        const double value = ParseDecimal(c.text, c.length, &consumed, c.exponent);
        SCOPED_TRACE(&c - kCases);
        if (std::isinf(c.value)) {
            EXPECT_EQ(value, c.value);
        } else {
            EXPECT_DOUBLE_EQ(value, c.value);
        }
        EXPECT_EQ(std::signbit(value), std::signbit(c.value));
        EXPECT_EQ(consumed, c.consumed);
    }
    EXPECT_EQ(ParseDecimal(TEXT("4"), -1, nullptr, Exponent::kNotAllowed), 4);
}

TEST(NumberText, LongFractionsStayNumbers) {
    const Text text = TEXT("0.") + Text(5000, TEXT('9'));
    std::int32_t consumed = 0;
    EXPECT_DOUBLE_EQ(ParseDecimal(text.c_str(), -1, &consumed, Exponent::kNotAllowed), 1);
    EXPECT_EQ(consumed, 5002);
}

TEST(NumberText, ReadsIntegersThatWrapBehindTenDigits) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    const struct {
        const WCHAR* text;
        std::int32_t length;
        std::int32_t value;
        std::int32_t consumed;
    } kCases[] = {
        {TEXT("00012"), -1, 12, 5},
        {TEXT(" +0"), -1, 0, 3},
        {TEXT("2147483647"), -1, 2147483647, 10},
        {TEXT("-2147483648"), -1, kLowest, 11},
        {TEXT("4294967297"), -1, 1, 10},
        {TEXT("00123456789012"), -1, 1234567890, 12},
        {TEXT("-x"), -1, 0, -1},
        {TEXT("987"), 2, 98, 2},
        {TEXT(""), -1, 0, 0},
        {nullptr, -1, 0, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        std::int32_t consumed = 99;
        EXPECT_EQ(ParseInteger(c.text, c.length, &consumed), c.value);
        EXPECT_EQ(consumed, c.consumed);
    }
}

TEST(NumberText, ReadsAtMostEightHexadecimalDigits) {
    const struct {
        const WCHAR* text;
        std::int32_t length;
        std::uint32_t value;
        std::int32_t consumed;
    } kCases[] = {
        {TEXT("12345678FF"), 10, 0x12345678, 8},
        {TEXT("aBcDeF09"), 8, 0xABCDEF09, 8},
        {TEXT("1g"), 2, 1, 1},
        {TEXT("@`G/:"), 5, 0, 0},
        {TEXT(" 1"), 2, 0, 0},
        {TEXT("-1"), 2, 0, 0},
        {TEXT("12"), 0, 0, 0},
        {TEXT("12"), 1, 1, 1},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        std::int32_t consumed = 99;
        EXPECT_EQ(ParseHex(c.text, c.length, &consumed), c.value);
        EXPECT_EQ(consumed, c.consumed);
    }
}

}  // namespace
}  // namespace AUX
