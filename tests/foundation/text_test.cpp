// Strings, formatted texts and their bytes.

#include "platform/text.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "foundation/astring.h"
#include "foundation/memory_testing.h"
#include "foundation/utf8.h"
#include "foundation/utf8_writers.h"
#include "foundation/wstring.h"
#include "platform/processor.h"

namespace {

using AUX::EncodeUtf8;
using AUX::WString;
using AUX::testing::AllocationWatch;
using platform::WideString;

TEST(WString, FollowsTheGrowthRules) {
    const struct {
        bool (*act)(WString&);
        const WCHAR* before;
        const WCHAR* after;
        std::uint32_t capacity;
    } kCases[] = {
        {[](WString& s) { return s.Assign(TEXT("ab")); }, TEXT("abcdef"), TEXT("ab"), 2},
        {[](WString& s) { return s.Assign(nullptr, 7); }, TEXT("abc"), TEXT(""), 0},
        {[](WString& s) { return s.Append(TEXT("d")); }, TEXT(""), TEXT("d"), 31},
        {[](WString& s) { return s.Append(nullptr); }, TEXT(""), TEXT(""), 0},
        {[](WString& s) { return s.AppendRepeated('x', 0); }, TEXT(""), TEXT(""), 0},
        {[](WString& s) { return s.InsertAt(9, 'x'); }, TEXT("abc"), TEXT("abcx"), 31},
        {[](WString& s) { return s.SetLength(1); }, TEXT("abc"), TEXT("a"), 3},
        {[](WString& s) { return s.Reserve(31); }, TEXT("abc"), TEXT("abc"), 31},
        {[](WString& s) { return s.Reserve(32); }, TEXT("abc"), TEXT("abc"), 63},
        {[](WString& s) { return s.Format(TEXT("%d"), 777); }, TEXT("abc"), TEXT("777"), 3},
        {[](WString& s) { return s.Assign(s.Text(), 2); }, TEXT("abcde"), TEXT("ab"), 5},
        {[](WString& s) { return s.Assign(s.Text(), 9); }, TEXT("abcde"), TEXT("abcde"), 5},
        {[](WString& s) { return s.Format(TEXT("<%ls%29d>"), s, 1); }, TEXT("abc"),
         TEXT("<abc                            1>"), 63},
        {[](WString& s) { return s.Reserve(20) && s.Format(TEXT("<%ls>"), s); }, TEXT("abc"),
         TEXT("<abc>"), 31},
        {[](WString& s) { return s.FormatList(s.Text(), nullptr, 0); }, TEXT("a%%b"), TEXT("a%b"),
         31},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        WString s;
        ASSERT_TRUE(s.Assign(c.before));
        {
            AllocationWatch watch;
            watch.FailFrom(1);
            const bool isDone = c.act(s);
            EXPECT_EQ(isDone, watch.Failures() == 0);
            EXPECT_TRUE(s == (isDone ? c.after : c.before));
        }
        ASSERT_TRUE(s.Assign(c.before));
        EXPECT_TRUE(c.act(s) && s == c.after);
        EXPECT_EQ(s.Capacity(), c.capacity);
    }
}

// The three fields as they lie in memory, to make a string of a length that no test can afford.
struct Fields {
    const WCHAR* data;
    std::uint32_t length;
    std::uint32_t capacity;
};

TEST(WString, StopsAtTheLargestLength) {
    const WCHAR text[32] = {};
    WString s;
    const auto put = [&s](const Fields& fields) {
        std::memcpy(static_cast<void*>(&s), &fields, sizeof fields);
    };
    for (const std::uint32_t length : {0xFFFFFFFEu, 0xFFFFFFFDu, 0xFFFFFFE0u}) {
        SCOPED_TRACE(length);
        put({text, length, length});
        EXPECT_FALSE(s.AppendRepeated('x', 0xFFFFFFFF - length));
        EXPECT_FALSE(s.AppendRepeated('x', 0xFFFFFFFF));
        EXPECT_FALSE(s.SetLength(0xFFFFFFFF));
        EXPECT_FALSE(s.Reserve(0xFFFFFFFF));
        EXPECT_FALSE(s.Append(text, 0xFFFFFFFF - length));
        EXPECT_FALSE(length == 0xFFFFFFFE && s.InsertAt(0, 'x'));
    }
    put({});
    EXPECT_FALSE(s.Assign(text, 0xFFFFFFFFLL));
    EXPECT_FALSE(s.Append(text, 0x7FFFFFFFFFFFFFFF));
    AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(s.Reserve(0xFFFFFFFE));
    EXPECT_EQ(watch.Requests(), 1u) << "its size in bytes does not wrap";
}

template <class Char>
class StringModel : public testing::Test {};
using Characters = testing::Types<WCHAR, char>;
TYPED_TEST_SUITE(StringModel, Characters);

TYPED_TEST(StringModel, AgreesWithAPlainStringWhateverFails) {
    using Model = std::basic_string<TypeParam>;
    std::mt19937 random(20261122);
    const auto below = [&random](std::size_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    AllocationWatch watch;
    {
        AUX::BasicString<TypeParam> s;
        Model model;
        for (int step = 0; step < 20000; ++step) {
            SCOPED_TRACE(step);
            const Model text(below(70), static_cast<TypeParam>('a' + below(26)));
            const std::uint32_t start = below(model.size() + 1);
            const std::uint32_t length = below(model.size() - start + 1);
            const Model part = model.substr(start, length);
            const std::uint32_t action = model.size() > 5000 ? 1 : below(6);
            Model next = model;
            const std::uint64_t failures = watch.Failures();
            if (below(4) == 0) watch.FailOnce(1);
            bool isDone = true;
            if (action == 0) {
                next = text;
                isDone = s.Assign(text.c_str());
            } else if (action == 1) {
                next = part;
                isDone = s.Assign(s.Text() + start, length);
            } else if (action == 2) {
                next += part;
                isDone = s.Append(s.Text() + start, length);
            } else if (action == 3) {
                next.append(text.size(), 'x');
                isDone = s.AppendRepeated('x', static_cast<std::uint32_t>(text.size()));
            } else if (action == 4) {
                next.insert(start, 1, 'x');
                isDone = s.InsertAt(start, 'x');
            } else {
                next.resize(start);
                isDone = s.SetLength(start);
            }
            ASSERT_EQ(isDone, watch.Failures() == failures);
            if (isDone) model = next;
            watch.FailNone();
            ASSERT_EQ(Model(s.Text(), s.Length()), model);
            ASSERT_EQ(s.Text()[s.Length()], TypeParam(0));
            if (below(100) == 0) s = AUX::BasicString<TypeParam>(std::move(s));
        }
    }
    EXPECT_GT(watch.Failures(), 500u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

// The run-time's own narrow printf is the judge.
template <class T>
void ExpectAsPrintf(const std::string& format, T value) {
    char expected[2500];
    ASSERT_GE(std::snprintf(expected, sizeof expected, format.c_str(), value), 0);
    AUX::AString text;
    const AUX::FormatArgument<char> argument(value);
    ASSERT_TRUE(text.FormatList(format.c_str(), &argument, 1));
    EXPECT_STREQ(text.Text(), expected) << format;
}

TEST(Format, PrintsAsPrintfDoes) {
    for (const std::string flags : {"", "-", "0", "+", " ", "-0", "+0"}) {
        for (const char* size : {"", "1", "12", ".0", ".1", ".8", "12.5", "3.9"}) {
            const std::string start = "%" + flags + size;
            for (const int value : {0, 1, -1, 255, -2147483647 - 1, 2147483647}) {
                ExpectAsPrintf(start + "d", value);
                if (flags.find_first_of("+ ") != std::string::npos) continue;  // Not for these.
                for (const char* type : {"u", "x", "X"}) {
                    ExpectAsPrintf(start + type, static_cast<unsigned>(value));
                }
            }
            for (const double value : {0.0, -0.0, 1.5, -2.25, 0.0005, 999.9995, 1e300, 5e-324,
                                       std::numeric_limits<double>::infinity()}) {
                ExpectAsPrintf(start + "f", value);
            }
        }
    }
    for (const char* format : {"%lld", "%20lld", "%llx", "%llu"}) {
        ExpectAsPrintf(format, std::numeric_limits<std::int64_t>::min());
    }
    ExpectAsPrintf("%.1200f", std::numeric_limits<double>::max());
    ExpectAsPrintf("%-8.2s|%%", "text");
}

TEST(Format, PrintsWideTextsAndRefusesWhatItDoesNotKnow) {
    using Argument = AUX::FormatArgument<WCHAR>;
    const struct {
        const WCHAR* format;
        std::vector<Argument> arguments;
        const WCHAR* result = nullptr;  // null: refused
    } kCases[] = {
        {TEXT("%ls%x%ls"), {TEXT("T\\"), 0x34bf15, TEXT(".html")}, TEXT("T\\34bf15.html")},
        {TEXT("%5.2ls|%-4ls|"),
         {TEXT("abc"), AUX::WStringView(TEXT("xyz"), 2)},
         TEXT("   ab|xy  |")},
        {TEXT("%.3f %lld %zu 100%%"), {595.27559, -5LL, std::size_t{7}}, TEXT("595.276 -5 7 100%")},
        {nullptr, {}},
        {TEXT("50%"), {}},
        {TEXT("%g"), {1.5}},
        {TEXT("%n"), {1}},
        {TEXT("%*d"), {1, 2}},
        {TEXT("%\x263A"), {1}},
        {TEXT("%s"), {TEXT("no size letter")}},
        {TEXT("%d %d"), {1}},
        {TEXT("%d"), {1, 2}},
        {TEXT("%d"), {TEXT("1")}},
        {TEXT("%ls"), {1}},
        {TEXT("%f"), {1}},
        {TEXT("%99999999999d"), {1}},
        {TEXT("%134217727d%ls"), {1, AUX::WStringView(TEXT("a"), 0xFFFFFFF0)}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        EXPECT_EQ(text.FormatList(c.format, c.arguments.data(), c.arguments.size()),
                  c.result != nullptr);
        EXPECT_EQ(WideString(text.Text()), c.result ? c.result : TEXT("before"));
    }
}

std::string Encode(const WideString& text, bool withMark) {
    const std::int64_t length = static_cast<std::int64_t>(text.size());
    std::string bytes(EncodeUtf8(text.data(), length, nullptr, 0, withMark), '?');
    EXPECT_EQ(EncodeUtf8(text.data(), length, bytes.data(), bytes.size(), withMark), bytes.size());
    return bytes;
}

TEST(EncodeUtf8, EncodesEachLengthAndLoneSurrogates) {
    const struct {
        WideString text;
        std::string bytes;
    } kCases[] = {
        {TEXT("a\x7F\x80\x7FF"), "a\x7F\xC2\x80\xDF\xBF"},
        {TEXT("\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF"},
        {{0xD800, 0xDC00}, "\xF0\x90\x80\x80"},
        {{0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF"},
        {{0xD83D}, "\xED\xA0\xBD"},
        {{0xD83D, 0xD83D, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80"},
        {{0xDE00, 0, '!'}, std::string("\xED\xB8\x80\0!", 5)},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Encode(c.text, false), c.bytes);
        EXPECT_EQ(Encode(c.text, true), "\xEF\xBB\xBF" + c.bytes);
    }
    EXPECT_EQ(Encode({0xFEFF, 'a'}, true),
              "\xEF\xBB\xBF"
              "a")
        << "one mark is enough";
    EXPECT_EQ(Encode({}, true), "");
    char byte = 0;
    EXPECT_EQ(EncodeUtf8(nullptr, 5, &byte, 1, true), 0u);
    EXPECT_EQ(EncodeUtf8(TEXT("abc"), -1, nullptr, 7, false), 3u);
    EXPECT_EQ(EncodeUtf8(TEXT("abc"), -1, &byte, 0, true), 6u);
}

TEST(EncodeUtf8, GivesTheSameBytesOnEveryProcessor) {
    if (!platform::HasAvx512Compress()) GTEST_SKIP() << "this processor has one form only";
    std::mt19937 random(17);
    const AUX::utf8::BlockWriter kWriters[] = {AUX::utf8::WriteBlocks, AUX::utf8::CompressBlocks};
    for (int run = 0; run < 3000; ++run) {
        SCOPED_TRACE(run);
        // Stretches of one sort, in which a lone unit of any sort may stand.
        constexpr WCHAR kStarts[] = {0, 0x60, 0x7C0, 0x4E00, 0xD800, 0xDBC0, 0xDC00, 0xFFC0};
        std::vector<WCHAR> text(random() % 300);
        WCHAR start = 0;
        for (WCHAR& unit : text) {
            if (random() % 32 == 0) start = kStarts[random() % 8];
            unit =
                static_cast<WCHAR>((random() % 64 ? start : kStarts[random() % 8]) + random() % 64);
            if (start == 0xD800 && &unit > text.data() && (&unit - text.data()) % 2) unit |= 0x400;
        }
        std::string results[2];
        for (const int form : {0, 1}) {
            AUX::utf8::chosenWriter = kWriters[form];
            results[form] = Encode(WideString(text.begin(), text.end()), false);
        }
        AUX::utf8::chosenWriter = nullptr;
        ASSERT_EQ(results[0], results[1]);
    }
}

TEST(EncodeUtf8, FindsEveryCharacterAndCutsAtTheEndOfTheBuffer) {
    std::mt19937 random(7);
    const WideString kOthers[] = {TEXT("\xE4"), TEXT("\x263A"), {0xD83D, 0xDE00}};
    for (std::size_t length = 1; length < 70; ++length) {
        WideString text;
        while (text.size() < length) {
            text += random() % 12 ? WideString(1, static_cast<WCHAR>('a' + random() % 26))
                                  : kOthers[random() % 3];
        }
        const bool withMark = length % 2 == 0;
        const std::string whole = (withMark ? "\xEF\xBB\xBF" : "") + platform::ToUtf8(text);
        EXPECT_EQ(Encode(text, withMark), whole);
        for (std::size_t size = 1; size <= whole.size(); ++size) {
            std::string buffer(size + 1, '#');
            const std::int64_t units = static_cast<std::int64_t>(text.size());
            EXPECT_EQ(EncodeUtf8(text.data(), units, buffer.data(), size, withMark), size);
            EXPECT_EQ(buffer, whole.substr(0, size) + '#');
        }
    }
}

}  // namespace
