#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <random>

#include "cab/json_kernels.h"
#include "cab/json_number.h"
#include "foundation/system_facts.h"
#include "platform/processor.h"
#include "tests/cab/failing_new.h"
#include "tests/cab/json_reference.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace AUX::CAB;
using namespace json_reference;
using AUX::WString;
using AUX::WStringView;
using platform::ToUtf8;

JsonHandle Parse(const Text& text) { return ParseJson(WStringView(text)); }

Text Write(JsonNode& node, std::int32_t indent = kJsonCompact,
           JsonPlace place = JsonPlace::InArray) {
    WString out;
    WriteJson(node, indent, place, out);
    return Text(WStringView(out));
}

Text Repeat(const Text& text, std::size_t count) {
    Text result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

std::vector<const JsonKernels*> UsableKernels() {
    std::vector<const JsonKernels*> usable = {&kSse2JsonKernels};
    if (AUX::Facts().hasAvx2) usable.push_back(&kAvx2JsonKernels);
    if (platform::HasAvx512Compress()) usable.push_back(&kAvx512JsonKernels);
    return usable;
}

/// What a container's text is written as before it was read.
Text Unread(const Text& source) {
    Text stripped = Strip(source);
    (void)TakeComments(stripped);
    std::replace(stripped.begin(), stripped.end(), WCHAR{1}, WCHAR{'"'});
    return stripped;
}

TEST(Json, ReadsTextsAsTheTableSays) {
    const auto rows = test_support::ReadCases(CAB_CASES "json_texts.tsv", 3);
    EXPECT_GT(rows.size(), 150u);
    for (const auto& row : rows) {
        const Text& source = row[1];
        SCOPED_TRACE(ToUtf8(source));
        EXPECT_EQ(Expected(source), row[2]) << "the reference";
        const JsonHandle root = Parse(source);
        if (root->IsContainer()) {
            EXPECT_EQ(Write(*root), Unread(source)) << "unread";
        }
        ASSERT_EQ(ToUtf8(Show(*root)), ToUtf8(row[2]));
        if (row[0] != TEXT("=")) continue;
        for (const std::int32_t indent : {kJsonCompact, 0, 30}) {
            const JsonHandle again = Parse(Write(*root, indent));
            EXPECT_EQ(ToUtf8(Show(*again)), ToUtf8(row[2])) << "written and read again";
        }
    }
}

// Texts of units that mean something, in blocks of all sorts, with each form of the inner loops.
TEST(Json, ReadsAnyTextAsTheReferenceDoes) {
    const WCHAR* const words[] = {
        TEXT("["),      TEXT("]"),       TEXT("{"),     TEXT("}"),
        TEXT(","),      TEXT(":"),       TEXT("\""),    TEXT("\\"),
        TEXT("\\\""),   TEXT("\"a\":"),  TEXT("[1,2]"), TEXT("{\"k\":\"v\"}"),
        TEXT(" "),      TEXT("\n"),      TEXT("//"),    TEXT("/*"),
        TEXT("*/"),     TEXT("#"),       TEXT("1"),     TEXT("\t "),
        TEXT("true"),   TEXT("\"x\""),   TEXT("\\u12"), TEXT("\u65e5"),
        TEXT("],"),     TEXT("},"),      TEXT("[["),    TEXT("]]"),
        TEXT("  \r\n"), TEXT("\"\\\\\"")};
    const auto kernels = UsableKernels();
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int i = 0; i < 6000; ++i) {
        chosenJsonKernels = kernels[static_cast<std::size_t>(i) % kernels.size()];
        Text text = TEXT("[");
        // Few sorts of words make deep or regular texts.
        const unsigned sorts = 1 + static_cast<unsigned>(random() % std::size(words));
        const unsigned first = static_cast<unsigned>(random());
        for (unsigned count = static_cast<unsigned>(random() % 80); count > 0; --count) {
            text += words[(first + random() % sorts) % std::size(words)];
        }
        if (random() % 16 == 0) text[random() % text.size()] = 0;
        text += ']';
        const Text expected = Expected(text);
        const JsonHandle root = Parse(text);
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + ToUtf8(text));
        if (root->IsContainer()) {
            ASSERT_EQ(ToUtf8(Write(*root)), ToUtf8(Unread(text)));
        }
        ASSERT_EQ(ToUtf8(Show(*root)), ToUtf8(expected));
    }
    chosenJsonKernels = nullptr;
}

TEST(Json, EncodesAtEachPlaceOfATextOfEachLength) {
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            Text text(length, TEXT('x'));
            text[place] = 0x3042;
            text[length - 1 - place] = TEXT('"');
            Text expected = TEXT("\"");
            for (const WCHAR unit : text) {
                expected += unit == 'x' ? TEXT("x") : unit == '"' ? TEXT("\\\"") : TEXT("\\u3042");
            }
            JsonHandle node = NewNode(JsonType::Null);
            SetNodeString(node, {text.data(), text.size()});
            ASSERT_EQ(ToUtf8(Write(*node)), ToUtf8(expected + TEXT("\"")));
        }
    }
}

TEST(Json, WritesBothForms) {
    JsonHandle list = NewNode(JsonType::Array);
    for (const double number : {1.0, -2.5}) {
        JsonHandle child = NewNode(JsonType::Null);
        SetNodeDouble(child, number);
        AppendChild(list, child);
    }
    JsonHandle text = NewNode(JsonType::Null);
    SetNodeString(text, TEXT("a/b\"\\\b\t\n\f\r\x01\x7f\u00e9 ~0123456789"));
    SetNodeName(text, TEXT("k/"));
    SetNodeName(list, TEXT("list"));
    JsonHandle none = NewNode(JsonType::Object);
    SetNodeName(none, TEXT("none"));
    JsonHandle yes = NewNode(JsonType::Null);
    SetNodeBool(yes, true);
    SetNodeName(yes, TEXT("yes"));
    JsonHandle root = NewNode(JsonType::Object);
    for (const JsonHandle& child : {text, list, none, yes}) AppendChild(root, child);
    const Text encoded = TEXT("\"a\\/b\\\"\\\\\\b\\t\\n\\f\\r\\u0001\\u007F\\u00E9 ~0123456789\"");
    EXPECT_EQ(ToUtf8(Write(*root)), ToUtf8(TEXT("{\"k\\/\":") + encoded +
                                           TEXT(",\"list\":[1,-2.5],\"none\":{},\"yes\":true}")));
    EXPECT_EQ(ToUtf8(Write(*root, 1)),
              ToUtf8(TEXT("{\n\t\t\"k\\/\" : ") + encoded +
                     TEXT(",\n\t\t\"list\" : [\n\t\t\t1,\n\t\t\t-2.5\n\t\t],\n\t\t\"none\" : {},"
                          "\n\t\t\"yes\" : true\n\t}")));
    EXPECT_EQ(Write(*yes, 0, JsonPlace::InObject), TEXT("\"yes\" : true"));

    const JsonHandle noted =
        Parse(TEXT("// top\n{/* one\r\n * t*/ // "
                   "*/\n\"a\\n\":\"q\\\"\",\"b\":\"x\\u0041\",\"c\":\"\u00e9/\"}"));
    const Text formatted = Write(*noted, 0);
    EXPECT_EQ(ToUtf8(formatted),
              "\n// top\n{\n\t\n\t/*\n\t\t one\n\t\t * t\n\t\t * /\n\t*/\n\t\"a\\n\" : \"q\\\"\",\n"
              "\t\"b\" : \"x\\u0041\",\n\t\"c\" : \"\u00e9/\"\n}");
    EXPECT_EQ(AsText(*ChildAt(*noted, FindChild(*noted, TEXT("b")))), WStringView(TEXT("xA")));
    // A text that had escapes is encoded again, one without stays as it stood.
    EXPECT_EQ(ToUtf8(Write(*noted)), "{\"a\\n\":\"q\\\"\",\"b\":\"xA\",\"c\":\"\u00e9/\"}");
    WString kept;
    ASSERT_TRUE(kept.Assign(TEXT("before ")));
    WriteJson(*none, kJsonCompact, JsonPlace::InObject, kept);
    EXPECT_EQ(kept, WStringView(TEXT("before \"none\":{}")));
}

TEST(Json, ChangesLeaveOtherHandlesAlone) {
    const JsonHandle parsed = Parse(TEXT("{\"a\":[1,[2]],\"b\":\"x\"}"));
    JsonHandle changed = ChildAt(*parsed, 0);
    AppendChild(changed, ChildAt(*parsed, 1));
    JsonHandle copy = CloneNode(*changed);
    SetNodeName(copy, TEXT("c"));
    AppendChild(changed, copy);
    JsonHandle shared = changed;
    SetNodeInt64(shared, -9000000000);
    AppendChild(changed, shared);
    AppendChild(changed, changed);
    EXPECT_EQ(ToUtf8(Show(*parsed)), "{a=[#1,[#2]],b='x'}");
    EXPECT_EQ(ToUtf8(Write(*changed)),
              "[1,[2],\"x\",[1,[2],\"x\"],-9000000000,[1,[2],\"x\",[1,[2],\"x\"],-9000000000]]");
    EXPECT_EQ(Write(*copy, kJsonCompact, JsonPlace::InObject), TEXT("\"c\":[1,[2],\"x\"]"));
    AppendChild(shared, copy);
    EXPECT_EQ(ChildCount(*shared), 0u) << "a number has no children";
    // A copy that was made before the fetch, and outlives its source's other handles.
    JsonHandle late = CloneNode(*Parse(TEXT("[\"\\u0041\",{\"k\":[]}]")));
    EXPECT_EQ(ToUtf8(Show(*late)), "['A',{k=[]}]");
    SetNodeString(late, AsText(*ChildAt(*late, 0)));
    EXPECT_EQ(AsText(*late), WStringView(TEXT("A")));
}

TEST(Json, NumbersAndTruth) {
    struct Case {
        const WCHAR* text;
        double number;
        bool truth;
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {TEXT("017"), 17, true},
        {TEXT("0x1F"), 31, true},
        {TEXT("0x"), 0, false},
        {TEXT("."), 0, false},
        {TEXT("5."), 5, true},
        {TEXT("-.0"), 0, false},
        {TEXT("0e+"), 0, false},
        {TEXT("0.00001"), 1e-05, true},
        {TEXT("-0.000009"), -9e-06, false},
        {TEXT("0.1"), 0.1, true},
        {TEXT("1e22"), 1e22, true},
        {TEXT("1e23"), 1e23, true},
        {TEXT("9007199254740993"), 9007199254740992, true},
        {TEXT("9007199254740992.99999999999999999999999999"), 9007199254740992, true},
        {TEXT("9007199254740993.00000000000000000000000001"), 9007199254740994, true},
        {TEXT("2.2250738585072011e-308"), 2.2250738585072011e-308, false},
        {TEXT("4.9e-324"), 4.9e-324, false},
        {TEXT("1e-400"), 0, false},
        {TEXT("1.7976931348623157e308"), 1.7976931348623157e308, true},
        {TEXT("1e400"), kInfinity, true},
        {TEXT("-1e99999999999999999999"), -kInfinity, true},
        {TEXT("\"12 pages\""), 12, false},
        {TEXT("\" -2.5e1x\""), -25, false},
        {TEXT("\"12\u65e5\""), 0, false},
        {TEXT("\"pages\""), 0, false},
        {TEXT("true"), 1, true},
        {TEXT("false"), 0, false},
        {TEXT("null"), 0, false},
        {TEXT("[1]"), 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(ToUtf8(Text(c.text)));
        const JsonHandle child = ChildAt(*Parse(TEXT("[") + Text(c.text) + TEXT("]")), 0);
        EXPECT_EQ(AsNumber(*child), c.number);
        EXPECT_EQ(AsBool(*child), c.truth);
    }
    // A thousand digits: the last ones decide, and an exponent brings the point to its place.
    const Text half = TEXT("9007199254740993") + Repeat(TEXT("0"), 1000);
    EXPECT_EQ(ReadJsonNumber(WStringView(half + TEXT("1e-1001"))), 9007199254740994.0);
    EXPECT_EQ(ReadJsonNumber(WStringView(half + TEXT("0e-1001"))), 9007199254740992.0);
    EXPECT_EQ(ReadJsonNumber(WStringView(TEXT("0.") + Repeat(TEXT("0"), 1000) + TEXT("12e1001"))),
              1.2);
}

TEST(Json, NumberTexts) {
    struct Case {
        double number;
        const char* text;
    };
    const Case cases[] = {
        {0, "0"},
        {-0.0, "0"},
        {1.000001, "1"},
        {1.00001, "1.00001"},
        {1.5, "1.5"},
        {0.1, "0.1"},
        {-0.1, "-0.1"},
        {-3.000001, "-3"},
        {0.1234567, "0.123457"},
        {1.9999999, "2"},
        {-1.9999999, "-2"},
        {100, "100"},
        {1234567890123.0, "1234567890123"},
        {18446744073709549568.0, "18446744073709549568"},
        {18446744073709551616.0, "18446744073709551616"},
        {-9223372036854775808.0, "-9223372036854775808"},
        {1e21, "1000000000000000000000"},
        {1e55, "10000000000000000102350670204085511496304388135324745728"},
        {1e300, "1e+300"},
        {-1.5e300, "-1.5e+300"},
        {std::nan(""), "null"},
        {-HUGE_VAL, "null"},
    };
    for (const Case& c : cases) {
        JsonHandle node = NewNode(JsonType::Null);
        SetNodeDouble(node, c.number);
        EXPECT_EQ(ToUtf8(Write(*node)), c.text);
        if (c.number == std::trunc(c.number) && std::isfinite(c.number)) {
            EXPECT_EQ(ReadJsonNumber(AsText(*node)), c.number);
        }
    }
    JsonHandle node = NewNode(JsonType::Null);
    SetNodeInt(node, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Write(*node), TEXT("-2147483648"));
    SetNodeInt64(node, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Write(*node), TEXT("-9223372036854775808"));
    EXPECT_EQ(AsNumber(*node), -9223372036854775808.0);
}

// Reads the first child of each level to the innermost, and gives the levels.
std::size_t Depth(JsonHandle node) {
    std::size_t depth = 0;
    while (node && node->IsContainer()) {
        node = ChildAt(*node, 0);
        ++depth;
    }
    return depth;
}

TEST(Json, DeepAndWideTextsTakeNeitherStackNorTime) {
    struct Shape {
        const WCHAR* open;
        const WCHAR* written;
        const WCHAR* close;
        std::size_t levels;  // Of one opening.
    };
    const Shape shapes[] = {{TEXT("["), TEXT("["), TEXT("]"), 1},
                            {TEXT("{\"a\" :"), TEXT("{\"a\":"), TEXT("}"), 1},
                            {TEXT("[{/*,*/\"a\":"), TEXT("[{\"a\":"), TEXT("}]"), 2}};
    constexpr std::size_t kCount = 100'000;
    for (const Shape& shape : shapes) {
        const Text tail = TEXT("1") + Repeat(shape.close, kCount) + TEXT("]");
        const JsonHandle root = Parse(TEXT("[") + Repeat(shape.open, kCount) + tail);
        EXPECT_EQ(Depth(root), shape.levels * kCount + 1);
        EXPECT_EQ(Write(*root), TEXT("[") + Repeat(shape.written, kCount) + tail);
        JsonHandle built = NewNode(JsonType::Array);
        for (std::size_t i = 1; i < kCount; ++i) {
            JsonHandle outer = NewNode(JsonType::Array);
            AppendChild(outer, std::move(built));
            built = std::move(outer);
        }
        EXPECT_EQ(Write(*built), Repeat(TEXT("["), kCount) + Repeat(TEXT("]"), kCount));
    }
    EXPECT_EQ(Depth(Parse(Repeat(TEXT("["), 1'000'000) + Repeat(TEXT("]"), 1'000'000))),
              1'000'000u);
    EXPECT_EQ(Depth(Parse(Repeat(TEXT("["), 1'000'000) + TEXT("]"))), 1u);
    const JsonHandle wide = Parse(TEXT("[[") + Repeat(TEXT("{\"k\":0},"), 500'000) + TEXT("{}]]"));
    EXPECT_EQ(ChildCount(*ChildAt(*wide, 0)), 500'001u);
    EXPECT_EQ(AsText(*ChildAt(*ChildAt(*ChildAt(*wide, 0), 499'999), 0)), WStringView(TEXT("0")));
}

TEST(Json, GivesAllBackWhenMemoryRunsOut) {
    const Text text =
        TEXT("//a\n//b\n{\"a\\n\":[1,{\"b\":\"\\u0041\"},[2,3]],\"c\":{\"d\":[[],{}]}}");
    std::uint64_t failures = 0;
    const auto work = [&] {
        try {
            const JsonHandle root = Parse(text);
            JsonHandle copy = CloneNode(*root);
            SetNodeName(copy, TEXT("name"));
            for (int i = 0; i < 9; ++i) {
                JsonHandle child = NewNode(JsonType::Object);
                SetNodeDouble(child, 0.5);
                AppendChild(copy, std::move(child));
            }
            AppendChild(copy, copy);
            WString out;
            WriteJson(*copy, 0, JsonPlace::InObject, out);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    };
    const std::uint64_t runs = bag_test::FailEachNew(work);  // What is parsed.
    EXPECT_GT(runs, 5u);
    EXPECT_EQ(failures, runs);
    EXPECT_GT(test_support::FailEachAllocation([&](const auto&) { work(); }), 20u);
    EXPECT_GT(failures, runs + 15);
}

}  // namespace
