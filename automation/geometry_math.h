#pragma once

#include "automation/geometry_records.h"
#include "platform/com_ptr.h"

namespace AUX {

/// The plane geometry that a host gets from the library, over records of its own. It has no state:
/// any thread may call it. It has no type information and is called directly; the operations stand
/// in the order of their slots.
///
/// An operation without a letter at its end works in 64-bit numbers, one with F in 32-bit numbers,
/// and one with M puts a 64-bit matrix to 32-bit points: it computes in 64 bits and narrows.
///
/// Every operation gives S_OK, or E_POINTER if a place for a result is null, which is looked at
/// first, or E_INVALIDARG if another pointer is null; what `in/out` points to is a place for a
/// result. Numbers never fail: singular matrices and empty rectangles give finite results, as told
/// at the operation. After a failure the results are untouched, but where told. A result may lie
/// where an argument does. Booleans are VARIANT_TRUE or VARIANT_FALSE.
class GeometryMath : public IUnknown {
public:
    /// Whether all six numbers are 0.
    virtual HRESULT STDMETHODCALLTYPE IsZero(const Matrix* matrix, VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE IsZeroF(const MatrixF* matrix, VARIANT_BOOL* result) noexcept;

    /// Whether the numbers are exactly 1, 0, 0, 1, 0, 0.
    virtual HRESULT STDMETHODCALLTYPE IsIdentity(const Matrix* matrix,
                                                 VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE IsIdentityF(const MatrixF* matrix,
                                                  VARIANT_BOOL* result) noexcept;

    /// Whether a d differs from b c.
    virtual HRESULT STDMETHODCALLTYPE IsInvertible(const Matrix* matrix,
                                                   VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE IsInvertibleF(const MatrixF* matrix,
                                                    VARIANT_BOOL* result) noexcept;

    /// Whether all six numbers are exactly the same.
    virtual HRESULT STDMETHODCALLTYPE IsEqual(const Matrix* one, const Matrix* other,
                                              VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE IsEqualF(const MatrixF* one, const MatrixF* other,
                                               VARIANT_BOOL* result) noexcept;

    /// 1 / (a d - b c); 1.0 if that is 1 / 0.
    virtual HRESULT STDMETHODCALLTYPE GetInverseDeterminant(const Matrix* matrix,
                                                            double* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE GetInverseDeterminantF(const MatrixF* matrix,
                                                             float* result) noexcept;

    /// How long the matrix makes a diagonal of length 1.
    virtual HRESULT STDMETHODCALLTYPE GetMeanScale(const Matrix* matrix, double* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE GetMeanScaleF(const MatrixF* matrix, float* result) noexcept;

    virtual HRESULT STDMETHODCALLTYPE SetIdentity(Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE SetIdentityF(MatrixF* result) noexcept;

    /// The matrix that undoes this one; finite and without a meaning for a singular one.
    virtual HRESULT STDMETHODCALLTYPE Invert(const Matrix* matrix, Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE InvertF(const MatrixF* matrix, MatrixF* result) noexcept;

    /// The matrix that does `first`, then `second`.
    virtual HRESULT STDMETHODCALLTYPE Multiply(const Matrix* first, const Matrix* second,
                                               Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE MultiplyF(const MatrixF* first, const MatrixF* second,
                                                MatrixF* result) noexcept;

    /// Maps p1 to q1 and p2 to q2 by rotation, uniform scale and translation, without mirroring.
    virtual HRESULT STDMETHODCALLTYPE SegmentToSegment(const Point* p1, const Point* p2,
                                                       const Point* q1, const Point* q2,
                                                       Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE SegmentToSegmentF(const PointF* p1, const PointF* p2,
                                                        const PointF* q1, const PointF* q2,
                                                        MatrixF* result) noexcept;

    /// Maps p1 to q1, p2 to q2 and p3 to q3; where the three p lie on a line, as Invert does.
    virtual HRESULT STDMETHODCALLTYPE TriangleToTriangle(const Point* p1, const Point* p2,
                                                         const Point* p3, const Point* q1,
                                                         const Point* q2, const Point* q3,
                                                         Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TriangleToTriangleF(const PointF* p1, const PointF* p2,
                                                          const PointF* p3, const PointF* q1,
                                                          const PointF* q2, const PointF* q3,
                                                          MatrixF* result) noexcept;

    /// Scales and moves one rectangle onto the other. If a width or height of either is 0, it only
    /// moves the lower left corner onto the other's.
    virtual HRESULT STDMETHODCALLTYPE RectToRect(const Rect* from, const Rect* to,
                                                 Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectToRectF(const RectF* from, const RectF* to,
                                                  MatrixF* result) noexcept;

    /// Does the matrix, then a rotation about the origin, counter-clockwise where y grows upwards.
    virtual HRESULT STDMETHODCALLTYPE Rotate(const Matrix* matrix, double degrees,
                                             Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RotateF(const MatrixF* matrix, float degrees,
                                              MatrixF* result) noexcept;

    /// Does the matrix, then a scaling from the origin.
    virtual HRESULT STDMETHODCALLTYPE Scale(const Matrix* matrix, double sx, double sy,
                                            Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE ScaleF(const MatrixF* matrix, float sx, float sy,
                                             MatrixF* result) noexcept;

    /// Does the matrix, then a skew: x grows by y tan(xDegrees), y by x tan(yDegrees). The matrix
    /// stays as it is if both tangents are 0 or one is not finite.
    virtual HRESULT STDMETHODCALLTYPE Skew(const Matrix* matrix, double xDegrees, double yDegrees,
                                           Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE SkewF(const MatrixF* matrix, float xDegrees, float yDegrees,
                                            MatrixF* result) noexcept;

    /// Does the matrix, then a move.
    virtual HRESULT STDMETHODCALLTYPE Translate(const Matrix* matrix, double dx, double dy,
                                                Matrix* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TranslateF(const MatrixF* matrix, float dx, float dy,
                                                 MatrixF* result) noexcept;

    /// Takes a matrix apart into a scaling, a skew (of x and y alike), a rotation and a move, done
    /// in this order. A singular matrix gives 0, 0, 0, 1, 1, 0.
    /// \param rotation  Radians, in -pi to pi.
    /// \param scaleX    Above 0.
    /// \param scaleY    Below 0 for a matrix that mirrors.
    /// \param skew      The tangent of the angle; never below 0, and 0 where |a c + b d| < 1e-5.
    ///                  So the parts make up the matrix again only if a c + b d has the sign of
    ///                  a d - b c, or is 0.
    virtual HRESULT STDMETHODCALLTYPE Decompose(const Matrix* matrix, double* translateX,
                                                double* translateY, double* rotation,
                                                double* scaleX, double* scaleY,
                                                double* skew) noexcept;

    /// Maps the point (x, y), given as two numbers. Every null is E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE TransformCoordinates(const Matrix* matrix, double* x,
                                                           double* y) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformCoordinatesF(const MatrixF* matrix, float* x,
                                                            float* y) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformCoordinatesM(const Matrix* matrix, float* x,
                                                            float* y) noexcept;

    /// Maps a point. \param point  in/out
    virtual HRESULT STDMETHODCALLTYPE TransformPoint(const Matrix* matrix, Point* point) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformPointF(const MatrixF* matrix,
                                                      PointF* point) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformPointM(const Matrix* matrix, PointF* point) noexcept;

    /// Maps a direction: without the translation. \param vector  in/out
    virtual HRESULT STDMETHODCALLTYPE TransformVector(const Matrix* matrix, Point* vector) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformVectorF(const MatrixF* matrix,
                                                       PointF* vector) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformVectorM(const Matrix* matrix,
                                                       PointF* vector) noexcept;

    /// The bounding box of the four mapped corners. \param rect  in/out
    virtual HRESULT STDMETHODCALLTYPE TransformRect(const Matrix* matrix, Rect* rect) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformRectF(const MatrixF* matrix, RectF* rect) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformRectM(const Matrix* matrix, RectF* rect) noexcept;

    /// TransformRect without the translation. \param rect  in/out
    virtual HRESULT STDMETHODCALLTYPE TransformRectVector(const Matrix* matrix,
                                                          Rect* rect) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformRectVectorF(const MatrixF* matrix,
                                                           RectF* rect) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformRectVectorM(const Matrix* matrix,
                                                           RectF* rect) noexcept;

    /// What the rectangles share. If they don't meet: a width or height of 0 at their nearer edges.
    virtual HRESULT STDMETHODCALLTYPE RectIntersection(const Rect* one, const Rect* other,
                                                       Rect* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectIntersectionF(const RectF* one, const RectF* other,
                                                        RectF* result) noexcept;

    /// Whether both have a positive size and share more than an edge. False with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE RectsIntersect(const Rect* one, const Rect* other,
                                                     VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectsIntersectF(const RectF* one, const RectF* other,
                                                      VARIANT_BOOL* result) noexcept;

    /// The smallest left and bottom, the largest right and top; an empty rectangle counts.
    virtual HRESULT STDMETHODCALLTYPE RectUnion(const Rect* one, const Rect* other,
                                                Rect* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectUnionF(const RectF* one, const RectF* other,
                                                 RectF* result) noexcept;

    /// Whether all four numbers are exactly the same. False with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE RectIsEqual(const Rect* one, const Rect* other,
                                                  VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectIsEqualF(const RectF* one, const RectF* other,
                                                   VARIANT_BOOL* result) noexcept;

    /// Exchanges left and right, bottom and top, where they are the wrong way round.
    /// \param rect  in/out
    virtual HRESULT STDMETHODCALLTYPE RectNormalize(Rect* rect) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectNormalizeF(RectF* rect) noexcept;

    /// Whether left <= x < right and bottom < y <= top. False with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE RectContains(const Rect* rect, const Point* point,
                                                   VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectContainsF(const RectF* rect, const PointF* point,
                                                    VARIANT_BOOL* result) noexcept;

    /// Maps each corner. \param quad  in/out
    virtual HRESULT STDMETHODCALLTYPE TransformQuad(const Matrix* matrix, Quad* quad) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformQuadF(const MatrixF* matrix, QuadF* quad) noexcept;
    virtual HRESULT STDMETHODCALLTYPE TransformQuadM(const Matrix* matrix, QuadF* quad) noexcept;

    /// Whether the outline goes round the point an odd number of times. Of the outline itself, the
    /// lower and right edges belong to it. False with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE QuadContains(const Quad* quad, const Point* point,
                                                   VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE QuadContainsF(const QuadF* quad, const PointF* point,
                                                    VARIANT_BOOL* result) noexcept;

    /// Whether edges of the two cross, or the first corner of either is inside the other. False
    /// with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE QuadsIntersect(const Quad* one, const Quad* other,
                                                     VARIANT_BOOL* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE QuadsIntersectF(const QuadF* one, const QuadF* other,
                                                      VARIANT_BOOL* result) noexcept;

    /// The corners, lower left first, then against the clock. All 0 with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE RectToQuad(const Rect* rect, Quad* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE RectToQuadF(const RectF* rect, QuadF* result) noexcept;

    /// The smallest rectangle round the corners. All 0 with E_INVALIDARG.
    virtual HRESULT STDMETHODCALLTYPE QuadBounds(const Quad* quad, Rect* result) noexcept;
    virtual HRESULT STDMETHODCALLTYPE QuadBoundsF(const QuadF* quad, RectF* result) noexcept;
};

/// Makes the object; null when memory runs out.
[[nodiscard]] platform::ComPtr<GeometryMath> MakeGeometryMath() noexcept;

}  // namespace AUX

QVD_INTERFACE_ID(AUX::GeometryMath, 0x41d5b9e3, 0x7c02, 0x4f68,
                 {0x9a, 0x1d, 0x36, 0xe0, 0x5b, 0xc7, 0x82, 0x4f});
