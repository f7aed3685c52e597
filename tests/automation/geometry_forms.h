#pragma once

#include <gtest/gtest.h>
#include <random>
#include <type_traits>

#include "automation/geometry_math.h"

/// An operation's form for the numbers of a test that runs for both.
#define AUX_FORM(Number, Name)                          \
    [] {                                                \
        if constexpr (std::is_same_v<Number, double>) { \
            return &::AUX::GeometryMath::Name;          \
        } else {                                        \
            return &::AUX::GeometryMath::Name##F;       \
        }                                               \
    }()

namespace AUX {

/// A test of both forms. Numbers are small integers where a result is to be exact in either.
template <class Number>
class GeometryForms : public ::testing::Test {
protected:
    template <class Result, class Operation, class... Arguments>
    Result Get(Operation operation, Arguments... arguments) {
        Result result{};
        EXPECT_EQ(((*math).*operation)(arguments..., &result), S_OK);
        return result;
    }
    template <class Operation, class... Arguments>
    bool Ask(Operation operation, Arguments... arguments) {
        const auto answer = Get<VARIANT_BOOL>(operation, arguments...);
        EXPECT_TRUE(answer == VARIANT_TRUE || answer == VARIANT_FALSE);
        return answer == VARIANT_TRUE;
    }
    PointOf<Number> Map(const MatrixOf<Number>& matrix, PointOf<Number> point) {
        EXPECT_EQ(((*math).*AUX_FORM(Number, TransformPoint))(&matrix, &point), S_OK);
        return point;
    }
    /// An integer in -size to size.
    Number Draw(int size) {
        return static_cast<Number>(static_cast<int>(engine() % (2u * size + 1u)) - size);
    }
    PointOf<Number> DrawPoint(int size) { return {Draw(size), Draw(size)}; }
    MatrixOf<Number> DrawMatrix(int size) {
        return {Draw(size), Draw(size), Draw(size), Draw(size), Draw(size), Draw(size)};
    }

    const platform::ComPtr<GeometryMath> math = MakeGeometryMath();
    std::mt19937 engine{20};
    const Number tolerance = std::is_same_v<Number, double> ? Number(1e-9) : Number(1e-2);
};

using Numbers = ::testing::Types<double, float>;
template <class Number>
class GeometryMatrix : public GeometryForms<Number> {};
template <class Number>
class GeometryShapes : public GeometryForms<Number> {};

}  // namespace AUX
