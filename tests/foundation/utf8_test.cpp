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
        const char* bytes;
    } kCases[] = {
        {"one and two bytes", TEXT("a\x7F\x80\x7FF"), "a\x7F\xC2\x80\xDF\xBF"},
        {"three bytes", TEXT("\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF"},
        {"a pair", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"},
        {"first pair", {0xD800, 0xDC00}, "\xF0\x90\x80\x80"},
        {"last pair", {0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF"},
        {"a lone high one at the end", {0xD83D}, "\xED\xA0\xBD"},
        {"a lone high one", {0xD83D, '!'}, "\xED\xA0\xBD!"},
        {"two high ones", {0xD83D, 0xD83D, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80"},
        {"a lone low one", {0xDE00, '!'}, "\xED\xB8\x80!"},
    };
    const std::string mark = "\xEF\xBB\xBF";
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Encode(c.text, false), c.bytes);
        EXPECT_EQ(Encode(c.text, true), mark + c.bytes);
    }
    EXPECT_EQ(Encode({0xFEFF, 'a'}, true), mark + "a");
    EXPECT_EQ(Encode({'a', 0, 'b'}, false), std::string("a\0b", 3));
    EXPECT_EQ(Encode({}, true), "");
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

TEST(EncodeUtf8, TakesRunsAndMixturesOfEveryLength) {
    std::mt19937 random(7);
    const WideString kKinds[] = {TEXT("a"), TEXT("\xE4"), TEXT("\x263A"), {0xD83D, 0xDE00}};
    for (std::size_t length = 1; length < 70; ++length) {
        for (const unsigned rarity : {1u, 2u, 12u, 100u}) {
            WideString text;
            unsigned kind = random() % 4;
            while (text.size() < length) {
                if (random() % rarity == 0) kind = random() % 4;
                text += kKinds[kind];
            }
            ASSERT_EQ(Encode(text, false), platform::ToUtf8(text)) << length << ' ' << rarity;
        }
    }
}

}  // namespace
