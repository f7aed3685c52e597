#include "automation/color.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "platform/gdi.h"
#include "tests/support/case_table.h"

namespace AUX {
namespace {

std::string TextOf(const Color& color) {
    const ColorText text = color.GetText();
    return platform::ToUtf8({text.units, text.length});
}

TEST(Color, TextsAreReadAsTheTableTells) {
    const char* const kResults[] = {"set", "same", "changed", "no"};
    for (const auto& row : test_support::ReadCases(AUTOMATION_CASES "color_texts.tsv", 4)) {
        SCOPED_TRACE(platform::ToUtf8(row[0]) + " as " + platform::ToUtf8(row[1]));
        Color color;
        ASSERT_EQ(color.SetText(WStringView(row[0])), Color::Parsed::Set);
        const Color before = color;
        const Color::Parsed result = color.SetText(WStringView(row[1]));
        EXPECT_EQ(kResults[static_cast<int>(result)], platform::ToUtf8(row[2]));
        EXPECT_EQ(TextOf(color), platform::ToUtf8(row[3]));
        if (result == Color::Parsed::NotUnderstood) {
            EXPECT_EQ(color.Components(), before.Components());
        }
    }
}

TEST(Color, SystemColoursHaveTheirNames) {
    std::size_t found = 0;
    for (const auto& row : test_support::ReadCases(AUTOMATION_CASES "color_names.tsv", 2)) {
        Color color;
        const auto text = TEXT("Syste(") + row[0] + TEXT(")");
        EXPECT_EQ(color.SetText(WStringView(text)), Color::Parsed::Set);
        const int index = std::stoi(platform::ToUtf8(row[1]));
        EXPECT_EQ(color.GetColorRef(), 0xFF000000 | GetSysColor(index)) << index;
        ++found;
    }
    EXPECT_EQ(found, 25u);
}

TEST(Color, EveryColorRefComesBack) {
    Color color;
    std::uint32_t wrong = 0;
    for (std::uint32_t value = 0; value < 1 << 24; value += COLOR_STEP) {
        color.SetColorRef(value | value << 24);
        wrong += color.GetColorRef() != (0xFF000000 | value);
        if (value % 11 != 0) continue;
        color.SetKind(ColorKind::Cmyk);
        wrong += color.GetColorRef() != (0xFF000000 | value);
        color.SetKind(ColorKind::Rgb);
        wrong += color.GetColorRef() != (0xFF000000 | value);
    }
    EXPECT_EQ(wrong, 0u);
}

TEST(Color, NumbersInTextsAreThoseOfThreeDigits) {
    constexpr unsigned kSeed = 11;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<float> any(0, 1);
    // Ties are numbers of eighths and sixteenths of a thousandth's half that a float has exactly.
    for (int i = 0; i <= 20'000; ++i) {
        const float value = i <= 16'000 ? static_cast<float>(i) / 16'000 : any(random);
        Color color;
        color.SetGray(value);
        char expected[16];
        std::snprintf(expected, sizeof expected, "%.3f", static_cast<double>(value));
        std::string shortened(expected);
        shortened.erase(shortened.find_last_not_of('0') + 1);
        if (shortened.back() == '.') shortened.pop_back();
        ASSERT_EQ(TextOf(color), "Gray(" + shortened + ")") << value;

        color.SetCmyk({value, any(random), any(random), any(random)});
        const ColorText text = color.GetText();
        Color read;
        ASSERT_EQ(read.SetText({text.units, text.length}), Color::Parsed::Set);
        for (std::size_t c = 0; c < 4; ++c) {
            ASSERT_NEAR(read.Components()[c], color.Components()[c], 0.000501);
        }
        ASSERT_EQ(TextOf(read), TextOf(color));
    }
}

TEST(Color, ModelsConvertByTheirFormulas) {
    const struct {
        ColorKind kind;
        ColorComponents from;
        RgbColor rgb;
        CmykColor cmyk;
        float gray;
    } kCases[] = {
        {ColorKind::Rgb, {1, 0, 0, 0}, {1, 0, 0}, {0, 1, 1, 0}, 0.3f},
        {ColorKind::Rgb, {1, 1, 1, 0}, {1, 1, 1}, {0, 0, 0, 0}, 1},
        {ColorKind::Rgb,
         {0.5f, 0.75f, 0.25f, 0},
         {0.5f, 0.75f, 0.25f},
         {0.25f, 0, 0.5f, 0.25f},
         0.62f},
        {ColorKind::Cmyk,
         {0.5f, 0, 0.25f, 0.25f},
         {0.25f, 0.75f, 0.5f},
         {0.5f, 0, 0.25f, 0.25f},
         0.5725f},
        {ColorKind::Cmyk, {1, 1, 1, 1}, {0, 0, 0}, {1, 1, 1, 1}, 0},
        {ColorKind::Gray, {0.25f, 0, 0, 0}, {0.25f, 0.25f, 0.25f}, {0, 0, 0, 0.75f}, 0.25f},
        {ColorKind::D, {1, 1, 1, 1}, {0, 0, 0}, {0, 0, 0, 0}, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        Color color;
        color.SetRaw(c.kind, c.from);
        const RgbColor rgb = color.GetRgb();
        const CmykColor cmyk = color.GetCmyk();
        const float got[] = {rgb.red,      rgb.green,   rgb.blue,   cmyk.cyan,
                             cmyk.magenta, cmyk.yellow, cmyk.black, color.GetGray()};
        const float wanted[] = {c.rgb.red,      c.rgb.green,   c.rgb.blue,   c.cmyk.cyan,
                                c.cmyk.magenta, c.cmyk.yellow, c.cmyk.black, c.gray};
        for (std::size_t i = 0; i < std::size(got); ++i) EXPECT_FLOAT_EQ(got[i], wanted[i]) << i;
        for (const ColorKind kind : {ColorKind::Rgb, ColorKind::Cmyk, ColorKind::Gray}) {
            Color converted = color;
            EXPECT_EQ(converted.SetKind(kind), kind != c.kind);
            ColorComponents raw = {rgb.red, rgb.green, rgb.blue, 0};
            if (kind == ColorKind::Cmyk) raw = {cmyk.cyan, cmyk.magenta, cmyk.yellow, cmyk.black};
            if (kind == ColorKind::Gray) raw = {color.GetGray(), 0, 0, 0};
            EXPECT_EQ(converted.Components(), raw);
        }
        Color special = color;
        special.SetKind(ColorKind::N);
        EXPECT_EQ(special.Components(), (ColorComponents{0, 0, 0, 1}));
        EXPECT_EQ(special.GetColorRef(), 0xFF000000);
    }
}

TEST(Color, NumbersOutOfRangeAreClampedAndEqualityIsOfWhatIsUsed) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Color color, other;
    color.SetCmyk({kNone, -kInfinity, kInfinity, -0.0f});
    EXPECT_EQ(TextOf(color), "CMYK(0,0,1,0)");
    other.SetCmyk({0, 0, 1, 0});
    EXPECT_TRUE(color.IsEqual(other));
    for (int used = 0;
         const ColorKind kind : {ColorKind::A, ColorKind::Gray, ColorKind::Rgb, ColorKind::Cmyk}) {
        for (int changed = 0; changed < 4; ++changed) {
            ColorComponents components = {0.1f, 0.2f, 0.3f, 0.4f};
            color.SetRaw(kind, components);
            components[static_cast<std::size_t>(changed)] += 0.0000001f;
            other.SetRaw(kind, components);
            EXPECT_EQ(color.IsEqual(other), changed >= used) << used << ' ' << changed;
        }
        used += used == 1 ? 2 : 1;
    }
    EXPECT_FALSE(Color(ColorKind::A).IsEqual(Color(ColorKind::D)));
}

}  // namespace
}  // namespace AUX
