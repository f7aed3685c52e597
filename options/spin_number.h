#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What a NumericSpinEdit keeps and does, without its windows: a whole number, and the text by
/// which it is shown in some unit. The number outlives any change of unit and any showing, since a
/// text is only taken in where it differs from the one that was shown last.
struct SpinNumber {
    std::int32_t Minimum = 0;
    std::int32_t Maximum = 100;
    std::int32_t Value = 0;
    /// The number shown is Value x Numerator / Denominator; a 0 in either counts as 1.
    std::int32_t Numerator = 1;
    std::int32_t Denominator = 1;
    /// Most digits behind the point; from kMostDecimals on there are no more that a number has.
    std::uint32_t Decimals = 3;
    /// What was shown last, terminated: a sign, 19 digits, a point and the decimals at most.
    char LastText[40] = "";

    static constexpr std::uint32_t kMostDecimals = 15;

    /// Brings a number into the range; with a range that is upside down to its minimum or maximum.
    [[nodiscard]] std::int32_t Clamp(std::int64_t number) const noexcept;

    /// Writes LastText: at least one digit on each side of the point, and a '-' for what is less
    /// than 0 as it is shown.
    void Show() noexcept;

    /// Takes in what stands in the edit: blanks, a sign, digits, and after a point up to four
    /// digits more. What follows is not looked at. An empty text gives the minimum, LastText and
    /// what begins otherwise leave Value, but within the range.
    void TakeIn(std::string_view text) noexcept;

    /// Moves by `clicks` units as shown, each cut to whole steps of Value.
    void Step(std::int32_t clicks) noexcept;
};
