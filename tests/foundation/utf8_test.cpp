#include "foundation/utf8.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "platform/text.h"

namespace {

using AUX::EncodeUtf8;
using platform::WideString;

std::string Encode(const WideString& text, bool withMark) {
    const std::int64_t length = static_cast<std::int64_t>(text.size());
    std::string bytes(EncodeUtf8(text.data(), length, nullptr, 0, withMark), '?');
    EXPECT_EQ(EncodeUtf8(text.data(), length, bytes.data(), bytes.size(), withMark), bytes.size());
    return bytes;
}

TEST(EncodeUtf8, EncodesEachLength) {
    const struct {
        const char* why;
        WideString text;
        std::string bytes;
        std::string marked;
    } kCases[] = {
        {"one byte", TEXT("a\x7F"), "a\x7F",
         "\xEF\xBB\xBF"
         "a\x7F"},
        {"two bytes", TEXT("\x80\x7FF"), "\xC2\x80\xDF\xBF", "\xEF\xBB\xBF\xC2\x80\xDF\xBF"},
        {"three bytes", TEXT("\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF",
         "\xEF\xBB\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {"a pair", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80", "\xEF\xBB\xBF\xF0\x9F\x98\x80"},
        {"the limits of pairs",
         {0xD800, 0xDC00, 0xDBFF, 0xDFFF},
         "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
         "\xEF\xBB\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"a lone high one at the end", {0xD83D}, "\xED\xA0\xBD", "\xEF\xBB\xBF\xED\xA0\xBD"},
        {"a lone high one",
         {0xD83D, 'a'},
         "\xED\xA0\xBD"
         "a",
         "\xEF\xBB\xBF\xED\xA0\xBD"
         "a"},
        {"two high ones",
         {0xD83D, 0xD83D, 0xDE00},
         "\xED\xA0\xBD\xF0\x9F\x98\x80",
         "\xEF\xBB\xBF\xED\xA0\xBD\xF0\x9F\x98\x80"},
        {"a lone low one",
         {0xDE00, 'a'},
         "\xED\xB8\x80"
         "a",
         "\xEF\xBB\xBF\xED\xB8\x80"
         "a"},
        {"a mark of its own",
         {0xFEFF, 'a'},
         "\xEF\xBB\xBF"
         "a",
         "\xEF\xBB\xBF"
         "a"},
        {"an inner null",
         {'a', 0, 'b'},
         std::string("a\0b", 3),
         std::string("\xEF\xBB\xBF"
                     "a\0b",
                     6)},
        {"nothing", {}, {}, {}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Encode(c.text, false), c.bytes);
        EXPECT_EQ(Encode(c.text, true), c.marked);
    }
    char byte = 0;
    EXPECT_EQ(EncodeUtf8(nullptr, 5, &byte, 1, true), 0u);
    EXPECT_EQ(EncodeUtf8(TEXT("abc"), -1, nullptr, 7, false), 3u);
    EXPECT_EQ(EncodeUtf8(TEXT("abc"), -1, &byte, 0, true), 6u);
}

TEST(EncodeUtf8, CutsAtTheEndOfTheBuffer) {
    const WideString text = TEXT("ascii enough to fill more than a block, \xE4\x263A") +
                            WideString{0xD83D, 0xDE00} + TEXT("and the rest of it");
    for (const bool withMark : {false, true}) {
        const std::string whole = Encode(text, withMark);
        for (std::size_t size = 1; size <= whole.size() + 1; ++size) {
            std::string buffer(size + 1, '#');
            const std::size_t written = EncodeUtf8(
                text.data(), static_cast<std::int64_t>(text.size()), buffer.data(), size, withMark);
            EXPECT_EQ(buffer.substr(0, written), whole.substr(0, size)) << size;
            EXPECT_EQ(buffer.substr(written), std::string(size + 1 - written, '#')) << size;
        }
    }
}

TEST(EncodeUtf8, FindsEveryCharacterAmongAscii) {
    std::mt19937 random(7);
    const WideString kOthers[] = {TEXT("\xE4"), TEXT("\x263A"), {0xD83D, 0xDE00}};
    for (std::size_t length = 1; length < 70; ++length) {
        WideString text;
        while (text.size() < length) {
            if (random() % 12) {
                text += static_cast<WCHAR>('a' + random() % 26);
            } else {
                text += kOthers[random() % 3];
            }
        }
        EXPECT_EQ(Encode(text, false), platform::ToUtf8(text));
    }
}

}  // namespace
