#include "automation/color.h"

#include <algorithm>
#include <cstring>

namespace AUX {
namespace {

/// A NaN fails the comparison, and -0.0 becomes 0.0: equal colours are equal in each bit.
float Clamp(float value) { return value > 0 ? std::min(value, 1.0f) : 0.0f; }

/// The shares of the channels in a gray, computed in 64 bits, so that white gives 1.0.
double Weighted(float red, float green, float blue) {
    return 0.3 * red + 0.59 * green + 0.11 * blue;
}

std::uint32_t ToByte(float channel) {
    return static_cast<std::uint32_t>(channel * 255.0f + 0.5f) & 0xFF;
}

/// How many components each kind uses.
std::size_t UsedComponents(ColorKind kind) {
    switch (kind) {
        case ColorKind::Rgb:
            return 3;
        case ColorKind::Cmyk:
            return 4;
        case ColorKind::Gray:
            return 1;
        default:
            return 0;
    }
}

}  // namespace

bool Color::SetKind(ColorKind newKind) noexcept {
    if (newKind == kind) return false;
    switch (newKind) {
        case ColorKind::Rgb:
            SetRgb(GetRgb());
            break;
        case ColorKind::Cmyk:
            SetCmyk(GetCmyk());
            break;
        case ColorKind::Gray:
            SetGray(GetGray());
            break;
        default:
            *this = Color(newKind);
    }
    return true;
}

RgbColor Color::GetRgb() const noexcept {
    const auto channel = [this](float ink) { return 1 - std::min(1.0f, ink + c[3]); };
    switch (kind) {
        case ColorKind::Rgb:
            return {c[0], c[1], c[2]};
        case ColorKind::Cmyk:
            return {channel(c[0]), channel(c[1]), channel(c[2])};
        case ColorKind::Gray:
            return {c[0], c[0], c[0]};
        default:
            return {};
    }
}

CmykColor Color::GetCmyk() const noexcept {
    switch (kind) {
        case ColorKind::Rgb: {
            const float cyan = 1 - c[0], magenta = 1 - c[1], yellow = 1 - c[2];
            const float black = std::min({cyan, magenta, yellow});
            return {cyan - black, magenta - black, yellow - black, black};
        }
        case ColorKind::Cmyk:
            return {c[0], c[1], c[2], c[3]};
        case ColorKind::Gray:
            return {0, 0, 0, 1 - c[0]};
        default:
            return {};
    }
}

float Color::GetGray() const noexcept {
    const double weighted = Weighted(c[0], c[1], c[2]);
    switch (kind) {
        case ColorKind::Rgb:
            return static_cast<float>(weighted);
        case ColorKind::Cmyk:
            return static_cast<float>(1 - std::min(1.0, weighted + static_cast<double>(c[3])));
        case ColorKind::Gray:
            return c[0];
        default:
            return 0;
    }
}

std::uint32_t Color::GetColorRef() const noexcept {
    const RgbColor rgb = GetRgb();
    return 0xFF000000 | ToByte(rgb.blue) << 16 | ToByte(rgb.green) << 8 | ToByte(rgb.red);
}

void Color::SetRgb(RgbColor rgb) noexcept {
    SetRaw(ColorKind::Rgb, {rgb.red, rgb.green, rgb.blue, 0});
}

void Color::SetCmyk(CmykColor cmyk) noexcept {
    SetRaw(ColorKind::Cmyk, {cmyk.cyan, cmyk.magenta, cmyk.yellow, cmyk.black});
}

void Color::SetGray(float gray) noexcept { SetRaw(ColorKind::Gray, {gray, 0, 0, 0}); }

void Color::SetColorRef(std::uint32_t value) noexcept {
    const auto channel = [value](int shift) {
        return static_cast<float>(value >> shift & 0xFF) / 255.0f;
    };
    SetRgb({channel(0), channel(8), channel(16)});
}

bool Color::IsEqual(const Color& other) const noexcept {
    return kind == other.kind &&
           std::memcmp(c.data(), other.c.data(), UsedComponents(kind) * sizeof(float)) == 0;
}

void Color::SetRaw(ColorKind newKind, const ColorComponents& components) noexcept {
    kind = newKind;
    std::transform(components.begin(), components.end(), c.begin(), Clamp);
}

}  // namespace AUX
