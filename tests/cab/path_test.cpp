#include <gtest/gtest.h>

#include "tests/cab/bag_support.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace bag_test;

TEST(ItemPath, FindsWhatItMadeAndRefusesWhatIsNoPath) {
    constexpr struct {
        const WCHAR* made;
        const WCHAR* found;  // Null: no path.
    } kCases[] = {
        {TEXT("a"), TEXT("a")},
        {TEXT("a.b[0].c"), TEXT("a.b[].c")},
        {TEXT("a[7][3]"), TEXT("a[0][0]")},
        {TEXT("a[0]x"), TEXT("a[].x")},
        {TEXT("a."), TEXT("a.")},
        {TEXT(".a"), TEXT(".a")},
        {TEXT("a..b"), TEXT("a..b")},
        {TEXT("a.[0]"), TEXT("a.[0]")},
        {TEXT("a[0]."), TEXT("a[0].")},
        {TEXT(""), nullptr},
        {TEXT("a["), nullptr},
        {TEXT("a]"), nullptr},
        {TEXT("a[0"), nullptr},
        {TEXT("a[x]"), nullptr},
        {TEXT("a[-1]"), nullptr},
        {TEXT("a[2147483648]"), nullptr},
        {TEXT("a[0]]"), nullptr},
    };
    for (const auto& c : kCases) {
        const Bag bag = MakeBag();
        DataItem& root = *bag->GetRootItem();
        DataItem* const made = MakePath(root, c.made, Kind::Int);
        EXPECT_EQ(made != nullptr, c.found != nullptr) << WStringView(c.made).size();
        EXPECT_EQ(FindPath(root, c.found ? c.found : c.made), made);
        if (made) {
            EXPECT_EQ(MakePath(root, c.found, Kind::Int, KindMatch::Strict), made);
        }
        if (!made) {
            EXPECT_EQ(root.AsDictionary()->GetCount(), 0u);
        }
    }
}

TEST(ItemPath, CountsAnEmptyNameBeforeAnIndexOnlyBehindADot) {
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    DataItem* const element = MakePath(root, TEXT("list[0]"), Kind::Int);
    EXPECT_EQ(FindPath(root, TEXT("[0][0]")), element) << "an index on a dictionary";
    EXPECT_EQ(FindPath(*root.AsDictionary()->Find(TEXT("list")), TEXT("[0]")), element);
    EXPECT_EQ(FindPath(root, TEXT("list.[0]")), nullptr);
}

TEST(ItemPath, LeavesOtherKindsAlone) {
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    DataItem* const number = MakePath(root, TEXT("a.n"), Kind::Double);
    DataItem* const element = MakePath(root, TEXT("a.l[0]"), Kind::Int);
    EXPECT_EQ(MakePath(root, TEXT("a.n"), Kind::Int), number);
    EXPECT_EQ(MakePath(root, TEXT("a.n"), Kind::Int, KindMatch::Strict), nullptr);
    EXPECT_EQ(MakePath(root, TEXT("a.l[0].x"), Kind::Int), nullptr);
    EXPECT_EQ(MakePath(root, TEXT("a.l.x"), Kind::Int), nullptr);
    EXPECT_EQ(MakePath(root, TEXT("a.x"), Kind::None), nullptr);
    EXPECT_EQ(FindPath(root, TEXT("a.l[0]")), element);
    WString deep;
    ASSERT_TRUE(deep.AppendRepeated('.', kMaxPathParts));
    EXPECT_EQ(MakePath(root, deep, Kind::Int), nullptr);
    EXPECT_EQ(root.AsDictionary()->GetCount(), 1u);
}

TEST(ItemPath, FillsAnEmptyPlace) {
    const Bag bag = MakeBag();
    DataItem& item = *MakePath(*bag->GetRootItem(), TEXT("list"), Kind::Array);
    DataArray& list = *item.AsArray();
    ASSERT_TRUE(list.GrowTo(3) && list.GrowTo(2));
    EXPECT_EQ(FindPath(item, TEXT("[1]")), nullptr);
    EXPECT_EQ(MakePath(item, TEXT("[1]"), Kind::None), nullptr);
    Growth growth;
    EXPECT_EQ(MakePath(item, TEXT("[1].x"), Kind::Container, KindMatch::AnyPresent, &growth),
              nullptr);
    EXPECT_TRUE(MakePath(item, TEXT("[1].x"), Kind::Int, KindMatch::AnyPresent, &growth));
    growth.Undo();
    EXPECT_EQ(list.ItemAt(1), nullptr) << "empty again";
    DataItem* const made = MakePath(item, TEXT("[1]"), Kind::Int);
    EXPECT_TRUE(SetInt(made, 5) && made == list.ItemAt(1));
    EXPECT_EQ(list.GetCount(), 3u);
    const auto copy = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Array);
    EXPECT_TRUE(copy->Assign(&item, true, false));
    EXPECT_TRUE(copy->Equals(&item, 0) && item.Equals(copy.get(), 0));
    EXPECT_TRUE(list.RemoveAt(0) && list.InsertAt(-1, Kind::Int));
    EXPECT_FALSE(copy->Equals(&item, 0) || item.Equals(copy.get(), 0));
}

TEST(ItemPath, LeavesNothingHalfMade) {
    const auto runs = test_support::FailEachAllocation([](const auto& hasFailed) {
        const Bag bag = MakeBag();
        if (!bag) return;
        DataItem& root = *bag->GetRootItem();
        DataItem* const made = MakePath(root, TEXT("a.b[0].c"), Kind::String);
        EXPECT_TRUE(made || hasFailed());  // A table that cannot grow by much grows by little.
        EXPECT_EQ(root.AsDictionary()->GetCount(), made ? 1u : 0u);
        if (!made) {
            EXPECT_EQ(root.GetFlags(), 0u);
        }
    });
    EXPECT_GT(runs, 8u);
}

}  // namespace
