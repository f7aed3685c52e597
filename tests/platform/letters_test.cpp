#include "platform/letters.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace {

TEST(Letters, HaveNoCaseInComparisons) {
    const struct {
        const char* a;
        const char* b;
        bool isSame;
    } kCases[] = {
        {"", "", true},
        {"Title", "tITLE", true},
        {"\xC3\x84rger", "\xC3\xA4RGER", true},
        {"\xCE\xA9", "\xCF\x89", true},
        {"\xD0\x96", "\xD0\xB6", true},
        {"a", "b", false},
        {"a", "aa", false},
        {"", "a", false},
    };
    for (const auto& c : kCases) {
        const platform::WideString a = platform::FromUtf8(c.a);
        const platform::WideString b = platform::FromUtf8(c.b);
        EXPECT_EQ(lstrcmpiW(a.c_str(), b.c_str()) == 0, c.isSame) << c.a;
        EXPECT_TRUE(c.isSame || lstrcmpiW(a.c_str(), b.c_str()) < 0) << c.a;
        EXPECT_TRUE(c.isSame || lstrcmpiW(b.c_str(), a.c_str()) > 0) << c.a;
    }
    EXPECT_LT(lstrcmpiW(nullptr, TEXT("")), 0);
    EXPECT_EQ(lstrcmpiW(nullptr, nullptr), 0);
}

TEST(Letters, BecomeSmall) {
    platform::WideString text = platform::FromUtf8("AZaz[\xC3\x84\xC5\xB8\xCE\xA9\xD0\xAF\xC3\x9F");
    const auto length = static_cast<DWORD>(text.size());
    EXPECT_EQ(CharLowerBuffW(text.data(), length), length);
    EXPECT_EQ(platform::ToUtf8(text), "azaz[\xC3\xA4\xC3\xBF\xCF\x89\xD1\x8F\xC3\x9F");
    text = TEXT("ABC");
    EXPECT_EQ(CharLowerBuffW(text.data(), 2), 2u);
    EXPECT_EQ(platform::ToUtf8(text), "abC");
}

}  // namespace
