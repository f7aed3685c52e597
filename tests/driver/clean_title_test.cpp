#include "driver/clean_title.h"

#include <gtest/gtest.h>

#include "foundation/memory_testing.h"
#include "platform/text.h"

namespace {

using platform::WideString;

TEST(CleanTitle, KeepsWhatAFileNameMayHoldOfTheFirst41Characters) {
    const struct {
        const char* why;
        WideString title;
        WideString name;
    } kCases[] = {
        {"empty", TEXT(""), TEXT("")},
        {"all that is removed", TEXT("|\\?*<\":>+[]/-."), TEXT("")},
        {"the neighbours stay", TEXT("!#$%&'(),;=@^_`{}~"), TEXT("!#$%&'(),;=@^_`{}~")},
        {"mixed", TEXT("a-b.c: d"), TEXT("abc d")},
        {"blanks stay", TEXT("  a "), TEXT("  a ")},
        {"41 characters", WideString(41, 'x'), WideString(41, 'x')},
        {"42 characters", WideString(42, 'x'), WideString(41, 'x')},
        {"removed ones count", WideString(40, '-') + TEXT("ab"), TEXT("a")},
        {"41 hyphens", WideString(41, '-') + TEXT("abc"), TEXT("")},
        {"length counts, not a zero", WideString({'a', 0, 'b'}), WideString({'a', 0, 'b'})},
        {"other scripts", {0x00E9, 0x4E2D, 0xD83D, 0xDE00}, {0x00E9, 0x4E2D, 0xD83D, 0xDE00}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        AUX::WString name;
        ASSERT_TRUE(name.Assign(TEXT("before")));
        CleanTitle(c.title.data(), static_cast<std::uint32_t>(c.title.size()), name);
        EXPECT_EQ(WideString(AUX::WStringView(name)), c.name);
    }
    AUX::WString name;
    CleanTitle(nullptr, 0, name);
    EXPECT_TRUE(name.IsEmpty());

    ASSERT_TRUE(name.Assign(TEXT("before")));
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    CleanTitle(TEXT("longer than before"), 18, name);
    EXPECT_TRUE(name.IsEmpty());
}

}  // namespace
