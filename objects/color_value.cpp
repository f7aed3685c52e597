#include "objects/color_value.h"

namespace AUX {

namespace {

void Put(float* place, float value) noexcept {
    if (place) *place = value;
}

/// Reads any colour by its interface.
HRESULT Read(IColorValue& from, Color& color) noexcept {
    LONG kind = 0;
    ColorComponents components{};
    HRESULT hr = from.GetKind(&kind);
    if (FAILED(hr)) return hr;
    hr = from.GetComponents(&components[0], &components[1], &components[2], &components[3]);
    if (FAILED(hr)) return hr;
    if (!Color::IsKind(kind)) return E_INVALIDARG;
    color.SetRaw(static_cast<ColorKind>(kind), components);
    return S_OK;
}

}  // namespace

HRESULT ColorValue::GetKind(LONG* kind) noexcept { return Give(kind, color_.Kind()); }

HRESULT ColorValue::SetKind(LONG kind) noexcept {
    if (!Color::IsKind(kind)) return S_FALSE;
    return color_.SetKind(static_cast<ColorKind>(kind)) ? S_FALSE : S_OK;
}

HRESULT ColorValue::GetText(BSTR* text) noexcept {
    const ColorText written = color_.GetText();
    return GiveText(text, written.units, written.length);
}

HRESULT ColorValue::SetText(BSTR text) noexcept {
    switch (color_.SetText({text, SysStringLen(text)})) {
        case Color::Parsed::Set:
        case Color::Parsed::SameKind:
            return S_OK;
        default:
            return S_FALSE;
    }
}

HRESULT ColorValue::GetColorRef(ULONG* value) noexcept { return Give(value, color_.GetColorRef()); }

HRESULT ColorValue::SetColorRef(ULONG value) noexcept {
    color_.SetColorRef(value);
    return S_OK;
}

HRESULT ColorValue::IsSpecial(VARIANT_BOOL* result) noexcept {
    return result ? Give(result, ToVariantBool(color_.IsSpecial())) : E_INVALIDARG;
}

HRESULT ColorValue::GetRGB(float* red, float* green, float* blue) noexcept {
    if (!red && !green && !blue) return E_INVALIDARG;
    const RgbColor rgb = color_.GetRgb();
    Put(red, rgb.red);
    Put(green, rgb.green);
    Put(blue, rgb.blue);
    return S_OK;
}

HRESULT ColorValue::SetRGB(float red, float green, float blue) noexcept {
    color_.SetRgb({red, green, blue});
    return S_OK;
}

HRESULT ColorValue::GetCMYK(float* cyan, float* magenta, float* yellow, float* black) noexcept {
    if (!cyan && !magenta && !yellow && !black) return E_INVALIDARG;
    const CmykColor cmyk = color_.GetCmyk();
    Put(cyan, cmyk.cyan);
    Put(magenta, cmyk.magenta);
    Put(yellow, cmyk.yellow);
    Put(black, cmyk.black);
    return S_OK;
}

HRESULT ColorValue::SetCMYK(float cyan, float magenta, float yellow, float black) noexcept {
    color_.SetCmyk({cyan, magenta, yellow, black});
    return S_OK;
}

HRESULT ColorValue::GetGray(float* gray) noexcept {
    return gray ? Give(gray, color_.GetGray()) : E_INVALIDARG;
}

HRESULT ColorValue::SetGray(float gray) noexcept {
    color_.SetGray(gray);
    return S_OK;
}

HRESULT ColorValue::GetComponents(float* c0, float* c1, float* c2, float* c3) noexcept {
    const ColorComponents& components = color_.Components();
    Put(c0, components[0]);
    Put(c1, components[1]);
    Put(c2, components[2]);
    Put(c3, components[3]);
    return S_OK;
}

HRESULT ColorValue::Assign(IColorValue* other) noexcept {
    return other ? Read(*other, color_) : E_INVALIDARG;
}

HRESULT ColorValue::Clone(IColorValue** copy) noexcept {
    return MakeInto<ColorValue>(copy, color_);
}

HRESULT ColorValue::IsEqual(IColorValue* other, VARIANT_BOOL* result) noexcept {
    if (!result) return E_POINTER;
    *result = VARIANT_FALSE;
    Color read;
    if (!other) return S_OK;
    const HRESULT hr = Read(*other, read);
    if (SUCCEEDED(hr)) *result = ToVariantBool(color_.IsEqual(read));
    return hr;
}

}  // namespace AUX
