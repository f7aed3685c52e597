#include "capture/entities.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using platform::WideString;
using test_support::FailEachAllocation;

WideString Wide(const AUX::WString& text) { return WideString(AUX::WStringView(text)); }

TEST(Entities, AreDecodedAndEncoded) {
    AUX::WString output;
    for (const auto& row : test_support::ReadCases(CAPTURE_CASES "entities.tsv", 3)) {
        SCOPED_TRACE(platform::ToUtf8(row[1]));
        const WideString& from = row[1];
        const bool decodes = row[0] == TEXT("decode");
        ASSERT_TRUE((decodes ? DecodeEntities : EncodeEntities)(
            from.data(), static_cast<std::int64_t>(from.size()), output));
        EXPECT_EQ(Wide(output), row[2]);
    }
    EXPECT_TRUE(DecodeEntities(TEXT("&lt;\0&gt;"), -1, output) && output == TEXT("<"));
    EXPECT_TRUE(EncodeEntities(TEXT("<\0>"), -1, output) && output == TEXT("&lt;"));
    EXPECT_TRUE(DecodeEntities(nullptr, 5, output) && output.IsEmpty());
    EXPECT_TRUE(EncodeEntities(nullptr, -1, output) && output.IsEmpty());
}

TEST(Entities, EveryCharacterComesBackOrIsLeftOut) {
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        const WCHAR text[] = {static_cast<WCHAR>(unit)};
        AUX::WString encoded;
        AUX::WString decoded;
        ASSERT_TRUE(EncodeEntities(text, 1, encoded));
        ASSERT_TRUE(DecodeEntities(encoded.Text(), encoded.Length(), decoded));
        const bool isLeftOut = (unit < 32 && unit != 9 && unit != 10 && unit != 13) ||
                               (unit >= 0xD800 && unit < 0xE000) || unit >= 0xFFFE;
        ASSERT_EQ(Wide(decoded), WideString(text, isLeftOut ? 0 : 1)) << unit;
        for (const WCHAR c : Wide(encoded)) ASSERT_TRUE(c >= 32 && c < 128) << unit;
    }
}

TEST(Entities, LeaveNothingWithoutMemory) {
    for (const auto code : {DecodeEntities, EncodeEntities}) {
        EXPECT_EQ(FailEachAllocation([&](auto hasFailed) {
                      AUX::WString output;
                      const bool done = code(TEXT("a&amp;b"), -1, output);
                      EXPECT_EQ(done, !hasFailed());
                      EXPECT_EQ(output.IsEmpty(), hasFailed());
                  }),
                  1u);
    }
}

}  // namespace
