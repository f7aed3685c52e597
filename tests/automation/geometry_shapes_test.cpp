#include <algorithm>
#include <cstdint>
#include <cstring>

#include "tests/automation/geometry_forms.h"

namespace AUX {
namespace {

TYPED_TEST_SUITE(GeometryShapes, Numbers);

/// Exact, on integers: above 0 if p, q, r turn to the left.
template <class Number>
std::int64_t Turn(const PointOf<Number>& p, const PointOf<Number>& q, const PointOf<Number>& r) {
    const auto whole = [](Number number) { return static_cast<std::int64_t>(number); };
    return whole(q.x - p.x) * whole(r.y - p.y) - whole(q.y - p.y) * whole(r.x - p.x);
}

template <class Number>
const PointOf<Number>* Corners(const PointOf<Number> (&c)[4], QuadOf<Number>& quad) {
    quad = {c[0].x, c[0].y, c[1].x, c[1].y, c[2].x, c[2].y, c[3].x, c[3].y};
    return c;
}

TYPED_TEST(GeometryShapes, RectanglesAreSetsOfCells) {
    // The cell right of and below a grid point (x, y) is in what contains the point.
    using R = RectOf<TypeParam>;
    constexpr int kSize = 3;
    R rects[kSize * kSize * kSize * kSize];
    std::uint32_t cells[std::size(rects)];
    const auto cellsOf = [&](const R& rect) {
        std::uint32_t set = 0;
        for (int i = 0; i < kSize * kSize; ++i) {
            const PointOf<TypeParam> point{TypeParam(i % kSize), TypeParam(i / kSize)};
            if (this->Ask(AUX_FORM(TypeParam, RectContains), &rect, &point)) set |= 1u << i;
        }
        return set;
    };
    for (int i = 0; i < int(std::size(rects)); ++i) {
        rects[i] = {TypeParam(i % 3), TypeParam(i / 3 % 3), TypeParam(i / 9 % 3),
                    TypeParam(i / 27)};
        cells[i] = cellsOf(rects[i]);
    }
    const R shape{0, 0, 2, 1};
    EXPECT_EQ(cellsOf(shape), 0b011'000u) << "left and top belong to it, right and bottom don't";
    for (std::size_t i = 0; i < std::size(rects); ++i) {
        const R& one = rects[i];
        R normal = one;
        EXPECT_EQ(((*this->math).*AUX_FORM(TypeParam, RectNormalize))(&normal), S_OK);
        EXPECT_TRUE(normal.left == std::min(one.left, one.right) &&
                    normal.right == std::max(one.left, one.right) &&
                    normal.bottom == std::min(one.bottom, one.top) &&
                    normal.top == std::max(one.bottom, one.top));
        for (std::size_t j = 0; j < std::size(rects); ++j) {
            SCOPED_TRACE(i * 1000 + j);
            const R& other = rects[j];
            const auto shared =
                this->template Get<R>(AUX_FORM(TypeParam, RectIntersection), &one, &other);
            ASSERT_EQ(cellsOf(shared), cells[i] & cells[j]);
            ASSERT_TRUE(shared.left <= shared.right && shared.bottom <= shared.top);
            ASSERT_EQ(this->Ask(AUX_FORM(TypeParam, RectsIntersect), &one, &other),
                      (cells[i] & cells[j]) != 0);
            ASSERT_EQ(this->Ask(AUX_FORM(TypeParam, RectIsEqual), &one, &other), i == j);
            const auto all = this->template Get<R>(AUX_FORM(TypeParam, RectUnion), &one, &other);
            const std::uint32_t either = cells[i] | cells[j];
            ASSERT_EQ(cellsOf(all) & either, either);
            ASSERT_TRUE(all.left == one.left || all.left == other.left);
            ASSERT_TRUE(all.top == one.top || all.top == other.top);
        }
    }
}

TYPED_TEST(GeometryShapes, TransformsRectanglesAsTheirCorners) {
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        MatrixOf<TypeParam> m = this->DrawMatrix(9);
        Matrix wide{m.a, m.b, m.c, m.d, m.e, m.f};
        const RectOf<TypeParam> rect{this->Draw(9), this->Draw(9), this->Draw(9), this->Draw(9)};
        for (const bool isVector : {false, true}) {
            auto quad =
                this->template Get<QuadOf<TypeParam>>(AUX_FORM(TypeParam, RectToQuad), &rect);
            EXPECT_EQ(quad.x1, rect.right);
            EXPECT_EQ(quad.y1, rect.bottom);
            RectF mixedRect{float(rect.left), float(rect.bottom), float(rect.right),
                            float(rect.top)};
            RectOf<TypeParam> mapped = rect;
            PointOf<TypeParam> vector{rect.left, rect.bottom};
            PointF mixedVector{mixedRect.left, mixedRect.bottom};
            if (isVector) {
                ((*this->math).*AUX_FORM(TypeParam, TransformRectVector))(&m, &mapped);
                this->math->TransformRectVectorM(&wide, &mixedRect);
                ((*this->math).*AUX_FORM(TypeParam, TransformVector))(&m, &vector);
                this->math->TransformVectorM(&wide, &mixedVector);
                m.e = m.f = 0;
                wide.e = wide.f = 0;
            } else {
                ((*this->math).*AUX_FORM(TypeParam, TransformRect))(&m, &mapped);
                this->math->TransformRectM(&wide, &mixedRect);
                ((*this->math).*AUX_FORM(TypeParam, TransformCoordinates))(&m, &vector.x,
                                                                           &vector.y);
                this->math->TransformCoordinatesM(&wide, &mixedVector.x, &mixedVector.y);
            }
            QuadF mixedQuad{float(quad.x0), float(quad.y0), float(quad.x1), float(quad.y1),
                            float(quad.x2), float(quad.y2), float(quad.x3), float(quad.y3)};
            ((*this->math).*AUX_FORM(TypeParam, TransformQuad))(&m, &quad);
            this->math->TransformQuadM(&wide, &mixedQuad);
            const auto box =
                this->template Get<RectOf<TypeParam>>(AUX_FORM(TypeParam, QuadBounds), &quad);
            EXPECT_TRUE(this->Ask(AUX_FORM(TypeParam, RectIsEqual), &mapped, &box));
            const RectF narrow{float(box.left), float(box.bottom), float(box.right),
                               float(box.top)};
            EXPECT_EQ(std::memcmp(&mixedRect, &narrow, sizeof narrow), 0);
            EXPECT_TRUE(vector.x == quad.x0 && vector.y == quad.y0);
            EXPECT_TRUE(mixedVector.x == mixedQuad.x0 && mixedVector.y == mixedQuad.y0);
            EXPECT_TRUE(mixedQuad.x2 == float(quad.x2) && mixedQuad.y3 == float(quad.y3));
        }
    }
}

TYPED_TEST(GeometryShapes, QuadsContainWhatARayLeavesOddTimes) {
    using P = PointOf<TypeParam>;
    int inside = 0;
    for (int round = 0; round < 20000; ++round) {
        SCOPED_TRACE(round);
        const P corners[] = {this->DrawPoint(6), this->DrawPoint(6), this->DrawPoint(6),
                             this->DrawPoint(6)};
        QuadOf<TypeParam> quad;
        Corners(corners, quad);
        const P point = this->DrawPoint(6);
        // So flat that it meets no corner of the grid.
        const P beyond{point.x + 10007, point.y + 1};
        bool odd = false;
        bool isOnOutline = false;
        for (int i = 0; i < 4; ++i) {
            const P& from = corners[i];
            const P& to = corners[(i + 1) % 4];
            isOnOutline |= Turn(from, to, point) == 0;  // Or in line with an edge.
            odd ^= (Turn(point, beyond, from) > 0) != (Turn(point, beyond, to) > 0) &&
                   (Turn(from, to, point) > 0) != (Turn(from, to, beyond) > 0);
        }
        if (isOnOutline) continue;
        EXPECT_EQ(this->Ask(AUX_FORM(TypeParam, QuadContains), &quad, &point), odd);
        inside += odd;
    }
    EXPECT_GT(inside, 1000);
    const QuadOf<TypeParam> square{0, 0, 2, 0, 2, 2, 0, 2};
    const P edges[] = {{1, 0}, {2, 1}, {1, 2}, {0, 1}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(this->Ask(AUX_FORM(TypeParam, QuadContains), &square, &edges[i]), i < 2) << i;
    }
}

TYPED_TEST(GeometryShapes, ParallelogramsMeetUnlessALinePartsThem) {
    using P = PointOf<TypeParam>;
    int met = 0;
    int apart = 0;
    for (int round = 0; round < 40000; ++round) {
        SCOPED_TRACE(round);
        P shapes[2][4];
        QuadOf<TypeParam> quads[2];
        bool isFlat = false;
        for (int i = 0; i < 2; ++i) {
            const P at = this->DrawPoint(9);
            const P u = this->DrawPoint(5);
            const P v = this->DrawPoint(5);
            const P corners[] = {at,
                                 {at.x + u.x, at.y + u.y},
                                 {at.x + u.x + v.x, at.y + u.y + v.y},
                                 {at.x + v.x, at.y + v.y}};
            std::copy_n(Corners(corners, quads[i]), 4, shapes[i]);
            isFlat |= Turn(corners[0], corners[1], corners[3]) == 0;
        }
        // Each edge's line: has it one of the two on either side, or a corner on it?
        bool isParted = false;
        bool isTouched = false;
        for (int i = 0; i < 8; ++i) {
            const P(&own)[4] = shapes[i / 4];
            const P(&other)[4] = shapes[1 - i / 4];
            const P& from = own[i % 4];
            const P& to = own[(i + 1) % 4];
            const std::int64_t side = Turn(from, to, own[(i + 2) % 4]) > 0 ? 1 : -1;
            std::int64_t nearest = -1000000;
            for (const P& corner : other) {
                const std::int64_t turn = side * Turn(from, to, corner);
                nearest = std::max(nearest, turn);
                isTouched |= turn == 0;
            }
            isParted |= nearest < 0;
        }
        if (isFlat || (isTouched && !isParted)) continue;
        EXPECT_EQ(this->Ask(AUX_FORM(TypeParam, QuadsIntersect), &quads[0], &quads[1]), !isParted);
        (isParted ? apart : met)++;
    }
    EXPECT_GT(std::min(met, apart), 1000) << "both are tried often";
}

}  // namespace
}  // namespace AUX
