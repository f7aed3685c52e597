#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "cab/notice.h"
#include "platform/gathered.h"
#include "tests/cab/bag_support.h"
#include "tests/support/case_table.h"

namespace {

using namespace bag_test;

Kind KindOf(const std::string& name) {
    return name == "Bool"    ? Kind::Bool
           : name == "Int"   ? Kind::Int
           : name == "Int64" ? Kind::Int64
                             : Kind::Double;
}

// A value of any number kind as its bits, and the calls for it.
std::uint64_t Parse(Kind kind, const std::string& text) {
    if (kind != Kind::Double) return static_cast<std::uint64_t>(std::stoll(text));
    return std::bit_cast<std::uint64_t>(std::strtod(text.c_str(), nullptr));
}

bool Set(DataItem& item, Kind kind, std::uint64_t bits) {
    const bool asBool = bits != 0;
    const auto asInt = static_cast<std::int32_t>(bits);
    const auto asInt64 = static_cast<std::int64_t>(bits);
    const auto asDouble = std::bit_cast<double>(bits);
    return kind == Kind::Bool    ? item.SetBool(&asBool, 1)
           : kind == Kind::Int   ? item.SetInt(&asInt, 0)
           : kind == Kind::Int64 ? item.SetInt64(&asInt64, 0)
                                 : item.SetDouble(&asDouble, 0);
}

bool Get(DataItem& item, Kind kind, std::uint64_t& bits) {
    bool asBool = false;
    std::int32_t asInt = 0;
    std::int64_t asInt64 = 0;
    double asDouble = 0;
    const bool isGiven = kind == Kind::Bool    ? item.GetBool(asBool) != nullptr
                         : kind == Kind::Int   ? item.GetInt(asInt) != nullptr
                         : kind == Kind::Int64 ? item.GetInt64(asInt64) != nullptr
                                               : item.GetDouble(asDouble) != nullptr;
    bits = kind == Kind::Bool    ? asBool
           : kind == Kind::Int   ? static_cast<std::uint64_t>(std::int64_t{asInt})
           : kind == Kind::Int64 ? static_cast<std::uint64_t>(asInt64)
                                 : std::bit_cast<std::uint64_t>(asDouble);
    return isGiven;
}

TEST(Conversion, KeepsEveryCellOfTheTable) {
    for (const auto& row : test_support::ReadCases(CAB_CASES "conversions.tsv", 5)) {
        const bool isGet = row[0] == TEXT("get");
        const std::string text = platform::ToUtf8(row[3]);
        const std::string wanted = platform::ToUtf8(row[4]);
        SCOPED_TRACE(platform::ToUtf8(row[0] + TEXT(" ") + row[1] + TEXT(" ") + row[2]) + " " +
                     text);
        const Kind own = KindOf(platform::ToUtf8(row[1]));
        const Kind other = KindOf(platform::ToUtf8(row[2]));
        const Bag bag = MakeBag();
        DataItem* const item = bag->GetRootItem()->AsDictionary()->GetOrAdd(TEXT("n"), 1, own);
        if (isGet) {
            ASSERT_TRUE(Set(*item, own, Parse(own, text)));
        }
        const std::uint32_t flags = item->GetFlags();
        const std::uint32_t count = bag->GetChangeCount();
        std::uint64_t before = 0;
        ASSERT_TRUE(Get(*item, own, before));
        ClearNotice();
        std::uint64_t result = 0;
        const bool isDone =
            isGet ? Get(*item, other, result) : Set(*item, other, Parse(other, text));
        const bool isConverted = wanted != "-" && own != other;
        EXPECT_EQ(isDone, wanted != "-");
        EXPECT_EQ(GetNotice(), isConverted ? ConversionNotice : 0);
        if (!isGet) {
            ASSERT_TRUE(Get(*item, own, result));
        }
        if (wanted != "-") {
            EXPECT_EQ(result, Parse(isGet ? other : own, wanted));
        } else if (!isGet) {
            EXPECT_EQ(result, before);
        }
        // A conversion counts once, and always; an own value only where it differs.
        const bool marks = !isGet && wanted != "-" && (own != other || result != before);
        EXPECT_EQ(bag->GetChangeCount(), count + marks);
        EXPECT_EQ(item->GetFlags(), marks ? ItemValueSet | ItemDirty : flags);
    }
}

struct TextCase {
    const char* why;
    Kind kind;
    const WCHAR* text;
    const char* wanted;
};

TEST(Conversion, ReadsTextsAsTheRuntimeDoes) {
    constexpr TextCase kCases[] = {
        {"any case", Kind::Bool, TEXT("TRUE"), "1"},
        {"no longer word", Kind::Bool, TEXT("trueX"), "-"},
        {"no digit for a truth value", Kind::Bool, TEXT("1"), "-"},
        {"the rest is left", Kind::Int, TEXT(" \t-12abc"), "-12"},
        {"plus", Kind::Int, TEXT("+7"), "7"},
        {"two signs", Kind::Double, TEXT("+-7"), "0"},
        {"no number", Kind::Int, TEXT("abc"), "0"},
        {"largest", Kind::Int, TEXT("2147483647"), "2147483647"},
        {"one too large", Kind::Int, TEXT("2147483648"), "-"},
        {"smallest", Kind::Int64, TEXT("-9223372036854775808"), "-9223372036854775808"},
        {"one too small", Kind::Int64, TEXT("-9223372036854775809"), "-"},
        {"exponent", Kind::Double, TEXT("2.5e3x"), "2500"},
        {"too large", Kind::Double, TEXT("1e999"), "-"},
        {"subnormal", Kind::Double, TEXT("5e-324"), "5e-324"},
        {"empty", Kind::Double, TEXT(""), "0"},
    };
    for (const TextCase& c : kCases) {
        SCOPED_TRACE(c.why);
        const auto item = CreateItem(nullptr, nullptr, nullptr, nullptr, c.kind);
        const std::uint64_t old = Parse(c.kind, "1");
        ASSERT_TRUE(Set(*item, c.kind, old));
        const bool isRefused = std::strcmp(c.wanted, "-") == 0;
        EXPECT_EQ(item->SetText(c.text), !isRefused);
        std::uint64_t value = 0;
        ASSERT_TRUE(Get(*item, c.kind, value));
        EXPECT_EQ(value, isRefused ? old : Parse(c.kind, c.wanted));
    }
}

struct Ranges {
    ValueSpec head;
    NumberRange ranges[4];
};

constexpr StaticNamedTable<3> kSizes = {
    {TEXT("g_Sizes"), nullptr},
    {{TEXT("small"), 1}, {TEXT("large"), 2.5}, {nullptr, 0}},
};
QVD_NAMED_TABLE_WORD constinit NamedTableWord sizesWord(&kSizes);

TEST(NamedTable, IsBuiltOnceFromWhatCodeDeclares) {
    EXPECT_FALSE(FindStaticTable(TEXT("g_Sizes")));
    NamedTableWord* const word = FindStaticTable(TEXT("Sizes"));
    ASSERT_EQ(word, &sizesWord);
    std::vector<const NamedTable*> seen(8);
    std::vector<std::thread> threads;
    for (const NamedTable*& place : seen) threads.emplace_back([&] { place = TableOf(*word); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), seen[0]), 8);
    ASSERT_TRUE(seen[0]);
    ASSERT_TRUE(seen[0]->Find(TEXT("large")));
    EXPECT_EQ(*seen[0]->Find(TEXT("large")), 2.5);
    EXPECT_EQ(FindStaticTable(TEXT("Sizes")), word) << "built or not";
    FreeTable(*word);
    EXPECT_EQ(word->load(), &kSizes);
}

TEST(ValueSpec, AsksNamesThenRanges) {
    NamedTable names;
    ASSERT_TRUE(names.Add(TEXT("far"), 99) && names.Add(TEXT("one"), 7));
    ASSERT_TRUE(names.Add(TEXT("one"), 1) && names.Add(TEXT("uno"), 1));
    NamedTableWord word(WordFor(&names));
    const Ranges both = {{&word, RangeList::Inclusive},
                         {{0, 10}, kRangeSeparator, {5, 6}, kRangeEnd}};
    const Ranges only = {{&word, RangeList::OnlyExclusive}, {{5, 6}, {99, 99}, kRangeEnd, {}}};
    const struct {
        double number;
        bool both, only;
    } kCases[] = {{-1, false, true}, {0, true, true},  {4.5, true, true}, {5, false, false},
                  {6, false, false}, {10, true, true}, {11, false, true}, {99, true, true}};
    for (const auto& c : kCases) {
        EXPECT_EQ(both.head.Accepts(c.number), c.both) << c.number;
        EXPECT_EQ(only.head.Accepts(c.number), c.only) << c.number;
    }
    const ItemSpec spec = Leaf(TEXT("n"), Kind::Int, &both.head);
    const auto item = CreateItem(nullptr, nullptr, &spec, nullptr, Kind::None);
    WString text;
    ASSERT_TRUE(text.Assign(TEXT("far")));
    EXPECT_TRUE(item->SetText(TEXT("4")) && item->SetString(text, false));
    EXPECT_EQ(IntOf(item.get()), 99);
    EXPECT_FALSE(SetInt(item.get(), 5) || item->SetText(TEXT("5")));
    double refused = 11;
    EXPECT_FALSE(item->SetDouble(&refused, 0));
    EXPECT_TRUE(SetInt(item.get(), 1));
    EXPECT_EQ(WStringView(item->GetValueName()), WStringView(TEXT("uno")))
        << "the last of its names";
    ASSERT_TRUE(text.Assign(TEXT("3")));
    EXPECT_FALSE(item->SetString(text, false)) << "only names";
}

}  // namespace
