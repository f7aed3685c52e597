#include "foundation/urls.h"

#include <gtest/gtest.h>

#include "foundation/memory_testing.h"
#include "platform/text.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;

TEST(CombineUrl, FollowsTheTable) {
    const bool isWine = test_support::RunsUnderWine();
    for (const auto& row : test_support::ReadCases(FOUNDATION_CASES "combine_url.tsv", 4)) {
        if (isWine && row[3] == TEXT("not on wine")) continue;
        SCOPED_TRACE(platform::ToUtf8(row[0] + TEXT(" + ") + row[1]));
        WString combined;
        EXPECT_EQ(CombineUrl(row[0].c_str(), row[1].c_str(), combined), !row[2].empty());
        EXPECT_EQ(platform::ToUtf8(WStringView(combined)), platform::ToUtf8(row[2]));
    }
}

TEST(CombineUrl, TakesItsOutputAsInputAndFailsEmpty) {
    WString text;
    ASSERT_TRUE(text.Assign(TEXT("http://h/a/b")));
    EXPECT_TRUE(CombineUrl(text.Text(), TEXT("../c"), text));
    EXPECT_EQ(text, WStringView(TEXT("http://h/c")));
    EXPECT_TRUE(CombineUrl(nullptr, text.Text(), text));
    EXPECT_EQ(text, WStringView(TEXT("http://h/c")));
    EXPECT_FALSE(CombineUrl(nullptr, nullptr, text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_GT(test_support::FailEachAllocation([](const auto& hasFailed) {
                  WString combined;
                  const bool isDone = CombineUrl(TEXT("http://h/a"), TEXT("b"), combined);
                  EXPECT_NE(isDone, hasFailed());
                  EXPECT_EQ(combined.IsEmpty(), hasFailed());
              }),
              0u);
}

TEST(EscapeUrl, FollowsTheTable) {
    for (const auto& row : test_support::ReadCases(FOUNDATION_CASES "escape_url.tsv", 3)) {
        SCOPED_TRACE(platform::ToUtf8(row[0]));
        WString escaped;
        ASSERT_TRUE(escaped.Assign(row[0].c_str()));
        EXPECT_TRUE(EscapeUrl(escaped.Text(), escaped, static_cast<unsigned>(row[1][0] - '0')));
        EXPECT_EQ(platform::ToUtf8(WStringView(escaped)), platform::ToUtf8(row[2]));
    }
    WString escaped;
    EXPECT_TRUE(EscapeUrl(nullptr, escaped));
    EXPECT_TRUE(escaped.IsEmpty());
}

TEST(EscapeUrl, GivesTheAddressWhenItFails) {
    // 9 characters for each of an address that has room for 3 of each and 128.
    const platform::WideString fits(21, TEXT('\u4E2D'));
    const platform::WideString tooLong(22, TEXT('\u4E2D'));
    WString escaped;
    EXPECT_TRUE(EscapeUrl(fits.c_str(), escaped));
    EXPECT_EQ(escaped.Length(), 189u);
    EXPECT_FALSE(EscapeUrl(tooLong.c_str(), escaped));
    EXPECT_EQ(escaped, WStringView(tooLong));
    EXPECT_GT(test_support::FailEachAllocation([](const auto& hasFailed) {
                  WString text;
                  const bool isEscaped = EscapeUrl(TEXT("a b"), text);
                  EXPECT_NE(isEscaped, hasFailed());
                  EXPECT_EQ(text, WStringView(hasFailed() ? TEXT("a b") : TEXT("a%20b")));
              }),
              2u);
}

}  // namespace
