#include "options/spin_number.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "settings/vocabularies.h"

namespace {

constexpr std::int32_t kLowest = INT32_MIN;
constexpr std::int32_t kHighest = INT32_MAX;

SpinNumber Number(std::int32_t value, std::int32_t numerator, std::int32_t denominator,
                  std::uint32_t decimals, std::int32_t minimum = kLowest,
                  std::int32_t maximum = kHighest) {
    return {minimum, maximum, value, numerator, denominator, decimals, ""};
}

TEST(SpinNumberShow, WritesTheNumberInItsUnit) {
    constexpr struct {
        std::int32_t value, numerator, denominator;
        std::uint32_t decimals;
        const char* text;
    } kCases[] = {
        {595300, 1, 1000, 1, "595.3"},
        {595000, 1, 1000, 1, "595.0"},
        {1000, 1, 1000, 1, "1.0"},
        {595960, 1, 1000, 1, "596.0"},  // carries into the whole
        {999950, 1, 1000, 1, "1000.0"},
        {595000, 1, 72000, 3, "8.264"},
        {72000, 1, 72000, 3, "1.0"},
        {72018, 1, 72000, 4, "1.0003"},  // zeros inside stay
        {595000, 1000, 2833000, 1, "210.0"},
        {1280, 1, 1, 1, "1280.0"},
        {7, 2, 1, 0, "14.0"},  // a digit behind the point even without decimals
        {5, 1, 10, 0, "1.0"},
        {0, 1, 1000, 3, "0.0"},
        {-595300, 1, 1000, 1, "-595.3"},
        {-500, 1, 1000, 1, "-0.5"},
        {-960, 1, 1000, 1, "-1.0"},
        {-4, 1, 1000, 1, "0.0"},  // no sign before what shows as nothing
        {5, 0, 0, 1, "5.0"},
        {1, 1, 3, 99, "0.333333333333333"},
        {kLowest, kLowest, 1, 99, "4611686018427387904.0"},
        {kHighest, kLowest, 1, 3, "-4611686016279904256.0"},
    };
    for (const auto& c : kCases) {
        SpinNumber number = Number(c.value, c.numerator, c.denominator, c.decimals);
        number.Show();
        EXPECT_STREQ(number.LastText, c.text) << c.value;
        EXPECT_EQ(number.Value, c.value);
    }
}

TEST(SpinNumberTakeIn, ReadsWhatBeginsAsANumber) {
    const std::string digits(5000, '9');
    const std::string zeros = std::string(5000, '0') + "7.5";
    const struct {
        const char* text;
        std::int32_t value;  // thousandths, from 4000 in 5 to 10000000
    } kCases[] = {
        {"", 5},
        {"12", 12000},
        {"12,5", 12000},
        {"  +1.5", 1500},
        {"\t1.5pt", 1500},
        {"1.123456", 1123},
        {"1.1239", 1124},
        {"1.", 1000},
        {"1.x", 1000},
        {"1..5", 1000},
        {"0.0044", 5},
        {"-1", 5},
        {"abc", 4000},
        {".5", 4000},
        {" ", 4000},
        {"-", 4000},
        {"+-1", 4000},
        {"- 1", 4000},
        {"\xD9\xA1", 4000},  // digits of another script
        {"10000.001", 10000000},
        {digits.c_str(), 10000000},
        {zeros.c_str(), 7500},
        {"1e3", 1000},
        {"0x10", 5},
        {"inf", 4000},
        {"nan", 4000},
    };
    for (const auto& c : kCases) {
        SpinNumber number = Number(4000, 1, 1000, 1, 5, 10000000);
        number.TakeIn(c.text);
        EXPECT_EQ(number.Value, c.value) << std::string(c.text).substr(0, 20);
        EXPECT_STREQ(number.LastText, "");
    }
    SpinNumber both = Number(3, 1, 1, 0);
    both.TakeIn("-" + digits);
    EXPECT_EQ(both.Value, kLowest);
    both.TakeIn("-12.5");
    EXPECT_EQ(both.Value, -13) << "halves go away from zero";
    both.Show();
    both.Value = 40;
    both.TakeIn("-13.0");
    EXPECT_EQ(both.Value, 40) << "the text that was shown says nothing new";
    both.Maximum = 30;
    both.TakeIn("x");
    EXPECT_EQ(both.Value, 30);
}

TEST(SpinNumberStep, MovesByShownUnitsWithinTheRange) {
    constexpr struct {
        std::int32_t value, numerator, denominator, clicks, minimum, maximum, result;
    } kCases[] = {
        {595000, 1, 1000, 1, 5, 10000000, 596000},
        {595000, 1, 72000, -1, 5, 10000000, 523000},
        {595000, 1000, 2833000, 1, 5, 10000000, 597833},
        {595000, 1000, 2833000, -3, 5, 10000000, 586501},
        {5, 1, 1000, -1, 5, 10000000, 5},
        {9999999, 1, 1000, 1, 5, 10000000, 10000000},
        {10, 3, 1, 5, 0, 100, 11},  // five thirds, cut
        {10, 3, 1, -5, 0, 100, 9},  // towards zero
        {10, 3, 1, 2, 0, 100, 10},
        {10, 1, 1000, kHighest, kLowest, kHighest, kHighest},
        {10, 1, kHighest, kHighest, kLowest, kHighest, kHighest},
        {10, 1, kLowest, kLowest, kLowest, kHighest, kHighest},
        {10, -1, kLowest, kLowest, kLowest, kHighest, kLowest},
        {10, 1, kHighest, kLowest, kLowest, kHighest, kLowest},
        {10, 0, 0, 1, 0, 100, 11},
        {10, 1, 1, 1, 50, 20, 50},  // a range that is upside down
    };
    for (const auto& c : kCases) {
        SpinNumber number = Number(c.value, c.numerator, c.denominator, 3, c.minimum, c.maximum);
        number.Step(c.clicks);
        EXPECT_EQ(number.Value, c.result)
            << c.value << ' ' << c.numerator << '/' << c.denominator << ' ' << c.clicks;
    }
}

void SetUnit(SpinNumber& number, const UnitsRow& unit) {
    number.TakeIn(number.LastText);
    number.Numerator = unit.numerator;
    number.Denominator = unit.denominator;
    number.Decimals = unit.decimals;
    number.Show();
}

// The whole range of a page's length, in every unit: typing what is shown shows it again, and is
// never further off than half of the last digit.
TEST(SpinNumber, ShowsAgainWhatIsTypedAsItIsShown) {
    for (const UnitsRow& unit : UnitsTable) {
        const double halfDigit =
            0.5 * unit.denominator / unit.numerator / std::pow(10, unit.decimals) + 0.5;
        for (std::int32_t value = 5; value <= 10000000; value += 61) {
            SpinNumber number =
                Number(value, unit.numerator, unit.denominator, unit.decimals, 5, 10000000);
            number.Show();
            const std::string shown = number.LastText;
            ASSERT_NEAR(std::strtod(shown.c_str(), nullptr) * unit.denominator / unit.numerator,
                        value, halfDigit);
            number.LastText[0] = 0;
            number.TakeIn(shown);
            ASSERT_LE(std::abs(number.Value - value), halfDigit) << shown;
            number.Show();
            ASSERT_EQ(number.LastText, shown) << value;
        }
    }
}

TEST(SpinNumber, KeepsItsValueThroughAnyOrderOfUnits) {
    constexpr unsigned kSeed = 20;
    std::mt19937 random(kSeed);
    SpinNumber number = Number(595300, 1, 1000, 1, 5, 10000000);
    number.Show();
    std::int32_t expected = number.Value;
    const UnitsRow* unit = &UnitsTable[0];
    for (int i = 0; i < 20000; ++i) {
        switch (random() % 8) {
            case 0:  // typed, to be taken in under the unit in which it was typed
                number.TakeIn(std::to_string(random() % 100) + ".25");
                expected = number.Value;
                break;
            case 1: {
                const int clicks = static_cast<int>(random() % 5) - 2;
                expected = number.Clamp(std::int64_t{expected} +
                                        clicks * (unit->denominator / unit->numerator));
                number.TakeIn(number.LastText);
                number.Step(clicks);
                number.Show();
                break;
            }
            default:
                unit = &UnitsTable[random() % std::size(UnitsTable)];
                SetUnit(number, *unit);
        }
        ASSERT_EQ(number.Value, expected) << "step " << i << ", seed " << kSeed;
    }
}

}  // namespace
