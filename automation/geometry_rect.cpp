#include <algorithm>

#include "automation/geometry_call.h"
#include "automation/geometry_math.h"

namespace AUX {
namespace {

using geometry::Give;
using geometry::GiveOrClear;
using geometry::ToResult;

template <class Number>
RectOf<Number> Shared(const RectOf<Number>& one, const RectOf<Number>& other) noexcept {
    RectOf<Number> shared;
    shared.left = std::max(one.left, other.left);
    shared.right = std::max(std::min(one.right, other.right), shared.left);
    shared.top = std::min(one.top, other.top);
    shared.bottom = std::min(std::max(one.bottom, other.bottom), shared.top);
    return shared;
}

template <class Number>
bool HasSize(const RectOf<Number>& rect) noexcept {
    return rect.right > rect.left && rect.top > rect.bottom;
}

template <class Number>
VARIANT_BOOL Overlap(const RectOf<Number>& one, const RectOf<Number>& other) noexcept {
    return ToResult(HasSize(one) && HasSize(other) && one.left < other.right &&
                    other.left < one.right && one.bottom < other.top && other.bottom < one.top);
}

template <class Number>
RectOf<Number> Union(const RectOf<Number>& one, const RectOf<Number>& other) noexcept {
    return {std::min(one.left, other.left), std::min(one.bottom, other.bottom),
            std::max(one.right, other.right), std::max(one.top, other.top)};
}

template <class Number>
VARIANT_BOOL AreEqual(const RectOf<Number>& one, const RectOf<Number>& other) noexcept {
    return ToResult(one.left == other.left && one.bottom == other.bottom &&
                    one.right == other.right && one.top == other.top);
}

template <class Number>
RectOf<Number> Normal(const RectOf<Number>& rect) noexcept {
    return {std::min(rect.left, rect.right), std::min(rect.bottom, rect.top),
            std::max(rect.left, rect.right), std::max(rect.bottom, rect.top)};
}

template <class Number>
VARIANT_BOOL IsInRect(const RectOf<Number>& rect, const PointOf<Number>& point) noexcept {
    return ToResult(rect.left <= point.x && point.x < rect.right && rect.bottom < point.y &&
                    point.y <= rect.top);
}

}  // namespace

HRESULT GeometryMath::RectIntersection(const Rect* one, const Rect* other, Rect* result) noexcept {
    return Give(result, Shared<double>, one, other);
}

HRESULT GeometryMath::RectIntersectionF(const RectF* one, const RectF* other,
                                        RectF* result) noexcept {
    return Give(result, Shared<float>, one, other);
}

HRESULT GeometryMath::RectsIntersect(const Rect* one, const Rect* other,
                                     VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, Overlap<double>, one, other);
}

HRESULT GeometryMath::RectsIntersectF(const RectF* one, const RectF* other,
                                      VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, Overlap<float>, one, other);
}

HRESULT GeometryMath::RectUnion(const Rect* one, const Rect* other, Rect* result) noexcept {
    return Give(result, Union<double>, one, other);
}

HRESULT GeometryMath::RectUnionF(const RectF* one, const RectF* other, RectF* result) noexcept {
    return Give(result, Union<float>, one, other);
}

HRESULT GeometryMath::RectIsEqual(const Rect* one, const Rect* other,
                                  VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, AreEqual<double>, one, other);
}

HRESULT GeometryMath::RectIsEqualF(const RectF* one, const RectF* other,
                                   VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, AreEqual<float>, one, other);
}

HRESULT GeometryMath::RectNormalize(Rect* rect) noexcept {
    return Give(rect, Normal<double>, rect);
}

HRESULT GeometryMath::RectNormalizeF(RectF* rect) noexcept {
    return Give(rect, Normal<float>, rect);
}

HRESULT GeometryMath::RectContains(const Rect* rect, const Point* point,
                                   VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, IsInRect<double>, rect, point);
}

HRESULT GeometryMath::RectContainsF(const RectF* rect, const PointF* point,
                                    VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, IsInRect<float>, rect, point);
}

}  // namespace AUX
