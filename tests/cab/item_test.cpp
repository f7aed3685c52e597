#include <gtest/gtest.h>
#include <limits>

#include "cab/nil_item.h"
#include "tests/cab/bag_support.h"

namespace {

using namespace bag_test;

TEST(Items, OrdersKeysByLengthFirst) {
    const Bag bag = MakeBag();
    DataDictionary& root = *bag->GetRootItem()->AsDictionary();
    for (const WCHAR* key : {TEXT("b"), TEXT("aa"), TEXT("a")}) {
        ASSERT_TRUE(root.GetOrAdd(key, -1, Kind::Int));
    }
    EXPECT_EQ(root.KeyAt(0), WStringView(TEXT("a")));
    EXPECT_EQ(root.KeyAt(1), WStringView(TEXT("b")));
    EXPECT_EQ(root.KeyAt(2), WStringView(TEXT("aa")));
    EXPECT_EQ(root.GetOrAdd(TEXT("a"), -1, Kind::Bool), nullptr);
    EXPECT_EQ(root.GetOrAdd(TEXT("new"), -1, Kind::None), nullptr);
}

TEST(Items, ComparesDoublesByBitsWhenTheyAreSet) {
    const Bag bag = MakeBag();
    DataItem* const item = MakePath(*bag->GetRootItem(), TEXT("d"), Kind::Double);
    const double values[] = {-0.0, 0.0, std::numeric_limits<double>::quiet_NaN()};
    for (const double value : values) {
        const std::uint32_t count = bag->GetChangeCount();
        EXPECT_TRUE(item->SetDouble(&value, 0) && item->SetDouble(&value, 0));
        EXPECT_EQ(bag->GetChangeCount(), count + 1);
    }
    EXPECT_FALSE(item->Equals(item, 0)) << "a NaN is equal to nothing";
    EXPECT_FALSE(item->SetDouble(nullptr, 0));
    EXPECT_FALSE(item->IsDefault()) << "without a declaration nothing is a default";
}

TEST(Items, ShapesATemplatedBag) {
    ItemSpec any = Leaf(nullptr, Kind::String);
    ItemSpec number = Leaf(TEXT("n"), Kind::Int);
    number.defaultInt = 5;
    ItemSpec text = Leaf(TEXT("s"), Kind::String);
    text.defaultString = TEXT("dflt");
    ItemSpec hidden = Leaf(TEXT("h"), Kind::Bool);
    hidden.flags = SpecTemp;
    const ItemSpec shared[] = {number, text, {}};
    const ItemSpec again = Leaf(TEXT("n"), Kind::Double);
    const ItemSpec looseSet[] = {any, {}};
    const ItemSpec set[] = {
        Branch(nullptr, Kind::Dictionary, shared, 2, SpecInclude),      again, hidden, {},
        Branch(TEXT("free"), Kind::Dictionary, looseSet, 1, SpecLoose), {}};
    const ItemSpec rootSpec = Branch(nullptr, Kind::Dictionary, set, 5);
    std::int64_t total = 0;
    EXPECT_EQ(SpecAt(rootSpec, -1, &total), nullptr);
    EXPECT_EQ(total, 6);
    EXPECT_EQ(SpecAt(rootSpec, 1), &shared[1]);
    EXPECT_EQ(SpecAt(rootSpec, 6), nullptr);

    const Bag bag = MakeBag(&rootSpec);
    DataItem& root = *bag->GetRootItem();
    DataDictionary& keys = *root.AsDictionary();
    EXPECT_EQ(keys.GetCount(), 4u) << "the first declaration of a key, and no invalid one";
    EXPECT_TRUE(root.IsDefault());
    EXPECT_EQ(IntOf(keys.Find(TEXT("n"))), 5);
    EXPECT_EQ(keys.Find(TEXT("h"))->GetFlags(), ItemTransient);
    EXPECT_FALSE(keys.RemoveAt(0));
    EXPECT_EQ(keys.GetOrAdd(TEXT("x"), -1, Kind::Int), nullptr);
    EXPECT_EQ(MakePath(root, TEXT("free.x"), Kind::Int), nullptr);
    EXPECT_TRUE(MakePath(root, TEXT("free.x"), Kind::String));
    EXPECT_TRUE(SetInt(keys.Find(TEXT("n")), 6) && !root.IsDefault());

    const Bag plain = MakeBag();
    EXPECT_TRUE(MakePath(*plain->GetRootItem(), TEXT("n"), Kind::String)->SetText(TEXT("8")));
    EXPECT_TRUE(MakePath(*plain->GetRootItem(), TEXT("s"), Kind::String)->SetText(TEXT("mine")));
    EXPECT_TRUE(MakePath(*plain->GetRootItem(), TEXT("extra"), Kind::Int));
    EXPECT_TRUE(root.Assign(plain->GetRootItem(), true, false));
    EXPECT_EQ(IntOf(keys.Find(TEXT("n"))), 6) << "a text is no number";
    EXPECT_TRUE(*keys.Find(TEXT("s"))->GetString() == WStringView(TEXT("mine")));
    EXPECT_TRUE(plain->GetRootItem()->SetSpec(&rootSpec));
    EXPECT_EQ(plain->GetRootItem()->AsDictionary()->GetCount(), 4u);
    EXPECT_TRUE(plain->GetRootItem()->GetFlags() & ItemChildrenRemoved);
    EXPECT_FALSE(plain->GetRootItem()->SetSpec(&number)) << "another kind";

    EXPECT_TRUE(root.Reset());
    EXPECT_EQ(keys.GetCount(), 4u);
    EXPECT_EQ(keys.Find(TEXT("free"))->AsContainer()->GetCount(), 0u);
    EXPECT_TRUE(root.IsDefault());
    EXPECT_FALSE(root.GetFlags() & ItemValueSet);
    const std::uint32_t count = bag->GetChangeCount();
    EXPECT_TRUE(root.Reset());
    EXPECT_EQ(bag->GetChangeCount(), count) << "nothing to reset";
    EXPECT_TRUE(bag->Rebuild());
}

TEST(Items, TakeADeclarationThatComesLater) {
    const ItemSpec numbers[] = {Leaf(nullptr, Kind::Int), {}};
    const ItemSpec loose = Branch(nullptr, Kind::Dictionary, numbers, 1, SpecLoose);
    const ItemSpec list = Branch(nullptr, Kind::Array, numbers, 1);
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    // What the declaration does not let be goes, the rest becomes of its kind.
    for (const auto& [place, spec] : {std::pair(TEXT("keys"), &loose), {TEXT("list"), &list}}) {
        const bool isList = spec == &list;
        const auto at = [&](const WCHAR* name, Kind kind) {
            WString path;
            EXPECT_TRUE(path.Assign(place) && path.Append(name));
            return MakePath(root, path, kind);
        };
        const double half = 2.5, two = 2;
        EXPECT_TRUE(SetInt(at(isList ? TEXT("[0]") : TEXT(".a"), Kind::Int), 1));
        EXPECT_TRUE(at(isList ? TEXT("[1]") : TEXT(".b"), Kind::Double)->SetDouble(&two, 0));
        EXPECT_TRUE(at(isList ? TEXT("[2]") : TEXT(".c"), Kind::Double)->SetDouble(&half, 0));
        EXPECT_TRUE(at(isList ? TEXT("[3]") : TEXT(".d"), Kind::Array));
        DataItem& shaped = *FindPath(root, place);
        const std::uint32_t count = bag->GetChangeCount();
        EXPECT_TRUE(shaped.SetSpec(spec));
        EXPECT_GT(bag->GetChangeCount(), count);
        DataContainer& content = *shaped.AsContainer();
        ASSERT_GE(content.GetCount(), 2u);
        EXPECT_EQ(IntOf(content.ItemAt(0)), 1);
        EXPECT_EQ(IntOf(content.ItemAt(1)), 2);
        for (std::uint32_t i = 0; i < content.GetCount(); ++i) {
            EXPECT_EQ(content.ItemAt(i)->GetType(), Kind::Int);
        }
        EXPECT_TRUE(shaped.GetFlags() & ItemChildrenRemoved);
        shaped.SetTransientAll(true);
        EXPECT_TRUE(content.ItemAt(1)->GetFlags() & ItemTransient);
        content.Clear();
        EXPECT_EQ(content.GetCount(), 0u);
    }
    DataDictionary& keys = *FindPath(root, TEXT("keys"))->AsDictionary();
    EXPECT_FALSE(keys.ResetKey(TEXT("a"), -1)) << "there is none";
    EXPECT_TRUE(SetInt(keys.GetOrAdd(TEXT("a"), -1, Kind::Int), 7));
    EXPECT_TRUE(keys.ResetKey(TEXT("a"), -1));
    EXPECT_EQ(IntOf(keys.Find(TEXT("a"))), 0);
}

TEST(Items, RespectsTheFlagsOfChildren) {
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    DataItem* const kept = MakePath(root, TEXT("a[0]"), Kind::Int);
    DataItem* const secret = MakePath(root, TEXT("a[1]"), Kind::Int);
    secret->SetFlags(ItemNoCopy | ItemTransient, ~0u);
    kept->SetFlags(ItemTransient | ItemNoReset, ~0u);
    const auto copy = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Array);
    EXPECT_TRUE(copy->Assign(FindPath(root, TEXT("a")), true, true));
    EXPECT_EQ(copy->AsArray()->GetCount(), 1u);
    EXPECT_EQ(copy->AsArray()->ItemAt(0)->GetFlags() & (ItemTransient | ItemDirty), ItemTransient);
    EXPECT_TRUE(SetInt(kept, 3) && kept->Reset());
    EXPECT_EQ(IntOf(kept), 3);
    EXPECT_FALSE(copy->Assign(kept, true, false));
    EXPECT_FALSE(copy->Assign(nullptr, true, false));
}

TEST(Items, EditsArrays) {
    const auto item = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Array);
    DataArray& list = *item->AsArray();
    EXPECT_EQ(list.InsertAt(0, Kind::None), nullptr);
    for (std::int32_t i = 0; i < 4; ++i) EXPECT_TRUE(SetInt(list.InsertAt(0, Kind::Int), i));
    EXPECT_TRUE(list.RemoveAt(-1));
    EXPECT_EQ(IntOf(list.ItemAt(2)), 1);
    EXPECT_FALSE(list.RemoveRange(1, 3) || list.RemoveRange(-2, 1) || list.RemoveAt(3));
    EXPECT_TRUE(list.RemoveRange(0, 2));
    EXPECT_EQ(IntOf(list.ItemAt(0)), 1);
    EXPECT_TRUE(list.ElementAt(0, Kind::None)->IsType(Kind::Int));
    EXPECT_TRUE(list.ElementAt(0, Kind::Bool)->IsType(Kind::Bool));
    DataItem* const added = list.ElementAt(9, Kind::Int);
    EXPECT_TRUE(added && added == list.ItemAt(1));
}

TEST(Items, AnswersNothingForTheNilItem) {
    DataItem& nil = NilItem();
    EXPECT_FALSE(SetInt(&nil, 1) || nil.Reset() || nil.Assign(&nil, true, true));
    EXPECT_FALSE(nil.SetSpec(nullptr) || nil.AsContainer() || nil.Cast(Kind::None));
    nil.SetFlags(ItemDirty, ~0u);
    EXPECT_EQ(nil.GetFlags(), 0u);
    for (const Kind kind : {Kind::None, Kind::Container}) {
        EXPECT_EQ(CreateItem(nullptr, nullptr, nullptr, nullptr, kind), nullptr);
    }
}

TEST(Items, ProtectsStringsWithTheBagsCipher) {
    const Bag bag = MakeBag();
    DataItem* const item = MakePath(*bag->GetRootItem(), TEXT("s"), Kind::String);
    WString plain;
    WString sealed;
    ASSERT_TRUE(item->SetText(TEXT("secret")));
    EXPECT_EQ(item->GetProtected(plain), 0);
    EXPECT_TRUE(plain == WStringView(TEXT("secret"))) << "no cipher";
    auto cipher = std::make_unique<AUX::TextCipher>();
    cipher->SetKey("0123456789abcdef", 16);
    bag->SetCipher(std::move(cipher));
    EXPECT_EQ(item->GetProtected(sealed), 0);
    EXPECT_EQ(sealed[0], 0);
    EXPECT_TRUE(item->SetText(TEXT("other")));
    EXPECT_EQ(item->SetProtected(TEXT("no envelope")), AUX::kStatusDecryptFailure);
    EXPECT_EQ(item->SetProtected(WStringView(TEXT("\0"), 1)), E_INVALIDARG);
    EXPECT_TRUE(*item->GetString() == WStringView(TEXT("other")));
    EXPECT_EQ(item->SetProtected(sealed), 0);
    EXPECT_TRUE(*item->GetString() == plain);
    EXPECT_EQ(item->SetProtected(WStringView(sealed).substr(1)), 0);
}

}  // namespace
