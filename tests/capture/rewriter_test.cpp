#include <algorithm>
#include <gtest/gtest.h>

#include "capture/markup_rewriter.h"
#include "tests/capture/address_resolver.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using platform::ToUtf8;
using platform::WideString;
using platform::WideView;
using test_support::CaseRow;
using test_support::FailEachAllocation;
using test_support::ReadCases;

std::string Utf8(const AUX::WString& text) { return ToUtf8(WideString(AUX::WStringView(text))); }

TEST(MarkupRewriter, RewritesWhatItKnowsAndNothingElse) {
    MarkupRewriter rewriter;
    for (const CaseRow& row : ReadCases(CAPTURE_CASES "markup.tsv", 3)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        AddressResolver resolver;
        ASSERT_TRUE(rewriter.Rewrite(AddressResolver::kPage, WideView(row[0]), resolver, resolver));
        EXPECT_EQ(Utf8(rewriter.Splicer.Output), ToUtf8(row[1] == TEXT("=") ? row[0] : row[1]));
        EXPECT_EQ(ToUtf8(resolver.asked), ToUtf8(row[2]));
    }
    AddressResolver resolver;
    EXPECT_TRUE(rewriter.Rewrite(AddressResolver::kPage, {}, resolver, resolver));
    EXPECT_TRUE(rewriter.Splicer.Output.IsEmpty());
}

TEST(StyleRewriter, RewritesEachUrl) {
    StyleRewriter rewriter;
    for (const CaseRow& row : ReadCases(CAPTURE_CASES "style.tsv", 3)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        AddressResolver resolver;
        ASSERT_TRUE(rewriter.Rewrite(AddressResolver::kPage, WideView(row[0]), resolver));
        EXPECT_EQ(Utf8(rewriter.Splicer.Output), ToUtf8(row[1] == TEXT("=") ? row[0] : row[1]));
        EXPECT_EQ(ToUtf8(resolver.asked), ToUtf8(row[2]));
    }
    AddressResolver resolver;
    EXPECT_TRUE(rewriter.Rewrite(AddressResolver::kPage, {}, resolver));
    EXPECT_TRUE(rewriter.Splicer.Output.IsEmpty());
}

TEST(MarkupRewriter, FailsWholeWithoutMemory) {
    const WideString text(
        TEXT("<p>\xE9<img src='x&amp;\xE4.png'><link href=s type='t'><a href='q'>"
             "<style>a{b:url(\"\\c\")}</style><p style='d:url(&quot;e&quot;)'>"));
    WideString whole;
    const std::uint64_t failures = FailEachAllocation([&](auto hasFailed) {
        AddressResolver resolver;
        MarkupRewriter rewriter;
        const bool done =
            rewriter.Rewrite(AddressResolver::kPage, WideView(text), resolver, resolver);
        // Room that is set aside early may be missing without harm.
        if (done) {
            whole = AUX::WStringView(rewriter.Splicer.Output);
        } else {
            EXPECT_TRUE(hasFailed());
            EXPECT_TRUE(rewriter.Splicer.Output.IsEmpty());
        }
    });
    EXPECT_GT(failures, 8u);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), WCHAR{'/'}), 5 * 3 + 2);
}

}  // namespace
