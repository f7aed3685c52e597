#pragma once

#include <array>
#include <cstdint>

#include "foundation/wstring_view.h"

namespace AUX {

/// The model of a colour. The three special kinds have no components; what they mean is up to the
/// host, the library knows their letters only.
enum class ColorKind : std::int32_t { A = -3, D = -2, N = -1, Rgb = 0, Cmyk = 1, Gray = 2 };

struct RgbColor {
    float red = 0, green = 0, blue = 0;
};
struct CmykColor {
    float cyan = 0, magenta = 0, yellow = 0, black = 0;
};
using ColorComponents = std::array<float, 4>;

/// The text of a colour, not terminated.
struct ColorText {
    static constexpr std::uint32_t kCapacity = sizeof("CMYK(0.125,0.125,0.125,0.125)");
    WCHAR units[kCapacity];
    std::uint32_t length = 0;
};

/// A colour: a kind and up to four components, each kept in 0.0 to 1.0. What is set beyond is
/// clamped; a NaN counts as 0. No operation asks for memory. Not thread-safe while it is changed.
class Color {
public:
    constexpr Color() noexcept = default;
    /// The components are 0, 0, 0, 1.
    constexpr explicit Color(ColorKind newKind) noexcept : kind(newKind) {}

    [[nodiscard]] constexpr ColorKind Kind() const noexcept { return kind; }
    [[nodiscard]] constexpr bool IsSpecial() const noexcept { return kind < ColorKind::Rgb; }
    /// The components as they are, whatever the kind. RGB uses three, gray one, where 1.0 is white.
    [[nodiscard]] constexpr const ColorComponents& Components() const noexcept { return c; }
    [[nodiscard]] static constexpr bool IsKind(std::int32_t number) noexcept {
        return number >= -3 && number <= 2;
    }

    /// Converts to another kind. A special kind loses the colour; from one, all components are 0.
    /// \return false if it has that kind already, and nothing changes.
    bool SetKind(ColorKind newKind) noexcept;

    /// The colour in each model, converted as needed; special kinds are zeros in each.
    [[nodiscard]] RgbColor GetRgb() const noexcept;
    [[nodiscard]] CmykColor GetCmyk() const noexcept;
    [[nodiscard]] float GetGray() const noexcept;
    /// GetRgb in bytes: 0xFFbbggrr.
    [[nodiscard]] std::uint32_t GetColorRef() const noexcept;

    /// Each of these sets the kind as well, and what the model does not use to 0.
    void SetRgb(RgbColor rgb) noexcept;
    void SetCmyk(CmykColor cmyk) noexcept;
    void SetGray(float gray) noexcept;
    /// \param value  0x00bbggrr; the top byte is not looked at.
    void SetColorRef(std::uint32_t value) noexcept;

    /// "RGB(1,0.5,0)", "CMYK(...)", "Gray(...)", with up to three digits behind the point whatever
    /// the locale, or the letter of a special kind.
    [[nodiscard]] ColorText GetText() const noexcept;

    /// What a text does to a colour.
    enum class Parsed { Set, SameKind, KindChanged, NotUnderstood };
    /// Reads what GetText gives, and besides: RGBD(255,128,0), CMY(...), G(...), #RRGGBB, the names
    /// of the system's colours behind a word of five letters and '(', and "-" for "N". Letters of
    /// either case; numbers are parted by any of blank, ',' and ';', are not negative, have no
    /// exponent, and are cut at 1, or 255 in RGBD. Behind the last one nothing is looked at.
    /// \return Set; for a single letter SameKind or KindChanged, as SetKind has it; NotUnderstood,
    ///         and the colour is as it was.
    [[nodiscard]] Parsed SetText(WStringView text) noexcept;

    /// Whether the kinds and the used components are exactly the same.
    [[nodiscard]] bool IsEqual(const Color& other) const noexcept;
    /// Takes a kind and components as they are, but clamped.
    void SetRaw(ColorKind newKind, const ColorComponents& components) noexcept;

private:
    [[nodiscard]] bool ParseNumbers(WStringView text, ColorKind newKind, std::size_t count,
                                    double scale) noexcept;

    ColorKind kind = ColorKind::Rgb;
    ColorComponents c = {0, 0, 0, 1};
};

}  // namespace AUX
