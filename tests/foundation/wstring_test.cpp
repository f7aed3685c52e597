#include "foundation/wstring.h"

#include <gtest/gtest.h>

#include "foundation/array.h"
#include "foundation/astring.h"
#include "foundation/memory_testing.h"
#include "foundation/status.h"
#include "foundation/utf8.h"

namespace {
using AUX::WString;

TEST(WString, FollowsTheTwoGrowthRules) {
    WString s;
    EXPECT_EQ(s.Capacity(), 0u);
    ASSERT_TRUE(s.Assign(TEXT("abc")));
    EXPECT_EQ(s.Capacity(), 3u);
    ASSERT_TRUE(s.Append(TEXT("d")));
    EXPECT_EQ(s.Capacity(), 31u);
    EXPECT_TRUE(s == TEXT("abcd"));
    ASSERT_TRUE(
        s.Format(TEXT("%ls-%x|%5.3f|%-4d|%04X %lld %%"), s, 0x34bf15u, 1.5, 7, 255, 1LL << 40));
    EXPECT_TRUE(s == TEXT("abcd-34bf15|1.500|7   |00FF 1099511627776 %"));
    AUX::Array<int> a;
    for (int i = 0; i < 60; ++i) ASSERT_TRUE(a.Add(i));
    EXPECT_EQ(a.Capacity(), 81u);
    WString b;
    ASSERT_TRUE(b.Assign(s));
    EXPECT_TRUE(b == s);
    EXPECT_TRUE(AUX::WStringView(s) == b);
    EXPECT_TRUE(AUX::WStringView(s).substr(0, 4) == TEXT("abcd"));
}
}  // namespace
