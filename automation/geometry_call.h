#pragma once

#include "automation/geometry_records.h"
#include "platform/com.h"

namespace AUX::geometry {

/// Checks the place for the result, then the arguments, then stores what `compute` makes of them:
/// in one piece at the end, so that the place may be an argument.
template <class Result, class Compute, class... Arguments>
HRESULT Give(Result* result, Compute compute, const Arguments*... arguments) noexcept {
    if (!result) return E_POINTER;
    if (!(arguments && ...)) return E_INVALIDARG;
    *result = compute(*arguments...);
    return S_OK;
}

/// Give, with a result that is all zero if an argument is null.
template <class Result, class Compute, class... Arguments>
HRESULT GiveOrClear(Result* result, Compute compute, const Arguments*... arguments) noexcept {
    const HRESULT hr = Give(result, compute, arguments...);
    if (hr == E_INVALIDARG) *result = Result{};
    return hr;
}

constexpr VARIANT_BOOL ToResult(bool answer) { return answer ? VARIANT_TRUE : VARIANT_FALSE; }

/// Maps a point with the matrix's precision, and gives it in its own.
template <class Number, class Wide>
PointOf<Number> Mapped(const MatrixOf<Wide>& m, const PointOf<Number>& point) noexcept {
    const Wide x = point.x;
    const Wide y = point.y;
    return {static_cast<Number>(m.a * x + m.c * y + m.e),
            static_cast<Number>(m.b * x + m.d * y + m.f)};
}

}  // namespace AUX::geometry
