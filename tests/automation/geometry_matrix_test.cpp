#include <cmath>
#include <limits>
#include <numbers>

#include "tests/automation/geometry_forms.h"

namespace AUX {
namespace {

TYPED_TEST_SUITE(GeometryMatrix, Numbers);

#define EXPECT_POINT(point, expected)                \
    do {                                             \
        const auto got = (point);                    \
        const auto want = (expected);                \
        EXPECT_NEAR(got.x, want.x, this->tolerance); \
        EXPECT_NEAR(got.y, want.y, this->tolerance); \
    } while (false)

TYPED_TEST(GeometryMatrix, ProductsAndInversesMapAsTheyShould) {
    int inverted = 0;
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        const MatrixOf<TypeParam> m = this->DrawMatrix(9);
        MatrixOf<TypeParam> n = this->DrawMatrix(9);
        const PointOf<TypeParam> p = this->DrawPoint(9);
        const PointOf<TypeParam> mapped = this->Map(m, p);
        EXPECT_EQ(mapped.x, m.a * p.x + m.c * p.y + m.e);
        EXPECT_EQ(mapped.y, m.b * p.x + m.d * p.y + m.f);
        const PointOf<TypeParam> both = this->Map(n, mapped);
        // Over one of its factors, as callers do.
        EXPECT_EQ(((*this->math).*AUX_FORM(TypeParam, Multiply))(&m, &n, &n), S_OK);
        EXPECT_EQ(this->Map(n, p).x, both.x);
        EXPECT_EQ(this->Map(n, p).y, both.y);

        const auto inverse =
            this->template Get<MatrixOf<TypeParam>>(AUX_FORM(TypeParam, Invert), &m);
        const auto k =
            this->template Get<TypeParam>(AUX_FORM(TypeParam, GetInverseDeterminant), &m);
        EXPECT_TRUE(
            std::isfinite(inverse.a + inverse.b + inverse.c + inverse.d + inverse.e + inverse.f));
        const bool isInvertible = this->Ask(AUX_FORM(TypeParam, IsInvertible), &m);
        EXPECT_EQ(isInvertible, m.a * m.d - m.b * m.c != 0);
        if (!isInvertible) {
            EXPECT_EQ(k, 1);
            continue;
        }
        ++inverted;
        EXPECT_POINT(this->Map(inverse, mapped), p);
        EXPECT_NEAR(k * (m.a * m.d - m.b * m.c), 1, this->tolerance);
    }
    EXPECT_GT(inverted, 1500);
}

TYPED_TEST(GeometryMatrix, AppendsRotationScaleSkewAndMove) {
    using Record = MatrixOf<TypeParam>;
    const TypeParam root = std::sqrt(TypeParam(0.5));
    const TypeParam huge = std::numeric_limits<TypeParam>::infinity();
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const Record m = this->DrawMatrix(5);
        const PointOf<TypeParam> p = this->DrawPoint(5);
        const PointOf<TypeParam> q = this->Map(m, p);
        const auto after = [&](auto operation, auto... numbers) {
            return this->Map(this->template Get<Record>(operation, &m, numbers...), p);
        };
        const auto rotate = AUX_FORM(TypeParam, Rotate);
        const auto skew = AUX_FORM(TypeParam, Skew);
        using P = PointOf<TypeParam>;
        EXPECT_POINT(after(rotate, TypeParam(90)), (P{-q.y, q.x}));
        EXPECT_POINT(after(rotate, TypeParam(45)), (P{(q.x - q.y) * root, (q.x + q.y) * root}));
        EXPECT_POINT(after(AUX_FORM(TypeParam, Scale), TypeParam(2), TypeParam(-3)),
                     (P{q.x * 2, q.y * -3}));
        EXPECT_POINT(after(AUX_FORM(TypeParam, Translate), TypeParam(2), TypeParam(-3)),
                     (P{q.x + 2, q.y - 3}));
        EXPECT_POINT(after(skew, TypeParam(45), TypeParam(-45)), (P{q.x + q.y, q.y - q.x}));
        EXPECT_POINT(after(skew, TypeParam(0), TypeParam(45)), (P{q.x, q.y + q.x}));
        EXPECT_POINT(after(skew, huge, TypeParam(45)), q);
    }
    const auto one = this->template Get<Record>(AUX_FORM(TypeParam, SetIdentity));
    const auto tangent =
        this->template Get<Record>(AUX_FORM(TypeParam, Skew), &one, TypeParam(90), TypeParam(0));
    EXPECT_GT(std::abs(tangent.c), TypeParam(1e7));
    EXPECT_TRUE(std::isfinite(tangent.c));
}

TYPED_TEST(GeometryMatrix, MapsSegmentsTrianglesAndRectsOntoEachOther) {
    using Record = MatrixOf<TypeParam>;
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        PointOf<TypeParam> p[3];
        PointOf<TypeParam> q[3];
        for (int i = 0; i < 3; ++i) {
            p[i] = this->DrawPoint(8);
            q[i] = this->DrawPoint(8);
        }
        const auto triangle = this->template Get<Record>(AUX_FORM(TypeParam, TriangleToTriangle), p,
                                                         p + 1, p + 2, q, q + 1, q + 2);
        EXPECT_TRUE(std::isfinite(triangle.a + triangle.d + triangle.e + triangle.f));
        if ((p[1].x - p[0].x) * (p[2].y - p[0].y) != (p[1].y - p[0].y) * (p[2].x - p[0].x)) {
            for (int i = 0; i < 3; ++i) EXPECT_POINT(this->Map(triangle, p[i]), q[i]);
        }
        const auto segment =
            this->template Get<Record>(AUX_FORM(TypeParam, SegmentToSegment), p, p + 1, q, q + 1);
        if (p[0].x != p[1].x || p[0].y != p[1].y) {
            for (int i = 0; i < 2; ++i) EXPECT_POINT(this->Map(segment, p[i]), q[i]);
            EXPECT_NEAR(segment.a, segment.d, this->tolerance);  // A turn and one scale.
            EXPECT_NEAR(segment.b, -segment.c, this->tolerance);
        }
        RectOf<TypeParam> from{p[0].x, p[0].y, p[1].x, p[1].y};
        const RectOf<TypeParam> to{q[0].x, q[0].y, q[1].x, q[1].y};
        const auto rect = this->template Get<Record>(AUX_FORM(TypeParam, RectToRect), &from, &to);
        EXPECT_POINT(this->Map(rect, p[0]), q[0]);
        if (p[0].x == p[1].x || p[0].y == p[1].y || q[0].x == q[1].x || q[0].y == q[1].y) {
            EXPECT_TRUE(rect.a == 1 && rect.d == 1);
        } else {
            EXPECT_POINT(this->Map(rect, p[1]), q[1]);
        }
    }
}

TYPED_TEST(GeometryMatrix, AnswersForSpecialMatrices) {
    using Record = MatrixOf<TypeParam>;
    const Record zero{};
    const Record one{1, 0, 0, 1, 0, 0};
    const Record third{3, 0, 0, 4, 0, TypeParam(0.5)};
    EXPECT_TRUE(this->Ask(AUX_FORM(TypeParam, IsZero), &zero));
    EXPECT_FALSE(this->Ask(AUX_FORM(TypeParam, IsIdentity), &zero));
    EXPECT_TRUE(this->Ask(AUX_FORM(TypeParam, IsIdentity), &one));
    for (TypeParam Record::*field :
         {&Record::a, &Record::b, &Record::c, &Record::d, &Record::e, &Record::f}) {
        Record changed = third;
        changed.*field += 1;
        EXPECT_FALSE(this->Ask(AUX_FORM(TypeParam, IsEqual), &third, &changed));
        Record little = zero;
        little.*field = std::numeric_limits<TypeParam>::denorm_min();
        EXPECT_FALSE(this->Ask(AUX_FORM(TypeParam, IsZero), &little));
    }
    const auto inverse = this->template Get<Record>(AUX_FORM(TypeParam, Invert), &zero);
    EXPECT_TRUE(this->Ask(AUX_FORM(TypeParam, IsZero), &inverse));
    const auto scale = this->template Get<TypeParam>(AUX_FORM(TypeParam, GetMeanScale), &third);
    EXPECT_EQ(scale, std::sqrt(TypeParam(3 * 0.707106781) * TypeParam(3 * 0.707106781) +
                               TypeParam(4 * 0.707106781) * TypeParam(4 * 0.707106781)));
}

using GeometryDecompose = GeometryForms<double>;

TEST_F(GeometryDecompose, GivesThePartsThatMakeTheMatrixUp) {
    Matrix one;
    ASSERT_EQ(math->SetIdentity(&one), S_OK);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        // Wide in size: the parts of a large matrix are as good as those of a small one.
        const double size = std::pow(10, Draw(6));
        const double skew = round % 4 == 0 ? 0 : (Draw(80) + 81) / 162;
        const double turn = Draw(179);
        const double lean = std::atan(skew) * 180 / std::numbers::pi;
        const double sx = (Draw(20) + 21) * size;
        const double sy = (Draw(20) + 21) * size * (round % 2 == 0 ? 1 : -1);
        Matrix m;
        math->Scale(&one, sx, sy, &m);
        math->Skew(&m, lean, lean, &m);
        math->Rotate(&m, turn, &m);
        math->Translate(&m, 5, -7, &m);
        if (skew == 1) continue;  // Singular.
        double part[6] = {};
        EXPECT_EQ(math->Decompose(&m, part, part + 1, part + 2, part + 3, part + 4, part + 5),
                  S_OK);
        // What leans by less than the limit counts as upright.
        const double known = std::abs(m.a * m.c + m.b * m.d) < 1e-5 ? 0 : skew;
        const double expected[] = {5, -7, turn * std::numbers::pi / 180, sx, sy, known};
        for (int i = 0; i < 6 && known == skew; ++i) {
            EXPECT_NEAR(part[i], expected[i], 1e-6 * (1 + std::abs(expected[i]))) << i;
        }
        EXPECT_EQ(known == 0, part[5] < 1e-9);
    }
}

TEST_F(GeometryDecompose, GivesKnownPartsOfKnownMatrices) {
    const double half = std::sqrt(3) / 2;
    const struct {
        Matrix matrix;
        double parts[6];
    } kCases[] = {
        {{1, 0, 0, 1, 0, 0}, {0, 0, 0, 1, 1, 0}},
        {{half, 0.5, -0.5, half, 2, 3}, {2, 3, std::numbers::pi / 6, 1, 1, 0}},
        {{-1, 0, 0, -1, 0, 0}, {0, 0, std::numbers::pi, 1, 1, 0}},
        {{2, 4, 1, 2, 5, 6}, {0, 0, 0, 1, 1, 0}},  // Singular: its move goes too.
        // Leans the other way, which the parts cannot tell.
        {{1, 0, -0.5, 1, 0, 0}, {0, 0, -0.2318238, 0.9732490, -1.0881254, 0.2360680}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        double part[6] = {9, 9, 9, 9, 9, 9};
        EXPECT_EQ(
            math->Decompose(&c.matrix, part, part + 1, part + 2, part + 3, part + 4, part + 5),
            S_OK);
        for (int i = 0; i < 6; ++i) EXPECT_NEAR(part[i], c.parts[i], 1e-6) << i;
    }
}

}  // namespace
}  // namespace AUX
