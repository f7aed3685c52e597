#pragma once

#include "automation/color.h"
#include "objects/frame.h"

namespace AUX {

/// A colour. What a model, a kind and a text are is told at Color. Each place for a number of
/// several may be null.
class ColorValue final : public DualObject<IColorValue> {
public:
    /// The components are 0, 0, 0, 1.
    explicit ColorValue(const Color& color) noexcept : color_(color) {}

    HRESULT STDMETHODCALLTYPE GetKind(LONG* kind) noexcept override;
    /// \return S_OK if it is of that kind already; S_FALSE if the colour was converted, or if there
    ///         is no such kind and nothing changed.
    HRESULT STDMETHODCALLTYPE SetKind(LONG kind) noexcept override;
    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) noexcept override;
    /// \return S_OK if the colour was set; S_FALSE if the text is null, empty or not understood,
    ///         and nothing changed. A single letter that is a kind gives what SetKind gives.
    HRESULT STDMETHODCALLTYPE SetText(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE GetColorRef(ULONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetColorRef(ULONG value) noexcept override;
    /// \return E_INVALIDARG for a null place.
    HRESULT STDMETHODCALLTYPE IsSpecial(VARIANT_BOOL* result) noexcept override;
    /// \return E_INVALIDARG if all places are null.
    HRESULT STDMETHODCALLTYPE GetRGB(float* red, float* green, float* blue) noexcept override;
    HRESULT STDMETHODCALLTYPE SetRGB(float red, float green, float blue) noexcept override;
    /// \return E_INVALIDARG if all places are null.
    HRESULT STDMETHODCALLTYPE GetCMYK(float* cyan, float* magenta, float* yellow,
                                      float* black) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCMYK(float cyan, float magenta, float yellow,
                                      float black) noexcept override;
    /// \return E_INVALIDARG for a null place.
    HRESULT STDMETHODCALLTYPE GetGray(float* gray) noexcept override;
    HRESULT STDMETHODCALLTYPE SetGray(float gray) noexcept override;
    /// The components as they are; S_OK also if all places are null.
    HRESULT STDMETHODCALLTYPE GetComponents(float* c0, float* c1, float* c2,
                                            float* c3) noexcept override;
    /// Takes kind and components, also from a colour that a host implements. \return E_INVALIDARG
    /// for null or for what is no kind, or the other's failure; the colour is then as it was.
    HRESULT STDMETHODCALLTYPE Assign(IColorValue* other) noexcept override;
    HRESULT STDMETHODCALLTYPE Clone(IColorValue** copy) noexcept override;
    /// Whether kinds and used components are exactly the same; false for null. Fails as Assign does
    /// for a colour that cannot be read.
    HRESULT STDMETHODCALLTYPE IsEqual(IColorValue* other, VARIANT_BOOL* result) noexcept override;

private:
    Color color_;
};

}  // namespace AUX
