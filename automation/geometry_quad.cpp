#include <algorithm>
#include <array>

#include "automation/geometry_call.h"
#include "automation/geometry_math.h"

namespace AUX {
namespace {

using geometry::GiveOrClear;
using geometry::ToResult;

template <class Number>
struct Edge {
    PointOf<Number> from, to;
};

template <class Number>
std::array<Edge<Number>, 4> EdgesOf(const QuadOf<Number>& quad) noexcept {
    const PointOf<Number> p0{quad.x0, quad.y0};
    const PointOf<Number> p1{quad.x1, quad.y1};
    const PointOf<Number> p2{quad.x2, quad.y2};
    const PointOf<Number> p3{quad.x3, quad.y3};
    return {{{p0, p1}, {p1, p2}, {p2, p3}, {p3, p0}}};
}

/// Even-odd rule along the ray from the point to smaller x.
template <class Number>
bool IsInside(const QuadOf<Number>& quad, const PointOf<Number>& point) noexcept {
    bool inside = false;
    for (const auto& [from, to] : EdgesOf(quad)) {
        const PointOf<Number>& low = from.y < to.y ? from : to;
        const PointOf<Number>& high = from.y < to.y ? to : from;
        if (!(low.y <= point.y && point.y < high.y)) continue;
        const Number x = low.x + (point.y - low.y) * (high.x - low.x) / (high.y - low.y);
        if (x < point.x) inside = !inside;
    }
    return inside;
}

/// Which side of the edge a point is on; a point on the edge's line counts to one of them.
template <class Number>
bool IsRightOf(const Edge<Number>& edge, const PointOf<Number>& point) noexcept {
    return (edge.to.x - edge.from.x) * (point.y - edge.from.y) -
               (edge.to.y - edge.from.y) * (point.x - edge.from.x) <
           0;
}

template <class Number>
bool Cross(const Edge<Number>& one, const Edge<Number>& other) noexcept {
    return IsRightOf(one, other.from) != IsRightOf(one, other.to) &&
           IsRightOf(other, one.from) != IsRightOf(other, one.to);
}

template <class Number>
VARIANT_BOOL IsInQuad(const QuadOf<Number>& quad, const PointOf<Number>& point) noexcept {
    return ToResult(IsInside(quad, point));
}

template <class Number>
VARIANT_BOOL Meet(const QuadOf<Number>& one, const QuadOf<Number>& other) noexcept {
    for (const Edge<Number>& edge : EdgesOf(one)) {
        for (const Edge<Number>& otherEdge : EdgesOf(other)) {
            if (Cross(edge, otherEdge)) return VARIANT_TRUE;
        }
    }
    return ToResult(IsInside(one, {other.x0, other.y0}) || IsInside(other, {one.x0, one.y0}));
}

template <class Number>
QuadOf<Number> CornersOf(const RectOf<Number>& rect) noexcept {
    return {rect.left,  rect.bottom, rect.right, rect.bottom,
            rect.right, rect.top,    rect.left,  rect.top};
}

template <class Number>
RectOf<Number> Bounds(const QuadOf<Number>& quad) noexcept {
    const auto [left, right] = std::minmax({quad.x0, quad.x1, quad.x2, quad.x3});
    const auto [bottom, top] = std::minmax({quad.y0, quad.y1, quad.y2, quad.y3});
    return {left, bottom, right, top};
}

}  // namespace

HRESULT GeometryMath::QuadContains(const Quad* quad, const Point* point,
                                   VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, IsInQuad<double>, quad, point);
}

HRESULT GeometryMath::QuadContainsF(const QuadF* quad, const PointF* point,
                                    VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, IsInQuad<float>, quad, point);
}

HRESULT GeometryMath::QuadsIntersect(const Quad* one, const Quad* other,
                                     VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, Meet<double>, one, other);
}

HRESULT GeometryMath::QuadsIntersectF(const QuadF* one, const QuadF* other,
                                      VARIANT_BOOL* result) noexcept {
    return GiveOrClear(result, Meet<float>, one, other);
}

HRESULT GeometryMath::RectToQuad(const Rect* rect, Quad* result) noexcept {
    return GiveOrClear(result, CornersOf<double>, rect);
}

HRESULT GeometryMath::RectToQuadF(const RectF* rect, QuadF* result) noexcept {
    return GiveOrClear(result, CornersOf<float>, rect);
}

HRESULT GeometryMath::QuadBounds(const Quad* quad, Rect* result) noexcept {
    return GiveOrClear(result, Bounds<double>, quad);
}

HRESULT GeometryMath::QuadBoundsF(const QuadF* quad, RectF* result) noexcept {
    return GiveOrClear(result, Bounds<float>, quad);
}

}  // namespace AUX
