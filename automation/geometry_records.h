#pragma once

namespace AUX {

/// The records of the plane geometry, each in 64-bit and in 32-bit numbers. The caller owns them.

/// A point (x, y) maps to (a x + c y + e, b x + d y + f); e and f are the translation.
template <class Number>
struct MatrixOf {
    Number a = 0, b = 0, c = 0, d = 0, e = 0, f = 0;
};

template <class Number>
struct PointOf {
    Number x = 0, y = 0;
};

/// Has a positive size when right > left and top > bottom: y grows upwards.
template <class Number>
struct RectOf {
    Number left = 0, bottom = 0, right = 0, top = 0;
};

/// The four corners of a closed outline, in its order.
template <class Number>
struct QuadOf {
    Number x0 = 0, y0 = 0, x1 = 0, y1 = 0, x2 = 0, y2 = 0, x3 = 0, y3 = 0;
};

using Matrix = MatrixOf<double>;
using MatrixF = MatrixOf<float>;
using Point = PointOf<double>;
using PointF = PointOf<float>;
using Rect = RectOf<double>;
using RectF = RectOf<float>;
using Quad = QuadOf<double>;
using QuadF = QuadOf<float>;

}  // namespace AUX
