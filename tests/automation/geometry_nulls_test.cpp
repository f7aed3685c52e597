#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

#include "automation/geometry_math.h"
#include "tests/support/com_rules.h"
#include "tests/support/fail_each_allocation.h"

namespace AUX {
namespace {

enum class Rule { kUntouched, kCleared, kAllInvalid };

/// Calls with each pointer null in turn, then with all null, then with none.
template <class... Arguments>
void ExpectNulls(HRESULT (STDMETHODCALLTYPE GeometryMath::*operation)(Arguments...) noexcept,
                 Rule rule) {
    constexpr std::size_t kCount = sizeof...(Arguments);
    constexpr bool kIsPointer[] = {std::is_pointer_v<Arguments>...};
    constexpr bool kIsInput[] = {std::is_const_v<std::remove_pointer_t<Arguments>>...};
    constexpr std::size_t kSizes[] = {sizeof(std::remove_pointer_t<Arguments>)...};
    const platform::ComPtr<GeometryMath> math = MakeGeometryMath();
    for (std::size_t missing = 0; missing < kCount + 2; ++missing) {
        if (missing < kCount && !kIsPointer[missing]) continue;
        SCOPED_TRACE(missing);
        alignas(8) std::byte records[kCount][sizeof(Quad)];
        std::size_t next = 0;
        const auto make = [&]<class T>(std::type_identity<T>) -> T {
            const std::size_t at = next++;
            if constexpr (std::is_pointer_v<T>) {
                using Record = std::remove_const_t<std::remove_pointer_t<T>>;
                T record = ::new (records[at]) Record;
                std::memset(records[at], 0x3F, sizeof records[at]);
                return at == missing || missing == kCount ? nullptr : record;
            } else {
                return 1;
            }
        };
        const std::tuple<Arguments...> arguments{make(std::type_identity<Arguments>{})...};
        const HRESULT hr =
            std::apply([&](Arguments... each) { return ((*math).*operation)(each...); }, arguments);
        const bool isInput = missing < kCount && kIsInput[missing];
        if (missing == kCount + 1) {
            EXPECT_EQ(hr, S_OK);
            continue;
        }
        EXPECT_EQ(hr, isInput || rule == Rule::kAllInvalid ? E_INVALIDARG : E_POINTER);
        for (std::size_t i = 0; i < kCount; ++i) {
            if (!kIsPointer[i]) continue;
            const bool isCleared = isInput && !kIsInput[i] && rule == Rule::kCleared;
            const auto expected = static_cast<std::byte>(isCleared ? 0 : 0x3F);
            for (std::size_t n = 0; n < kSizes[i]; ++n) ASSERT_EQ(records[i][n], expected);
        }
    }
}

#define EXPECT_NULLS(Name, rule)                   \
    do {                                           \
        SCOPED_TRACE(#Name);                       \
        ExpectNulls(&GeometryMath::Name, rule);    \
        ExpectNulls(&GeometryMath::Name##F, rule); \
    } while (false)
#define EXPECT_NULLS_OF_THREE(Name, rule)          \
    do {                                           \
        EXPECT_NULLS(Name, rule);                  \
        ExpectNulls(&GeometryMath::Name##M, rule); \
    } while (false)

TEST(GeometryNulls, EachOperationRefusesEachNull) {
    constexpr Rule kUntouched = Rule::kUntouched;
    EXPECT_NULLS(IsZero, kUntouched);
    EXPECT_NULLS(IsIdentity, kUntouched);
    EXPECT_NULLS(IsInvertible, kUntouched);
    EXPECT_NULLS(IsEqual, kUntouched);
    EXPECT_NULLS(GetInverseDeterminant, kUntouched);
    EXPECT_NULLS(GetMeanScale, kUntouched);
    EXPECT_NULLS(SetIdentity, kUntouched);
    EXPECT_NULLS(Invert, kUntouched);
    EXPECT_NULLS(Multiply, kUntouched);
    EXPECT_NULLS(SegmentToSegment, kUntouched);
    EXPECT_NULLS(TriangleToTriangle, kUntouched);
    EXPECT_NULLS(RectToRect, kUntouched);
    EXPECT_NULLS(Rotate, kUntouched);
    EXPECT_NULLS(Scale, kUntouched);
    EXPECT_NULLS(Skew, kUntouched);
    EXPECT_NULLS(Translate, kUntouched);
    ExpectNulls(&GeometryMath::Decompose, kUntouched);
    EXPECT_NULLS_OF_THREE(TransformCoordinates, Rule::kAllInvalid);
    EXPECT_NULLS_OF_THREE(TransformPoint, kUntouched);
    EXPECT_NULLS_OF_THREE(TransformVector, kUntouched);
    EXPECT_NULLS_OF_THREE(TransformRect, kUntouched);
    EXPECT_NULLS_OF_THREE(TransformRectVector, kUntouched);
    EXPECT_NULLS(RectIntersection, kUntouched);
    EXPECT_NULLS(RectUnion, kUntouched);
    EXPECT_NULLS(RectNormalize, kUntouched);
    EXPECT_NULLS_OF_THREE(TransformQuad, kUntouched);
    EXPECT_NULLS(RectsIntersect, Rule::kCleared);
    EXPECT_NULLS(RectIsEqual, Rule::kCleared);
    EXPECT_NULLS(RectContains, Rule::kCleared);
    EXPECT_NULLS(QuadContains, Rule::kCleared);
    EXPECT_NULLS(QuadsIntersect, Rule::kCleared);
    EXPECT_NULLS(RectToQuad, Rule::kCleared);
    EXPECT_NULLS(QuadBounds, Rule::kCleared);
}

TEST(GeometryNulls, TheObjectKeepsTheRulesOfObjectsOrIsNotMade) {
    test_support::FailEachAllocation([](auto hasFailed) {
        const platform::ComPtr<GeometryMath> math = MakeGeometryMath();
        EXPECT_EQ(!math, hasFailed());
        if (math) {
            test_support::ExpectComRules(math.Get(), {platform::InterfaceId<GeometryMath>()});
        }
    });
}

}  // namespace
}  // namespace AUX
