#include "foundation/wstring.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "foundation/memory_testing.h"

namespace {

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
    bool (*act)(WString&);
    const WCHAR* before;
    const WCHAR* after;
    std::uint32_t capacity;
};

const StringCase kCases[] = {
    {"assigning is exact", [](WString& s) { return s.Assign(TEXT("ab")); }, TEXT("abcdef"),
     TEXT("ab"), 2},
    {"assigning nothing frees", [](WString& s) { return s.Assign(TEXT("")); }, TEXT("abc"),
     TEXT(""), 0},
    {"so does null", [](WString& s) { return s.Assign(nullptr, 7); }, TEXT("abc"), TEXT(""), 0},
    {"a length stops early", [](WString& s) { return s.Assign(TEXT("xyz"), 2); }, TEXT(""),
     TEXT("xy"), 2},
    {"appending rounds", [](WString& s) { return s.Append(TEXT("d")); }, TEXT("abc"), TEXT("abcd"),
     31},
    {"also to nothing", [](WString& s) { return s.Append(TEXT("d")); }, TEXT(""), TEXT("d"), 31},
    {"appending nothing takes no block", [](WString& s) { return s.Append(TEXT("")); }, TEXT(""),
     TEXT(""), 0},
    {"appending null", [](WString& s) { return s.Append(nullptr); }, TEXT("abc"), TEXT("abc"), 3},
    {"repeating", [](WString& s) { return s.AppendRepeated(TEXT('x'), 3); }, TEXT("abc"),
     TEXT("abcxxx"), 31},
    {"repeating nothing", [](WString& s) { return s.AppendRepeated(TEXT('x'), 0); }, TEXT(""),
     TEXT(""), 0},
    {"inserting rounds", [](WString& s) { return s.InsertAt(1, TEXT('x')); }, TEXT("abc"),
     TEXT("axbc"), 31},
    {"inserting past the end", [](WString& s) { return s.InsertAt(9, TEXT('x')); }, TEXT(""),
     TEXT("x"), 31},
    {"sizing down keeps the block", [](WString& s) { return s.SetLength(1); }, TEXT("abc"),
     TEXT("a"), 3},
    {"sizing nothing to 0", [](WString& s) { return s.SetLength(0); }, TEXT(""), TEXT(""), 0},
    {"reserving keeps the text", [](WString& s) { return s.Reserve(100); }, TEXT("abc"),
     TEXT("abc"), 127},
    {"formatting rounds", [](WString& s) { return s.Format(TEXT("%d"), 7); }, TEXT(""), TEXT("7"),
     31},
    {"formatting nothing keeps the block", [](WString& s) { return s.Format(TEXT("")); },
     TEXT("abc"), TEXT(""), 3},
    {"formatting what fits", [](WString& s) { return s.Format(TEXT("%d"), 777); }, TEXT("abc"),
     TEXT("777"), 3},
    {"appending itself", [](WString& s) { return s.Append(s); }, TEXT("0123456789abcdef"),
     TEXT("0123456789abcdef0123456789abcdef"), 63},
    {"cutting itself keeps the block", [](WString& s) { return s.Assign(s.Text(), 2); },
     TEXT("abcde"), TEXT("ab"), 5},
    {"a longer length of itself", [](WString& s) { return s.Assign(s.Text(), 9); }, TEXT("abcde"),
     TEXT("abcde"), 5},
    {"its own middle", [](WString& s) { return s.Assign(s.Data() + 1, 4); }, TEXT("abcdef"),
     TEXT("bcde"), 4},
    {"formatting itself, growing",
     [](WString& s) { return s.Format(TEXT("%ls-%ls-%040d"), s, s.Data() + 3, 1); }, TEXT("abcdef"),
     TEXT("abcdef-def-0000000000000000000000000000000000000001"), 63},
    {"formatting itself, in place",
     [](WString& s) { return s.Reserve(20) && s.Format(TEXT("<%ls>"), s); }, TEXT("abc"),
     TEXT("<abc>"), 31},
    {"itself as the format", [](WString& s) { return s.FormatList(s.Text(), nullptr, 0); },
     TEXT("a%%b"), TEXT("a%b"), 31},
};

TEST(WString, FollowsTheGrowthRulesAndStaysAsItWasOnFailure) {
    AllocationWatch watch;
    for (const StringCase& c : kCases) {
        SCOPED_TRACE(c.why);
        WString s;
        ASSERT_TRUE(s.Assign(c.before));
        const WCHAR* const block = s.Text();
        const std::uint32_t capacity = s.Capacity();
        const std::uint64_t failures = watch.Failures();
        watch.FailFrom(1);
        const bool isDone = c.act(s);
        watch.FailNone();
        EXPECT_EQ(isDone, watch.Failures() == failures);
        if (!isDone) {
            EXPECT_EQ(ContentOf(s), c.before);
            EXPECT_EQ(s.Text(), block);
            EXPECT_EQ(s.Capacity(), capacity);
            EXPECT_TRUE(c.act(s));
        }
        EXPECT_EQ(ContentOf(s), c.after);
        EXPECT_EQ(s.Capacity(), c.capacity);
        EXPECT_EQ(s.Data() == nullptr, c.capacity == 0);
    }
    EXPECT_EQ(watch.LiveBlocks(), 0);
    for (const auto& [length, capacity] : {std::pair{31u, 31u}, {32u, 63u}, {100u, 127u}}) {
        WString sized;
        ASSERT_TRUE(sized.SetLength(length));
        EXPECT_EQ(sized.Capacity(), capacity);
        EXPECT_EQ(sized.Text()[length], 0);
    }
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

TEST(WString, Moves) {
    WString a;
    ASSERT_TRUE(a.Assign(TEXT("abc")));
    WString b(std::move(a));
    EXPECT_EQ(a.Capacity(), 0u);  // NOLINT(bugprone-use-after-move): moved from is empty.
    a = std::move(b);
    WString& same = a;
    a = std::move(same);
    EXPECT_TRUE(a == TEXT("abc"));
    EXPECT_TRUE(b == WStringView());
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
            switch (below(8)) {
                case 0:
                    next = text;
                    isDone = s.Assign(text.c_str());
                    break;
                case 1:
                    next = model.substr(start, part);
                    isDone = s.Assign(s.Text() + start, part);
                    break;
                case 2:
                    next += model.substr(start, part);
                    isDone = s.Append(s.Text() + start, part);
                    break;
                case 3:
                    next.append(number, character);
                    isDone = s.AppendRepeated(character, number);
                    break;
                case 4:
                    next.insert(start, 1, character);
                    isDone = s.InsertAt(start, character);
                    break;
                case 5:
                    next.resize(start);
                    isDone = s.SetLength(start);
                    break;
                case 6:
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
