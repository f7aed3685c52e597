#include "platform/text.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(Utf8Text, GoesBothWaysAndReplacesWhatIsMalformed) {
    struct Case {
        const char* why;
        std::string utf8;
        WideString wide;
        bool back;  // whether the UTF-8 text comes out again as it went in
    };
    const Case kCases[] = {
        {"plain", "abc", TEXT("abc"), true},
        {"two, three and four bytes",
         "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
         {0x00E9, 0x20AC, 0xD83D, 0xDE00},
         true},
        {"largest code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}, true},
        {"beyond the largest", "\xF4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}, false},
        {"overlong slash", "\xC0\xAF", {0xFFFD, 0xFFFD}, false},
        {"encoded surrogate", "\xED\xA0\x80", {0xFFFD, 0xFFFD, 0xFFFD}, false},
        {"cut off", "a\xE2\x82", {'a', 0xFFFD}, false},
        {"stray tail", "\x80z", {0xFFFD, 'z'}, false},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_TRUE(FromUtf8(c.utf8) == c.wide);
        if (c.back) {
            EXPECT_EQ(ToUtf8(c.wide), c.utf8);
        }
    }
    EXPECT_EQ(ToUtf8(WideString{0xD83D, 'x', 0xDE00}), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

}  // namespace
}  // namespace platform
