#include <algorithm>
#include <cmath>

#include "automation/geometry_call.h"
#include "automation/geometry_math.h"

namespace AUX {
namespace {

using geometry::Give;
using geometry::Mapped;

template <class Wide>
MatrixOf<Wide> WithoutMove(const MatrixOf<Wide>& m) noexcept {
    return {m.a, m.b, m.c, m.d, 0, 0};
}

template <class Number, class Wide>
PointOf<Number> MappedVector(const MatrixOf<Wide>& m, const PointOf<Number>& vector) noexcept {
    return Mapped(WithoutMove(m), vector);
}

template <class Number, class Wide>
RectOf<Number> MappedRect(const MatrixOf<Wide>& m, const RectOf<Number>& rect) noexcept {
    const PointOf<Number> corners[] = {Mapped(m, PointOf<Number>{rect.left, rect.bottom}),
                                       Mapped(m, PointOf<Number>{rect.left, rect.top}),
                                       Mapped(m, PointOf<Number>{rect.right, rect.bottom}),
                                       Mapped(m, PointOf<Number>{rect.right, rect.top})};
    RectOf<Number> box{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const PointOf<Number>& corner : corners) {
        box = {std::min(box.left, corner.x), std::min(box.bottom, corner.y),
               std::max(box.right, corner.x), std::max(box.top, corner.y)};
    }
    return box;
}

template <class Number, class Wide>
RectOf<Number> MappedRectVector(const MatrixOf<Wide>& m, const RectOf<Number>& rect) noexcept {
    return MappedRect(WithoutMove(m), rect);
}

template <class Number, class Wide>
HRESULT MapCoordinates(const MatrixOf<Wide>* matrix, Number* x, Number* y) noexcept {
    if (!matrix || !x || !y) return E_INVALIDARG;
    const PointOf<Number> mapped = Mapped(*matrix, PointOf<Number>{*x, *y});
    *x = mapped.x;
    *y = mapped.y;
    return S_OK;
}

template <class Number, class Wide>
QuadOf<Number> MappedQuad(const MatrixOf<Wide>& m, const QuadOf<Number>& quad) noexcept {
    const PointOf<Number> p0 = Mapped(m, PointOf<Number>{quad.x0, quad.y0});
    const PointOf<Number> p1 = Mapped(m, PointOf<Number>{quad.x1, quad.y1});
    const PointOf<Number> p2 = Mapped(m, PointOf<Number>{quad.x2, quad.y2});
    const PointOf<Number> p3 = Mapped(m, PointOf<Number>{quad.x3, quad.y3});
    return {p0.x, p0.y, p1.x, p1.y, p2.x, p2.y, p3.x, p3.y};
}

/// How much the axes lean towards each other: the tangent of the angle by which each leans, below
/// 1. With the lengths' product u and the determinant g of a, b, c, d it is, squared,
/// (g^2 + u^2 - 2 u |g|) / (u^2 - g^2), which is worked out here without taking apart numbers that
/// are nearly the same: u^2 - g^2 is the square of the axes' scalar product.
double SkewOf(const Matrix& m) noexcept {
    constexpr double kLeastSquare = 1e-10;
    const double scalar = m.a * m.c + m.b * m.d;
    if (scalar * scalar < kLeastSquare) return 0;
    const double lengths = std::hypot(m.a, m.b) * std::hypot(m.c, m.d);
    return std::abs(scalar) / (lengths + std::abs(m.a * m.d - m.c * m.b));
}

}  // namespace

HRESULT GeometryMath::Decompose(const Matrix* matrix, double* translateX, double* translateY,
                                double* rotation, double* scaleX, double* scaleY,
                                double* skew) noexcept {
    if (!translateX || !translateY || !rotation || !scaleX || !scaleY || !skew) return E_POINTER;
    if (!matrix) return E_INVALIDARG;
    const Matrix m = *matrix;  // The results may lie in it.
    *translateX = *translateY = *rotation = *skew = 0;
    *scaleX = *scaleY = 1;
    if (m.a * m.d == m.b * m.c) return S_OK;
    const double k = SkewOf(m);
    const double square = k * k + 1;
    const double sx = std::hypot(m.a, m.b) / std::sqrt(square);
    const double sy = std::hypot(m.c, m.d) / std::sqrt(square);
    const double cosine = (m.b / sx * k + m.a / sx) / square;
    const double sine = (m.b / sx - m.a / sx * k) / square;
    // The same turn as the second axis has it; it points elsewhere if the matrix mirrors.
    const double cosine2 = (m.c / sy * k + m.d / sy) / square;
    const double sine2 = (m.d / sy * k - m.c / sy) / square;
    // Of a right angle both cosines, or both sines, are only what rounding left: no sign counts.
    constexpr double kNoise = 1e-20;
    const bool mirrors = cosine2 * cosine < -kNoise || sine2 * sine < -kNoise;
    const double angle = std::atan2(std::abs(sine), cosine);  // acos is coarse near 0 and pi.
    *translateX = m.e;
    *translateY = m.f;
    *rotation = sine < 0 ? -angle : angle;
    *scaleX = sx;
    *scaleY = mirrors ? -sy : sy;
    *skew = k;
    return S_OK;
}

HRESULT GeometryMath::TransformCoordinates(const Matrix* matrix, double* x, double* y) noexcept {
    return MapCoordinates(matrix, x, y);
}

HRESULT GeometryMath::TransformCoordinatesF(const MatrixF* matrix, float* x, float* y) noexcept {
    return MapCoordinates(matrix, x, y);
}

HRESULT GeometryMath::TransformCoordinatesM(const Matrix* matrix, float* x, float* y) noexcept {
    return MapCoordinates(matrix, x, y);
}

HRESULT GeometryMath::TransformPoint(const Matrix* matrix, Point* point) noexcept {
    return Give(point, Mapped<double, double>, matrix, point);
}

HRESULT GeometryMath::TransformPointF(const MatrixF* matrix, PointF* point) noexcept {
    return Give(point, Mapped<float, float>, matrix, point);
}

HRESULT GeometryMath::TransformPointM(const Matrix* matrix, PointF* point) noexcept {
    return Give(point, Mapped<float, double>, matrix, point);
}

HRESULT GeometryMath::TransformVector(const Matrix* matrix, Point* vector) noexcept {
    return Give(vector, MappedVector<double, double>, matrix, vector);
}

HRESULT GeometryMath::TransformVectorF(const MatrixF* matrix, PointF* vector) noexcept {
    return Give(vector, MappedVector<float, float>, matrix, vector);
}

HRESULT GeometryMath::TransformVectorM(const Matrix* matrix, PointF* vector) noexcept {
    return Give(vector, MappedVector<float, double>, matrix, vector);
}

HRESULT GeometryMath::TransformRect(const Matrix* matrix, Rect* rect) noexcept {
    return Give(rect, MappedRect<double, double>, matrix, rect);
}

HRESULT GeometryMath::TransformRectF(const MatrixF* matrix, RectF* rect) noexcept {
    return Give(rect, MappedRect<float, float>, matrix, rect);
}

HRESULT GeometryMath::TransformRectM(const Matrix* matrix, RectF* rect) noexcept {
    return Give(rect, MappedRect<float, double>, matrix, rect);
}

HRESULT GeometryMath::TransformRectVector(const Matrix* matrix, Rect* rect) noexcept {
    return Give(rect, MappedRectVector<double, double>, matrix, rect);
}

HRESULT GeometryMath::TransformRectVectorF(const MatrixF* matrix, RectF* rect) noexcept {
    return Give(rect, MappedRectVector<float, float>, matrix, rect);
}

HRESULT GeometryMath::TransformRectVectorM(const Matrix* matrix, RectF* rect) noexcept {
    return Give(rect, MappedRectVector<float, double>, matrix, rect);
}

HRESULT GeometryMath::TransformQuad(const Matrix* matrix, Quad* quad) noexcept {
    return Give(quad, MappedQuad<double, double>, matrix, quad);
}

HRESULT GeometryMath::TransformQuadF(const MatrixF* matrix, QuadF* quad) noexcept {
    return Give(quad, MappedQuad<float, float>, matrix, quad);
}

HRESULT GeometryMath::TransformQuadM(const Matrix* matrix, QuadF* quad) noexcept {
    return Give(quad, MappedQuad<float, double>, matrix, quad);
}

}  // namespace AUX
