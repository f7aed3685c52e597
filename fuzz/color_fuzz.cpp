#include <algorithm>
#include <cmath>

#include "automation/color.h"
#include "fuzz/units.h"

namespace {

using AUX::Color;
using AUX::WStringView;

WStringView View(const AUX::ColorText& text) { return {text.units, text.length}; }

bool IsSame(const AUX::ColorText& a, const AUX::ColorText& b) {
    return std::equal(a.units, a.units + a.length, b.units, b.units + b.length);
}

}  // namespace

/// A text sets a colour whose components are in range and whose own text is read as that colour to
/// three digits, or changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<WCHAR> units = fuzz::MakeUnits(data, size);
    Color before, color;
    before.SetCmyk({0.125f, 0.5f, 0.75f, 1});
    color = before;
    if (color.SetText(fuzz::View(units)) == Color::Parsed::NotUnderstood) {
        fuzz::Require(color.IsEqual(before));
        return 0;
    }
    for (const float component : color.Components()) {
        fuzz::Require(component >= 0 && component <= 1);
    }
    Color read;
    fuzz::Require(read.SetText(View(color.GetText())) != Color::Parsed::NotUnderstood);
    fuzz::Require(read.Kind() == color.Kind() && IsSame(read.GetText(), color.GetText()));
    for (std::size_t i = 0; i < 3 && !color.IsSpecial(); ++i) {
        fuzz::Require(std::abs(read.Components()[i] - color.Components()[i]) < 0.000501f);
    }
    return 0;
}
