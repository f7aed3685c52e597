#include "automation/bag_rect.h"

#include <gtest/gtest.h>

#include "tests/support/fail_each_allocation.h"

namespace AUX {
namespace {

TEST(BagRect, IsFourDoublesOfWhichMissingOnesAreZero) {
    CAB::DataDictionary bag;
    EXPECT_EQ(LoadBagRect(bag).top, 0);
    EXPECT_EQ(bag.GetCount(), 0u) << "reading added something";

    const std::int32_t top = 7;  // A number of another kind is read all the same.
    ASSERT_TRUE(bag.GetOrAdd(TEXT("top"), -1, CAB::Kind::Int)->SetInt(&top, 0));
    const double right = 612.5;
    ASSERT_TRUE(bag.GetOrAdd(TEXT("right"), -1, CAB::Kind::Double)->SetDouble(&right, 0));
    const BagRect partial = LoadBagRect(bag);
    EXPECT_EQ(partial.top, 7);
    EXPECT_EQ(partial.right, 612.5);
    EXPECT_EQ(partial.left, 0);
    EXPECT_EQ(partial.bottom, 0);
    EXPECT_FALSE(SaveBagRect(partial, bag)) << "an item of another kind";
}

TEST(BagRect, SavesOrRunsOutOfMemory) {
    const std::uint64_t failures = test_support::FailEachAllocation([](auto hasFailed) {
        CAB::DataDictionary bag;
        const BagRect rect{1, 2, 3, 4};
        const bool isSaved = SaveBagRect(rect, bag);
        EXPECT_TRUE(isSaved || hasFailed());
        if (!isSaved) return;  // A list that may not grow ahead still grows by one.
        EXPECT_EQ(bag.GetCount(), 4u);
        const double expected[] = {2, 4, 1, 3};
        const WCHAR* const keys[] = {TEXT("top"), TEXT("bottom"), TEXT("left"), TEXT("right")};
        for (int i = 0; i < 4; ++i) {
            double value = -1;
            EXPECT_TRUE(bag.Find(keys[i])->GetDouble(value));
            EXPECT_EQ(value, expected[i]);
        }
        EXPECT_EQ(LoadBagRect(bag).bottom, 4);
    });
    EXPECT_GE(failures, 8u);
}

}  // namespace
}  // namespace AUX
