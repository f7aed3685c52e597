#include "foundation/format_text.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "foundation/astring.h"
#include "foundation/wstring.h"

namespace {

using AUX::AString;
using AUX::WString;

// The run-time's own narrow printf is the judge.
template <class T>
void ExpectAsPrintf(const char* format, T value) {
    SCOPED_TRACE(format);
    char expected[2500];
    const int length = std::snprintf(expected, sizeof expected, format, value);
    ASSERT_GE(length, 0);
    AString text;
    const AUX::FormatArgument<char> argument(value);
    ASSERT_TRUE(text.FormatList(format, &argument, 1));
    EXPECT_STREQ(text.Text(), expected);
}

TEST(Format, PrintsAsPrintfDoes) {
    for (const char* flags : {"", "-", "0", "+", " ", "-0", "+0"}) {
        for (const char* size : {"", "1", "12", ".0", ".1", ".8", "12.5", "3.9"}) {
            const std::string start = std::string("%") + flags + size;
            const bool hasSign = start.find_first_of("+ ") != std::string::npos;
            for (const int value : {0, 1, -1, 255, -2147483647 - 1, 2147483647}) {
                ExpectAsPrintf((start + "d").c_str(), value);
                if (hasSign) continue;  // A sign says nothing to the others.
                for (const char* type : {"u", "x", "X"})
                    ExpectAsPrintf((start + type).c_str(), static_cast<unsigned>(value));
            }
            for (const double value : {0.0, -0.0, 1.5, -2.25, 0.0005, 999.9995, 1e300, 5e-324,
                                       std::numeric_limits<double>::infinity()})
                ExpectAsPrintf((start + "f").c_str(), value);
        }
    }
    for (const char* format : {"%lld", "%20lld", "%llx", "%llu"})
        ExpectAsPrintf(format, std::numeric_limits<std::int64_t>::min());
    ExpectAsPrintf("%.1200f", 0.1);
    ExpectAsPrintf("%.1200f", std::numeric_limits<double>::max());
    ExpectAsPrintf("%-8.2s|%%", "text");
}

TEST(Format, PrintsWideTexts) {
    WString text;
    WString name;
    ASSERT_TRUE(name.Assign(TEXT("C:\\T\\")));
    ASSERT_TRUE(text.Format(TEXT("%ls%x%ls"), name, 0x34bf15, TEXT(".html")));
    EXPECT_TRUE(text == TEXT("C:\\T\\34bf15.html"));
    ASSERT_TRUE(text.Format(TEXT("[%5.2ls|%-4ls|%ls]"), TEXT("abc"),
                            AUX::WStringView(TEXT("xyz"), 2), static_cast<const WCHAR*>(nullptr)));
    EXPECT_TRUE(text == TEXT("[   ab|xy  |]"));
    ASSERT_TRUE(text.Format(TEXT("%.3f %lld %zu 100%%"), 595.27559f, -5LL, std::size_t{7}));
    EXPECT_TRUE(text == TEXT("595.276 -5 7 100%"));
}

TEST(Format, RefusesWhatItDoesNotKnow) {
    using Argument = AUX::FormatArgument<WCHAR>;
    struct {
        const char* why;
        const WCHAR* format;
        std::vector<Argument> arguments;
    } const kCases[] = {
        {"no format", nullptr, {}},
        {"nothing behind the sign", TEXT("50%"), {}},
        {"unknown conversion", TEXT("%g"), {1.5}},
        {"writing through a pointer", TEXT("%n"), {1}},
        {"width as an argument", TEXT("%*d"), {1, 2}},
        {"not ASCII", TEXT("%\x263A"), {1}},
        {"a text without its size letter", TEXT("%s"), {TEXT("a")}},
        {"too few arguments", TEXT("%d %d"), {1}},
        {"too many arguments", TEXT("%d"), {1, 2}},
        {"a text for a number", TEXT("%d"), {TEXT("1")}},
        {"a number for a text", TEXT("%ls"), {1}},
        {"a number for a real", TEXT("%f"), {1}},
        {"width beyond reason", TEXT("%99999999999d"), {1}},
        {"text longer than a string",
         TEXT("%134217727d%ls"),
         {1, AUX::WStringView(TEXT("a"), 0xFFFFFFF0)}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        EXPECT_FALSE(text.FormatList(c.format, c.arguments.data(), c.arguments.size()));
        EXPECT_TRUE(text == TEXT("before"));
    }
}

}  // namespace
