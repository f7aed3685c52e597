#include "capture/attributes.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "tests/support/case_table.h"

namespace {

using platform::ToUtf8;
using platform::WideString;

TEST(FindAttribute, FollowsItsSteps) {
    for (const auto& row : test_support::ReadCases(CAPTURE_CASES "attributes.tsv", 3)) {
        const WideString& text = row[0];
        SCOPED_TRACE(ToUtf8(text + TEXT(" ") + row[1]));
        // The text ends where its block does, so that a look behind it would be seen.
        const std::vector<WCHAR> exact(text.begin(), text.end());
        const auto value =
            FindAttribute(exact.data(), exact.data() + exact.size(), row[1].data(), row[1].size());
        EXPECT_EQ(value ? ToUtf8(*value) : "(none)", ToUtf8(row[2]));
    }
}

TEST(ReplaceQuotedValue, PutsTheEncodedTextInDoubleQuotes) {
    const AUX::WStringView text = TEXT("a='old' b");
    TextSplicer splicer;
    splicer.Init(text.data(), text.data() + text.size() - 1);
    ReplaceQuotedValue(splicer, text.data() + 3, 3, TEXT("\"new\" & \xE9"));
    splicer.CopyUpTo(splicer.End + 1);
    EXPECT_TRUE(splicer.IsComplete());
    EXPECT_EQ(ToUtf8(splicer.Output.Text()), "a=\"&quot;new&quot; &amp; &#233;\" b");
}

}  // namespace
