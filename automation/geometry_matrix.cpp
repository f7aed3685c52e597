#include <cmath>
#include <numbers>

#include "automation/geometry_call.h"
#include "automation/geometry_math.h"

namespace AUX {
namespace {

using geometry::Give;
using geometry::ToResult;

template <class Number>
constexpr MatrixOf<Number> kIdentity{1, 0, 0, 1, 0, 0};

template <class Number>
VARIANT_BOOL AreEqual(const MatrixOf<Number>& m, const MatrixOf<Number>& n) noexcept {
    return ToResult(m.a == n.a && m.b == n.b && m.c == n.c && m.d == n.d && m.e == n.e &&
                    m.f == n.f);
}

template <class Number>
VARIANT_BOOL HasInverse(const MatrixOf<Number>& m) noexcept {
    return ToResult(m.a * m.d != m.b * m.c);
}

template <class Number>
Number InverseDeterminant(const MatrixOf<Number>& m) noexcept {
    const Number determinant = m.a * m.d - m.b * m.c;
    return determinant == 0 ? 1 : 1 / determinant;
}

template <class Number>
Number MeanScale(const MatrixOf<Number>& m) noexcept {
    constexpr double kHalfRoot = 0.707106781;  // With these nine digits.
    const auto h = static_cast<Number>((m.a + m.c) * kHalfRoot);
    const auto v = static_cast<Number>((m.b + m.d) * kHalfRoot);
    return std::sqrt(h * h + v * v);
}

template <class Number>
MatrixOf<Number> Inverse(const MatrixOf<Number>& m) noexcept {
    const Number k = InverseDeterminant(m);
    MatrixOf<Number> inverse{m.d * k, -m.b * k, -m.c * k, m.a * k};
    inverse.e = -m.e * inverse.a - m.f * inverse.c;
    inverse.f = -m.e * inverse.b - m.f * inverse.d;
    return inverse;
}

template <class Number>
MatrixOf<Number> Product(const MatrixOf<Number>& m, const MatrixOf<Number>& n) noexcept {
    return {m.a * n.a + m.b * n.c, m.a * n.b + m.b * n.d,       m.c * n.a + m.d * n.c,
            m.c * n.b + m.d * n.d, m.e * n.a + m.f * n.c + n.e, m.e * n.b + m.f * n.d + n.f};
}

/// Maps (0, 0), (1, 0), (0, 1) to the three points.
template <class Number>
MatrixOf<Number> OntoTriangle(const PointOf<Number>& p1, const PointOf<Number>& p2,
                              const PointOf<Number>& p3) noexcept {
    return {p2.x - p1.x, p2.y - p1.y, p3.x - p1.x, p3.y - p1.y, p1.x, p1.y};
}

template <class Number>
MatrixOf<Number> BetweenTriangles(const PointOf<Number>& p1, const PointOf<Number>& p2,
                                  const PointOf<Number>& p3, const PointOf<Number>& q1,
                                  const PointOf<Number>& q2, const PointOf<Number>& q3) noexcept {
    return Product(Inverse(OntoTriangle(p1, p2, p3)), OntoTriangle(q1, q2, q3));
}

/// The second point, turned by a quarter about the first.
template <class Number>
PointOf<Number> QuarterTurned(const PointOf<Number>& p1, const PointOf<Number>& p2) noexcept {
    return {p1.x - (p2.y - p1.y), p1.y + (p2.x - p1.x)};
}

template <class Number>
MatrixOf<Number> BetweenSegments(const PointOf<Number>& p1, const PointOf<Number>& p2,
                                 const PointOf<Number>& q1, const PointOf<Number>& q2) noexcept {
    return BetweenTriangles(p1, p2, QuarterTurned(p1, p2), q1, q2, QuarterTurned(q1, q2));
}

template <class Number>
MatrixOf<Number> BetweenRects(const RectOf<Number>& from, const RectOf<Number>& to) noexcept {
    const Number fromWidth = from.right - from.left;
    const Number fromHeight = from.top - from.bottom;
    const Number toWidth = to.right - to.left;
    const Number toHeight = to.top - to.bottom;
    const bool scales = fromWidth != 0 && fromHeight != 0 && toWidth != 0 && toHeight != 0;
    const Number sx = scales ? toWidth / fromWidth : 1;
    const Number sy = scales ? toHeight / fromHeight : 1;
    return {sx, 0, 0, sy, to.left - sx * from.left, to.bottom - sy * from.bottom};
}

/// Of either precision's degrees, computed in 64 bits.
template <class Number>
Number ToRadians(Number degrees) noexcept {
    return static_cast<Number>(degrees * std::numbers::pi / 180);
}

template <class Number>
MatrixOf<Number> Rotated(const MatrixOf<Number>& m, Number degrees) noexcept {
    const Number radians = ToRadians(degrees);
    const Number s = std::sin(radians);
    const Number k = std::cos(radians);
    return {m.a * k - m.b * s, m.b * k + m.a * s, m.c * k - m.d * s,
            m.d * k + m.c * s, m.e * k - m.f * s, m.f * k + m.e * s};
}

template <class Number>
MatrixOf<Number> Scaled(const MatrixOf<Number>& m, Number sx, Number sy) noexcept {
    return {m.a * sx, m.b * sy, m.c * sx, m.d * sy, m.e * sx, m.f * sy};
}

template <class Number>
MatrixOf<Number> Skewed(const MatrixOf<Number>& m, Number xDegrees, Number yDegrees) noexcept {
    const Number tx = std::tan(ToRadians(xDegrees));
    const Number ty = std::tan(ToRadians(yDegrees));
    if (!std::isfinite(tx) || !std::isfinite(ty) || (tx == 0 && ty == 0)) return m;
    return {m.a + m.b * tx, m.b + m.a * ty, m.c + m.d * tx,
            m.d + m.c * ty, m.e + m.f * tx, m.f + m.e * ty};
}

template <class Number>
MatrixOf<Number> Moved(const MatrixOf<Number>& m, Number dx, Number dy) noexcept {
    return {m.a, m.b, m.c, m.d, m.e + dx, m.f + dy};
}

}  // namespace

HRESULT GeometryMath::IsZero(const Matrix* matrix, VARIANT_BOOL* result) noexcept {
    return Give(
        result, [](const Matrix& m) { return AreEqual(m, Matrix{}); }, matrix);
}

HRESULT GeometryMath::IsZeroF(const MatrixF* matrix, VARIANT_BOOL* result) noexcept {
    return Give(
        result, [](const MatrixF& m) { return AreEqual(m, MatrixF{}); }, matrix);
}

HRESULT GeometryMath::IsIdentity(const Matrix* matrix, VARIANT_BOOL* result) noexcept {
    return Give(
        result, [](const Matrix& m) { return AreEqual(m, kIdentity<double>); }, matrix);
}

HRESULT GeometryMath::IsIdentityF(const MatrixF* matrix, VARIANT_BOOL* result) noexcept {
    return Give(
        result, [](const MatrixF& m) { return AreEqual(m, kIdentity<float>); }, matrix);
}

HRESULT GeometryMath::IsInvertible(const Matrix* matrix, VARIANT_BOOL* result) noexcept {
    return Give(result, HasInverse<double>, matrix);
}

HRESULT GeometryMath::IsInvertibleF(const MatrixF* matrix, VARIANT_BOOL* result) noexcept {
    return Give(result, HasInverse<float>, matrix);
}

HRESULT GeometryMath::IsEqual(const Matrix* one, const Matrix* other,
                              VARIANT_BOOL* result) noexcept {
    return Give(result, AreEqual<double>, one, other);
}

HRESULT GeometryMath::IsEqualF(const MatrixF* one, const MatrixF* other,
                               VARIANT_BOOL* result) noexcept {
    return Give(result, AreEqual<float>, one, other);
}

HRESULT GeometryMath::GetInverseDeterminant(const Matrix* matrix, double* result) noexcept {
    return Give(result, InverseDeterminant<double>, matrix);
}

HRESULT GeometryMath::GetInverseDeterminantF(const MatrixF* matrix, float* result) noexcept {
    return Give(result, InverseDeterminant<float>, matrix);
}

HRESULT GeometryMath::GetMeanScale(const Matrix* matrix, double* result) noexcept {
    return Give(result, MeanScale<double>, matrix);
}

HRESULT GeometryMath::GetMeanScaleF(const MatrixF* matrix, float* result) noexcept {
    return Give(result, MeanScale<float>, matrix);
}

HRESULT GeometryMath::SetIdentity(Matrix* result) noexcept {
    return Give(result, [] { return kIdentity<double>; });
}

HRESULT GeometryMath::SetIdentityF(MatrixF* result) noexcept {
    return Give(result, [] { return kIdentity<float>; });
}

HRESULT GeometryMath::Invert(const Matrix* matrix, Matrix* result) noexcept {
    return Give(result, Inverse<double>, matrix);
}

HRESULT GeometryMath::InvertF(const MatrixF* matrix, MatrixF* result) noexcept {
    return Give(result, Inverse<float>, matrix);
}

HRESULT GeometryMath::Multiply(const Matrix* first, const Matrix* second, Matrix* result) noexcept {
    return Give(result, Product<double>, first, second);
}

HRESULT GeometryMath::MultiplyF(const MatrixF* first, const MatrixF* second,
                                MatrixF* result) noexcept {
    return Give(result, Product<float>, first, second);
}

HRESULT GeometryMath::SegmentToSegment(const Point* p1, const Point* p2, const Point* q1,
                                       const Point* q2, Matrix* result) noexcept {
    return Give(result, BetweenSegments<double>, p1, p2, q1, q2);
}

HRESULT GeometryMath::SegmentToSegmentF(const PointF* p1, const PointF* p2, const PointF* q1,
                                        const PointF* q2, MatrixF* result) noexcept {
    return Give(result, BetweenSegments<float>, p1, p2, q1, q2);
}

HRESULT GeometryMath::TriangleToTriangle(const Point* p1, const Point* p2, const Point* p3,
                                         const Point* q1, const Point* q2, const Point* q3,
                                         Matrix* result) noexcept {
    return Give(result, BetweenTriangles<double>, p1, p2, p3, q1, q2, q3);
}

HRESULT GeometryMath::TriangleToTriangleF(const PointF* p1, const PointF* p2, const PointF* p3,
                                          const PointF* q1, const PointF* q2, const PointF* q3,
                                          MatrixF* result) noexcept {
    return Give(result, BetweenTriangles<float>, p1, p2, p3, q1, q2, q3);
}

HRESULT GeometryMath::RectToRect(const Rect* from, const Rect* to, Matrix* result) noexcept {
    return Give(result, BetweenRects<double>, from, to);
}

HRESULT GeometryMath::RectToRectF(const RectF* from, const RectF* to, MatrixF* result) noexcept {
    return Give(result, BetweenRects<float>, from, to);
}

HRESULT GeometryMath::Rotate(const Matrix* matrix, double degrees, Matrix* result) noexcept {
    return Give(
        result, [=](const Matrix& m) { return Rotated(m, degrees); }, matrix);
}

HRESULT GeometryMath::RotateF(const MatrixF* matrix, float degrees, MatrixF* result) noexcept {
    return Give(
        result, [=](const MatrixF& m) { return Rotated(m, degrees); }, matrix);
}

HRESULT GeometryMath::Scale(const Matrix* matrix, double sx, double sy, Matrix* result) noexcept {
    return Give(
        result, [=](const Matrix& m) { return Scaled(m, sx, sy); }, matrix);
}

HRESULT GeometryMath::ScaleF(const MatrixF* matrix, float sx, float sy, MatrixF* result) noexcept {
    return Give(
        result, [=](const MatrixF& m) { return Scaled(m, sx, sy); }, matrix);
}

HRESULT GeometryMath::Skew(const Matrix* matrix, double xDegrees, double yDegrees,
                           Matrix* result) noexcept {
    return Give(
        result, [=](const Matrix& m) { return Skewed(m, xDegrees, yDegrees); }, matrix);
}

HRESULT GeometryMath::SkewF(const MatrixF* matrix, float xDegrees, float yDegrees,
                            MatrixF* result) noexcept {
    return Give(
        result, [=](const MatrixF& m) { return Skewed(m, xDegrees, yDegrees); }, matrix);
}

HRESULT GeometryMath::Translate(const Matrix* matrix, double dx, double dy,
                                Matrix* result) noexcept {
    return Give(
        result, [=](const Matrix& m) { return Moved(m, dx, dy); }, matrix);
}

HRESULT GeometryMath::TranslateF(const MatrixF* matrix, float dx, float dy,
                                 MatrixF* result) noexcept {
    return Give(
        result, [=](const MatrixF& m) { return Moved(m, dx, dy); }, matrix);
}

}  // namespace AUX
