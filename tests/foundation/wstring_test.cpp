#include "foundation/wstring.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "foundation/astring.h"
#include "foundation/memory_testing.h"

namespace {

using AUX::AString;
using AUX::WString;
using AUX::WStringView;
using AUX::testing::AllocationWatch;
using Wide = std::basic_string<WCHAR>;

Wide ContentOf(const WString& s) {
    EXPECT_EQ(s.Text()[s.Length()], 0);
    return Wide(s.Text(), s.Length());
}

struct StringCase {
    const char* why;
    std::function<bool(WString&)> act;
    Wide before;
    Wide after;
    std::uint32_t capacity;
};

TEST(WString, FollowsTheGrowthRules) {
    const StringCase kCases[] = {
        {"assigning is exact",
         [](WString& s) { return s.Assign(TEXT("abc")); },
         {},
         TEXT("abc"),
         3},
        {"assigning brings the capacity down",
         [](WString& s) { return s.Reserve(90) && s.Assign(TEXT("ab")); }, TEXT("abcdef"),
         TEXT("ab"), 2},
        {"assigning nothing frees",
         [](WString& s) { return s.Assign(TEXT("")); },
         TEXT("abc"),
         {},
         0},
        {"so does null", [](WString& s) { return s.Assign(nullptr, 7); }, TEXT("abc"), {}, 0},
        {"so does length 0", [](WString& s) { return s.Assign(TEXT("x"), 0); }, TEXT("abc"), {}, 0},
        {"a length stops early",
         [](WString& s) { return s.Assign(TEXT("xyz"), 2); },
         {},
         TEXT("xy"),
         2},
        {"appending rounds", [](WString& s) { return s.Append(TEXT("d")); }, TEXT("abc"),
         TEXT("abcd"), 31},
        {"appending to nothing rounds",
         [](WString& s) { return s.Append(TEXT("d")); },
         {},
         TEXT("d"),
         31},
        {"appending nothing takes no block",
         [](WString& s) { return s.Append(TEXT("")); },
         {},
         {},
         0},
        {"appending null", [](WString& s) { return s.Append(nullptr); }, TEXT("abc"), TEXT("abc"),
         3},
        {"31 fit 32",
         [](WString& s) { return s.AppendRepeated(TEXT('x'), 31); },
         {},
         Wide(31, TEXT('x')),
         31},
        {"32 need 64",
         [](WString& s) { return s.AppendRepeated(TEXT('x'), 32); },
         {},
         Wide(32, TEXT('x')),
         63},
        {"repeating nothing", [](WString& s) { return s.AppendRepeated(TEXT('x'), 0); }, {}, {}, 0},
        {"inserting rounds", [](WString& s) { return s.InsertAt(1, TEXT('x')); }, TEXT("abc"),
         TEXT("axbc"), 31},
        {"inserting past the end", [](WString& s) { return s.InsertAt(9, TEXT('x')); }, TEXT("abc"),
         TEXT("abcx"), 31},
        {"inserting into nothing",
         [](WString& s) { return s.InsertAt(0, TEXT('x')); },
         {},
         TEXT("x"),
         31},
        {"sizing down keeps the block", [](WString& s) { return s.SetLength(1); }, TEXT("abc"),
         TEXT("a"), 3},
        {"sizing nothing to 0", [](WString& s) { return s.SetLength(0); }, {}, {}, 0},
        {"clearing keeps the block",
         [](WString& s) {
             s.Clear();
             return true;
         },
         TEXT("abc"),
         {},
         3},
        {"freeing does not",
         [](WString& s) {
             s.Free();
             return true;
         },
         TEXT("abc"),
         {},
         0},
        {"reserving keeps the text", [](WString& s) { return s.Reserve(100); }, TEXT("abc"),
         TEXT("abc"), 127},
        {"reserving less changes nothing", [](WString& s) { return s.Reserve(3); }, TEXT("abc"),
         TEXT("abc"), 3},
        {"formatting rounds",
         [](WString& s) { return s.Format(TEXT("%d"), 7); },
         {},
         TEXT("7"),
         31},
        {"formatting nothing keeps the block",
         [](WString& s) { return s.Format(TEXT("")); },
         TEXT("abc"),
         {},
         3},
        {"formatting what fits", [](WString& s) { return s.Format(TEXT("%d"), 777); }, TEXT("abc"),
         TEXT("777"), 3},
    };
    for (const StringCase& c : kCases) {
        SCOPED_TRACE(c.why);
        WString s;
        ASSERT_TRUE(s.Assign(c.before.data(), static_cast<std::int64_t>(c.before.size())));
        EXPECT_TRUE(c.act(s));
        EXPECT_EQ(ContentOf(s), c.after);
        EXPECT_EQ(s.Capacity(), c.capacity);
        EXPECT_EQ(s.Data() == nullptr, c.capacity == 0);
    }
    WString sized;
    ASSERT_TRUE(sized.SetLength(100));
    EXPECT_EQ(sized.Capacity(), 127u);
    EXPECT_EQ(sized.Text()[100], 0);
}

TEST(WString, TakesPartsOfItself) {
    const StringCase kCases[] = {
        {"itself, growing", [](WString& s) { return s.Append(s); }, Wide(20, TEXT('x')),
         Wide(40, TEXT('x')), 63},
        {"a part, growing", [](WString& s) { return s.Append(s.Data() + 2, 2); }, TEXT("abcdef"),
         TEXT("abcdefcd"), 31},
        {"its end, in place", [](WString& s) { return s.Reserve(20) && s.Append(s.Data() + 3); },
         TEXT("abcdef"), TEXT("abcdefdef"), 31},
        {"cutting itself keeps the block", [](WString& s) { return s.Assign(s.Text(), 2); },
         TEXT("abcde"), TEXT("ab"), 5},
        {"assigning itself changes nothing", [](WString& s) { return s.Assign(s); }, TEXT("abcde"),
         TEXT("abcde"), 5},
        {"a longer length of itself", [](WString& s) { return s.Assign(s.Text(), 9); },
         TEXT("abcde"), TEXT("abcde"), 5},
        {"its own end", [](WString& s) { return s.Assign(s.Data() + 3); }, TEXT("abcdef"),
         TEXT("def"), 3},
        {"its own middle", [](WString& s) { return s.Assign(s.Data() + 1, 4); }, TEXT("abcdef"),
         TEXT("bcde"), 4},
        {"its own terminator",
         [](WString& s) { return s.Assign(s.Data() + 6); },
         TEXT("abcdef"),
         {},
         0},
        {"formatting itself, growing",
         [](WString& s) { return s.Format(TEXT("%ls-%ls-%040d"), s, s.Data() + 3, 1); },
         TEXT("abcdef"), TEXT("abcdef-def-0000000000000000000000000000000000000001"), 63},
        {"formatting itself, in place",
         [](WString& s) { return s.Reserve(20) && s.Format(TEXT("<%ls>"), s); }, TEXT("abc"),
         TEXT("<abc>"), 31},
        {"itself as the format", [](WString& s) { return s.FormatList(s.Text(), nullptr, 0); },
         TEXT("a%%b"), TEXT("a%b"), 31},
    };
    for (const StringCase& c : kCases) {
        SCOPED_TRACE(c.why);
        WString s;
        ASSERT_TRUE(s.Assign(c.before.c_str()));
        EXPECT_TRUE(c.act(s));
        EXPECT_EQ(ContentOf(s), c.after);
        EXPECT_EQ(s.Capacity(), c.capacity);
    }
}

TEST(WString, StaysAsItWasWhenMemoryRunsOut) {
    const StringCase kCases[] = {
        {"assign", [](WString& s) { return s.Assign(TEXT("longer text")); }, TEXT("abc"), {}, 0},
        {"assign, shorter", [](WString& s) { return s.Assign(TEXT("x")); }, TEXT("abc"), {}, 0},
        {"assign a part", [](WString& s) { return s.Assign(s.Data() + 1); }, TEXT("abc"), {}, 0},
        {"append", [](WString& s) { return s.Append(TEXT("d")); }, TEXT("abc"), {}, 0},
        {"append itself", [](WString& s) { return s.Append(s); }, TEXT("abc"), {}, 0},
        {"repeat", [](WString& s) { return s.AppendRepeated(TEXT('x'), 9); }, TEXT("abc"), {}, 0},
        {"insert", [](WString& s) { return s.InsertAt(0, TEXT('x')); }, TEXT("abc"), {}, 0},
        {"size", [](WString& s) { return s.SetLength(9); }, TEXT("abc"), {}, 0},
        {"reserve", [](WString& s) { return s.Reserve(9); }, TEXT("abc"), {}, 0},
        {"format", [](WString& s) { return s.Format(TEXT("%d"), 123456); }, TEXT("abc"), {}, 0},
        {"format itself", [](WString& s) { return s.Format(TEXT("%ls"), s); }, TEXT("abc"), {}, 0},
        {"append to nothing", [](WString& s) { return s.Append(TEXT("d")); }, {}, {}, 0},
    };
    AllocationWatch watch;
    for (const StringCase& c : kCases) {
        SCOPED_TRACE(c.why);
        WString s;
        ASSERT_TRUE(s.Assign(c.before.c_str()));
        const WCHAR* const block = s.Text();
        watch.FailFrom(1);
        EXPECT_FALSE(c.act(s));
        watch.FailNone();
        EXPECT_EQ(ContentOf(s), c.before);
        EXPECT_EQ(s.Text(), block);
        EXPECT_EQ(s.Capacity(), c.before.size());
    }
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

// The three fields as they lie in memory, to make a string of a length that no test can afford.
struct Fields {
    WCHAR* data;
    std::uint32_t length;
    std::uint32_t capacity;
};

TEST(WString, StopsAtTheLargestLength) {
    WCHAR block[4] = {};
    WString s;
    const auto put = [&s](const Fields& fields) {
        std::memcpy(static_cast<void*>(&s), &fields, sizeof fields);
    };
    static_assert(sizeof(Fields) == sizeof(WString));
    for (const std::uint32_t length : {0xFFFFFFFEu, 0xFFFFFFFDu, 0xFFFFFFE0u}) {
        SCOPED_TRACE(length);
        put({block, length, length});
        const std::uint32_t tooMany = 0xFFFFFFFFu - length;
        EXPECT_FALSE(s.AppendRepeated(TEXT('x'), tooMany));
        EXPECT_FALSE(s.AppendRepeated(TEXT('x'), 0xFFFFFFFF));
        EXPECT_FALSE(s.SetLength(0xFFFFFFFF));
        EXPECT_FALSE(s.Reserve(0xFFFFFFFF));
        const WCHAR text[32] = {};
        EXPECT_FALSE(s.Append(text, tooMany));
        EXPECT_EQ(s.Length(), length);
    }
    const WCHAR other[4] = {};
    EXPECT_FALSE(s.Assign(other, 0xFFFFFFFFLL));
    EXPECT_FALSE(s.Append(other, 0x7FFFFFFFFFFFFFFF));
    put({block, 0xFFFFFFFE, 0xFFFFFFFE});
    EXPECT_FALSE(s.InsertAt(0, TEXT('x')));
    put({});

    // Byte sizes of the largest lengths do not wrap: the request itself is refused.
    AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(s.Reserve(0xFFFFFFFE));
    EXPECT_EQ(watch.Requests(), 1u);
}

TEST(WString, MovesAndCompares) {
    WString a;
    ASSERT_TRUE(a.Assign(TEXT("abc")));
    WString b(std::move(a));
    EXPECT_EQ(a.Capacity(), 0u);  // NOLINT(bugprone-use-after-move): moved from is empty.
    a = std::move(b);
    WString& same = a;
    a = std::move(same);
    EXPECT_TRUE(a == TEXT("abc"));
    EXPECT_TRUE(b == WStringView());
    EXPECT_FALSE(a == b);
    EXPECT_STREQ(AString().Text(), "");
    EXPECT_EQ(WStringView(static_cast<const WCHAR*>(nullptr)).size(), 0u);
    EXPECT_TRUE(WStringView(a).substr(1, 9) == TEXT("bc"));
    EXPECT_TRUE(WStringView(a).substr(4).empty());
}

template <class Char>
class StringModel : public testing::Test {};
using Characters = testing::Types<WCHAR, char>;
TYPED_TEST_SUITE(StringModel, Characters);

TYPED_TEST(StringModel, AgreesWithAPlainStringWhateverFails) {
    using Char = TypeParam;
    using Model = std::basic_string<Char>;
    constexpr unsigned kSeed = 20261122;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const auto below = [&random](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    AllocationWatch watch;
    {
        AUX::BasicString<Char> s;
        Model model;
        for (int step = 0; step < 20000; ++step) {
            const Char character = static_cast<Char>('a' + below(26));
            const std::uint32_t number = below(70);
            const Model text(number, character);
            const std::uint32_t start = below(s.Length() + 1);
            const std::uint32_t part = below(s.Length() - start + 1);
            Model next = model;
            const std::uint64_t failures = watch.Failures();
            if (below(4) == 0) watch.FailOnce(1);
            bool isDone = true;
            switch (below(10)) {
                case 0:
                    next = text;
                    isDone = s.Assign(text.c_str());
                    break;
                case 1:
                    next = model.substr(start, part);
                    isDone = s.Assign(s.Text() + start, part);
                    break;
                case 2:
                    next += text;
                    isDone = s.Append(text.c_str());
                    break;
                case 3:
                    next += model.substr(start, part);
                    isDone = s.Append(s.Text() + start, part);
                    break;
                case 4:
                    next.append(number, character);
                    isDone = s.AppendRepeated(character, number);
                    break;
                case 5:
                    next.insert(start, 1, character);
                    isDone = s.InsertAt(start, character);
                    break;
                case 6:
                    next.resize(start);
                    isDone = s.SetLength(start);
                    break;
                case 7:
                    isDone = s.Reserve(number * 4);
                    break;
                case 8:
                    next.clear();
                    s.Clear();
                    break;
                default:
                    next += model;
                    if (next.size() > 5000) next.resize(1);
                    isDone = next.size() > 1 ? s.Append(s)
                                             : s.SetLength(static_cast<std::uint32_t>(next.size()));
                    break;
            }
            ASSERT_EQ(isDone, watch.Failures() == failures) << step;
            if (isDone) model = next;
            watch.FailNone();
            ASSERT_EQ(Model(s.Text(), s.Length()), model) << step;
            ASSERT_EQ(s.Text()[s.Length()], Char(0)) << step;
            ASSERT_LE(s.Length(), s.Capacity()) << step;
        }
    }
    EXPECT_GT(watch.Failures(), 500u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

}  // namespace
