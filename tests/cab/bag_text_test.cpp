#include "cab/bag_text.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "cab/data_stream.h"
#include "cab/registry_load.h"
#include "cab/registry_save.h"
#include "foundation/mem_stream.h"
#include "foundation/temp_mapped_file_stream.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "tests/cab/bag_support.h"
#include "tests/cab/failing_new.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace bag_test;
using platform::ToUtf8;
using platform::WideString;

// The text of a bag; "-" for none.
std::string TextOf(DataRoot& bag, std::uint32_t flags = 0, HRESULT wanted = S_OK) {
    BSTR text = nullptr;
    EXPECT_EQ(ToJson(&bag, flags, &text), wanted);
    const platform::UniqueBstr owner(text);
    return text ? ToUtf8(WideString(text, SysStringLen(text))) : "-";
}

HRESULT Read(DataRoot& bag, const WideString& text) { return FromJson(&bag, WStringView(text)); }

struct NamedRange {
    ValueSpec head;
    NumberRange ranges[2];
};

// The shape that the table describes.
class Shape {
public:
    Shape() {
        EXPECT_TRUE(names_.Add(TEXT("low"), 2) && names_.Add(TEXT("high"), 5));
        set_[4].defaultString = TEXT("default");
    }
    const ItemSpec& Root() const { return root_; }

private:
    NamedTable names_;
    NamedTableWord word_{WordFor(&names_)};
    NamedRange values_{{&word_, RangeList::Inclusive}, {{0, 9}, kRangeEnd}};
    ItemSpec ints_[2] = {Leaf(nullptr, Kind::Int), {}};
    ItemSpec reals_[2] = {Leaf(nullptr, Kind::Double), {}};
    ItemSpec texts_[2] = {Leaf(nullptr, Kind::String), {}};
    ItemSpec sub_[2] = {Leaf(TEXT("x"), Kind::Int), {}};
    ItemSpec set_[11] = {Leaf(TEXT("flag"), Kind::Bool),
                         Leaf(TEXT("int"), Kind::Int, &values_.head),
                         Leaf(TEXT("long"), Kind::Int64),
                         Leaf(TEXT("real"), Kind::Double),
                         Leaf(TEXT("text"), Kind::String),
                         Leaf(TEXT("bytes"), Kind::Stream),
                         Branch(TEXT("ints"), Kind::Array, ints_, 1),
                         Branch(TEXT("reals"), Kind::Array, reals_, 1),
                         Branch(TEXT("sub"), Kind::Dictionary, sub_, 1),
                         Branch(TEXT("loose"), Kind::Dictionary, texts_, 1, SpecLoose),
                         {}};
    ItemSpec root_ = Branch(nullptr, Kind::Dictionary, set_, 10);
};

TEST(BagText, TakesTextsAsTheTableSays) {
    const Shape shape;
    for (const auto& row : test_support::ReadCases(CAB_CASES "bag_texts.tsv", 5)) {
        SCOPED_TRACE(ToUtf8(row[2]));
        const bool isShaped = row[0] == TEXT("shaped");
        const std::uint32_t flags = isShaped ? kJsonOmitDefaults | kJsonValueNames : 0;
        const Bag bag = MakeBag(isShaped ? &shape.Root() : nullptr);
        if (!row[1].empty()) {
            ASSERT_EQ(Read(*bag, row[1]), S_OK);
        }
        const std::uint32_t changes = bag->GetChangeCount();
        const bool isTaken = row[3] == TEXT("0");
        EXPECT_EQ(Read(*bag, row[2]), isTaken ? S_OK : E_FAIL);
        if (!isTaken) {
            EXPECT_EQ(bag->GetChangeCount(), changes);
        }
        const std::string text = TextOf(*bag, flags);
        EXPECT_EQ(text, ToUtf8(row[4]));
        const Bag again = MakeBag(isShaped ? &shape.Root() : nullptr);
        EXPECT_EQ(Read(*again, platform::FromUtf8(text)), S_OK);
        EXPECT_EQ(TextOf(*again, flags), text);
    }
}

TEST(BagText, LeavesOutWhatHasNoTextForm) {
    const Bag bag = MakeBag();
    DataDictionary& root = *bag->GetRootItem()->AsDictionary();
    ASSERT_TRUE(root.GetOrAdd(TEXT("o"), -1, Kind::Object));
    EXPECT_EQ(TextOf(*bag), "-") << "children, of which none is left";
    ASSERT_EQ(Read(*bag, TEXT("{\"l\":[1,2,3],\"t\":[4],\"k\":{\"x\":5}}")), S_OK);
    FindPath(root, TEXT("l[1]"))->SetFlags(ItemTransient, ItemTransient);
    FindPath(root, TEXT("t[0]"))->SetFlags(ItemTransient, ItemTransient);
    EXPECT_EQ(TextOf(*bag), "{\"k\":{\"x\":5},\"l\":[1,3]}");
    root.SetTransientAll(true);
    EXPECT_EQ(TextOf(*bag), "-");

    const Shape shape;
    const Bag shaped = MakeBag(&shape.Root());
    EXPECT_EQ(TextOf(*shaped, kJsonOmitDefaults), "-");
    ASSERT_EQ(Read(*shaped, TEXT("{\"int\":2}")), S_OK);
    EXPECT_EQ(TextOf(*shaped, kJsonOmitDefaults), "{\"int\":2}");
    EXPECT_EQ(TextOf(*shaped, kJsonOmitDefaults | kJsonValueNames), "{\"int\":\"low\"}");

    BSTR text = SysAllocString(TEXT("x"));
    const platform::UniqueBstr owner(text);
    EXPECT_EQ(ToJson(nullptr, 0, &text), E_FAIL);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(ToJson(bag.get(), 0, nullptr), E_POINTER);
    EXPECT_EQ(FromJson(nullptr, TEXT("{}")), E_FAIL);
    EXPECT_EQ(FromJson(bag.get(), {}), E_INVALIDARG);
    EXPECT_EQ(bag->LockDepth(), 0u);
}

TEST(BagText, WritesAnyStreamAndLeavesItsPosition) {
    const test_support::TestProfile profile;
    const Bag bag = MakeBag();
    DataItem* const item =
        bag->GetRootItem()->AsDictionary()->GetOrAdd(TEXT("s"), -1, Kind::Stream);
    std::unique_ptr<AUX::TempMappedFileStream> file(new (std::nothrow) AUX::TempMappedFileStream);
    ASSERT_TRUE(file);
    ASSERT_EQ(file->OpenTemp(TEXT("test"), nullptr, false), AUX::kStatusOk);
    std::int64_t count = 0;
    ASSERT_EQ(file->Write("\0\x01\xff", 3, count), AUX::kStatusOk);
    ASSERT_EQ(file->Seek(AUX::SeekMode::Start, 2), AUX::kStatusOk);
    ASSERT_TRUE(item->SetStream(file.release(), true));
    EXPECT_EQ(TextOf(*bag), "{\"s\":{\".type\":\"stream\",\".value\":\"AAH\\/\"}}");
    constexpr const WCHAR* kKey = TEXT("HKCU\\Software\\Quvada bag");
    EXPECT_EQ(SaveToRegistry(*bag->GetRootItem(), nullptr, kKey, false, false), S_OK);
    EXPECT_EQ(item->GetStream()->GetPosition(), 2);
    const Bag loaded = MakeBag();
    EXPECT_EQ(LoadFromRegistry(*loaded->GetRootItem(), nullptr, kKey), S_OK);
    EXPECT_TRUE(loaded->GetRootItem()->Equals(bag->GetRootItem(), 0));
}

class RandomBag {
public:
    explicit RandomBag(unsigned seed) : random_(seed) {}

    void Fill(DataItem& item, int depth) {
        for (unsigned count = Pick(6); count > 0; --count) {
            WideString key = Text();
            std::erase(key, TEXT('.'));
            key += TEXT('k');
            const Kind kind = kKinds[Pick(depth > 0 ? 9 : 6)];
            DataItem* const child = item.AsArray()
                                        ? item.AsArray()->InsertAt(-1, kind)
                                        : item.AsDictionary()->GetOrAdd(key.c_str(), -1, kind);
            if (!child) continue;
            if (child->AsContainer()) Fill(*child, depth - 1);
            SetValue(*child);
        }
    }

private:
    static constexpr Kind kKinds[] = {Kind::Bool,   Kind::Int,        Kind::Int64,
                                      Kind::Double, Kind::String,     Kind::Stream,
                                      Kind::Array,  Kind::Dictionary, Kind::Array};

    unsigned Pick(std::size_t n) { return static_cast<unsigned>(random_() % n); }
    WideString Text() {
        constexpr const WCHAR* kParts[] = {TEXT("a"),    TEXT("\""),     TEXT("\\"),
                                           TEXT("/"),    TEXT("\u00e9"), TEXT("\n"),
                                           TEXT("\x01"), TEXT(".type"),  TEXT("\xd83d\xde00"),
                                           TEXT(" "),    TEXT("word")};
        WideString text;
        for (unsigned count = Pick(12); count > 0; --count) text += kParts[Pick(11)];
        return text;
    }
    void SetValue(DataItem& item) {
        const bool truth = Pick(2) != 0;
        const auto integer = static_cast<std::int32_t>(random_());
        const auto number64 = static_cast<std::int64_t>(integer) << Pick(32);
        // The text has six decimals; what is nearer to an integer than that is one.
        const double number = integer / 64.0;
        AUX::MemStream stream;
        std::uint8_t bytes[40];
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_());
        ASSERT_EQ(stream.Open(bytes, Pick(40), AUX::kAccessRead), AUX::kStatusOk);
        (void)item.SetBool(&truth, 0);  // Each kind takes its own.
        if (item.IsType(Kind::Int)) (void)item.SetInt(&integer, 0);
        if (item.IsType(Kind::Int64)) (void)item.SetInt64(&number64, 0);
        if (item.IsType(Kind::Double)) (void)item.SetDouble(&number, 0);
        if (item.IsType(Kind::String)) (void)item.SetText(WStringView(Text()));
        if (item.IsType(Kind::Stream)) (void)item.SetStream(&stream, false);
    }

    std::mt19937 random_;
};

TEST(BagText, WhatIsWrittenReadsBackEqual) {
    for (unsigned seed = 1; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        const Bag bag = MakeBag();
        RandomBag(seed).Fill(*bag->GetRootItem(), 4);
        const std::string text = TextOf(*bag);
        const Bag again = MakeBag();
        ASSERT_EQ(Read(*again, platform::FromUtf8(text)), S_OK);
        ASSERT_TRUE(again->GetRootItem()->Equals(bag->GetRootItem(), 0)) << text;
        ASSERT_EQ(TextOf(*again), text) << "the keys too";
    }
}

WideString Nest(const WideString& open, const WideString& close, std::size_t count) {
    WideString text = TEXT("{\"a\":");
    for (std::size_t i = 0; i < count; ++i) text += open;
    text += TEXT("1");
    for (std::size_t i = 0; i < count; ++i) text += close;
    return text + TEXT("}");
}

TEST(BagText, RefusesWhatIsNestedTooDeep) {
    const Bag bag = MakeBag();
    ASSERT_EQ(Read(*bag, Nest(TEXT("["), TEXT("]"), kMaxTextDepth - 1)), S_OK);
    EXPECT_EQ(TextOf(*bag), ToUtf8(Nest(TEXT("["), TEXT("]"), kMaxTextDepth - 1)));
    for (const WCHAR* const open :
         {TEXT("["), TEXT("{\"a\":"), TEXT("{\".type\":\"double\",\".value\":")}) {
        const Bag deep = MakeBag();
        const WideString close = open[0] == '[' ? TEXT("]") : TEXT("}");
        EXPECT_EQ(Read(*deep, Nest(open, close, 100'000)), S_OK);
        (void)TextOf(*deep);
    }
    DataItem* item = FindPath(*bag->GetRootItem(), TEXT("a"));
    while (item->AsArray()->ItemAt(0)->AsArray()) item = item->AsArray()->ItemAt(0);
    ASSERT_TRUE(item = item->AsArray()->InsertAt(0, Kind::Array));
    ASSERT_TRUE(item = item->AsArray()->InsertAt(0, Kind::Array));
    EXPECT_EQ(TextOf(*bag, 0, E_FAIL), "-");
}

TEST(BagText, TellsWhenMemoryRunsOut) {
    const WideString text =
        TEXT("{\"a\":[1,\"two\",{\".type\":\"stream\",\".value\":\"QUJD\"}],\"b\":{\"c\\n\":2.5}}");
    std::uint64_t told = 0;
    const auto work = [&](bool isNew) {
        const Bag bag = MakeBag();
        if (!bag) return;
        const HRESULT read = Read(*bag, text);
        BSTR written = nullptr;
        const HRESULT result = ToJson(bag.get(), 0, &written);
        const platform::UniqueBstr owner(written);
        told += read == E_OUTOFMEMORY || result == E_OUTOFMEMORY;
        EXPECT_EQ(written != nullptr, result == S_OK);
        // A parsed text lies in the run-time's memory, all else in the library's, where some
        // requests are for more than is needed.
        if (isNew && bag_test::HasNewFailed()) {
            EXPECT_TRUE(read == E_OUTOFMEMORY || result == E_OUTOFMEMORY);
        }
        EXPECT_EQ(bag->LockDepth(), 0u);
    };
    EXPECT_GT(bag_test::FailEachNew([&] { work(true); }), 5u);
    const std::uint64_t toldOfNew = told;
    EXPECT_GT(test_support::FailEachAllocation([&](const auto&) { work(false); }), 40u);
    EXPECT_GT(told, toldOfNew + 40);
}

}  // namespace
