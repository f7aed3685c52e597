#include "foundation/format_text.h"

#include <clocale>
#include <cmath>
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
    char expected[2000];
    const int length = std::snprintf(expected, sizeof expected, format, value);
    ASSERT_GE(length, 0);
    AString text;
    const AUX::FormatArgument<char> argument(value);
    ASSERT_TRUE(text.FormatList(format, &argument, 1));
    EXPECT_STREQ(text.Text(), expected);
}

TEST(Format, PrintsNumbersAsPrintfDoes) {
    for (const char* flags : {"", "-", "0", "+", " ", "#", "-0", "+0", "# ", "0#", "-#"}) {
        for (const char* size : {"", "1", "12", ".0", ".1", ".8", "12.5", "3.9"}) {
            const std::string start = std::string("%") + flags + size;
            for (const int value : {0, 1, -1, 7, 255, -2147483647 - 1, 2147483647}) {
                const bool isAlternate = start.find('#') != std::string::npos;
                if (!isAlternate) ExpectAsPrintf((start + "d").c_str(), value);
                if (start.find_first_of("+ ") != std::string::npos) continue;
                const unsigned natural = static_cast<unsigned>(value);
                if (!isAlternate) ExpectAsPrintf((start + "u").c_str(), natural);
                ExpectAsPrintf((start + "x").c_str(), natural);
                ExpectAsPrintf((start + "X").c_str(), natural);
                // Not every run-time keeps the one digit that C asks of %#.0o.
                if (natural || !isAlternate) ExpectAsPrintf((start + "o").c_str(), natural);
            }
            if (start.find('#') != std::string::npos) continue;
            for (const double value : {0.0, -0.0, 1.5, -2.25, 0.0005, 999.9995, 1e22, 1e300, 5e-324,
                                       12345678.9, std::numeric_limits<double>::max()}) {
                for (const char* type : {"f", "e", "g", "E", "G"}) {
                    ExpectAsPrintf((start + type).c_str(), value);
                }
            }
        }
    }
    for (const char* format : {"%lld", "%20lld", "%llx", "%llu"}) {
        ExpectAsPrintf(format, std::numeric_limits<std::int64_t>::min());
    }
    for (const char* format : {"%f", "%08F", "%-8g|", "%+e"}) {
        ExpectAsPrintf(format, std::numeric_limits<double>::infinity());
    }
    ExpectAsPrintf("%.1200f", 0.1);
    ExpectAsPrintf("%.1200e", 0.1);
    ExpectAsPrintf("%s|%%", "text");
    ExpectAsPrintf("%-8.2s|", "text");
    ExpectAsPrintf("%3c", 'x');
}

TEST(Format, PrintsWideTexts) {
    WString text;
    WString name;
    ASSERT_TRUE(name.Assign(TEXT("C:\\T\\")));
    ASSERT_TRUE(text.Format(TEXT("%ls%x%ls"), name, 0x34bf15, TEXT(".html")));
    EXPECT_TRUE(text == TEXT("C:\\T\\34bf15.html"));
    ASSERT_TRUE(text.Format(TEXT("[%5.2ls|%-4ls|%c|%ls]"), TEXT("abc"),
                            AUX::WStringView(TEXT("xyz"), 2), TEXT('\x263A'),
                            static_cast<const WCHAR*>(nullptr)));
    EXPECT_TRUE(text == TEXT("[   ab|xy  |\x263A|]"));
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
        {"only flags behind it", TEXT("%-08"), {1}},
        {"unknown conversion", TEXT("%q"), {1}},
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

TEST(Format, AsksNoLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "German"}) {
        if (std::setlocale(LC_NUMERIC, name)) break;
    }
    char judge[16];
    std::snprintf(judge, sizeof judge, "%.1f", 1.5);
    WString text;
    EXPECT_TRUE(text.Format(TEXT("%.3f"), 1.5));
    EXPECT_TRUE(text == TEXT("1.500"));
    std::setlocale(LC_NUMERIC, before.c_str());
    if (std::string(judge) != "1,5") GTEST_SKIP() << "no locale with a decimal comma here";
}

}  // namespace
