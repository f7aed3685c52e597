#include "foundation/array.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "foundation/memory_testing.h"

namespace {

using AUX::Array;
using AUX::testing::AllocationWatch;

TEST(Array, GrowsByItsRule) {
    Array<int> array;
    std::vector<std::uint32_t> capacities;
    for (int i = 0; i < 82; ++i) {
        ASSERT_TRUE(array.Add(i));
        if (capacities.empty() || capacities.back() != array.Capacity()) {
            capacities.push_back(array.Capacity());
        }
    }
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{4, 8, 12, 16, 24, 36, 54, 81, 121}));

    const struct {
        std::uint32_t before;
        std::uint32_t total;
        std::uint32_t capacity;
    } kCases[] = {{0, 0, 0},    {0, 5, 8},    {8, 8, 8},    {12, 13, 16},
                  {16, 17, 24}, {16, 24, 24}, {16, 25, 28}, {24, 37, 40}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.before << " to " << c.total);
        Array<int> other;
        ASSERT_TRUE(other.EnsureCapacity(c.before));
        ASSERT_TRUE(other.EnsureCapacity(c.total));
        EXPECT_EQ(other.Capacity(), c.capacity);
    }
}

TEST(Array, TakesItsOwnElements) {
    Array<int> array;
    for (int i = 1; i <= 4; ++i) ASSERT_TRUE(array.Add(i));
    ASSERT_TRUE(array.Add(array[0]));  // The block is full and moves.
    ASSERT_TRUE(array.InsertAt(0, array[3]));
    ASSERT_TRUE(array.InsertAt(array.Count(), 9));
    EXPECT_EQ(std::vector<int>(array.begin(), array.end()),
              (std::vector<int>{4, 1, 2, 3, 4, 1, 9}));
}

TEST(Array, CountsInThirtyTwoBits) {
    struct Record {
        char bytes[32];
    };
    Array<Record> array;
    ASSERT_TRUE(array.Add({}));
    EXPECT_FALSE(array.Grow(0xFFFFFFFF));
    AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(array.Grow(0xFFFFFFFE));  // Rounding up would overflow; the bytes need 37 bits.
    EXPECT_EQ(watch.Failures(), 2u);
    EXPECT_EQ(array.Capacity(), 4u);
}

TEST(Array, AgreesWithAVectorWhateverFails) {
    constexpr unsigned kSeed = 4711;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    AllocationWatch watch;
    {
        Array<std::uint64_t> array;
        std::vector<std::uint64_t> model;
        for (int step = 0; step < 20000; ++step) {
            const std::uint64_t value = random();
            const std::uint32_t place = static_cast<std::uint32_t>(random() % (array.Count() + 1));
            const std::uint64_t failures = watch.Failures();
            const std::uint32_t capacity = array.Capacity();
            const std::uint64_t fault = random() % 8;  // One makes it take a new block instead.
            if (fault == 0) watch.FailFrom(1);
            if (fault == 1) watch.FailOnce(1);
            bool isDone = true;
            switch (random() % 40) {
                case 0:
                    array.Free();
                    model.clear();
                    break;
                case 1:
                    isDone = array.Grow(static_cast<std::uint32_t>(random() % 100));
                    break;
                case 2:
                    isDone = array.Add(value);
                    if (isDone) model.push_back(value);
                    break;
                default:
                    isDone = array.InsertAt(place, value);
                    if (isDone) model.insert(model.begin() + place, value);
                    break;
            }
            ASSERT_EQ(isDone, watch.Failures() < failures + 2) << step;
            ASSERT_TRUE(isDone || array.Capacity() == capacity) << step;
            watch.FailNone();
            ASSERT_EQ(std::vector<std::uint64_t>(array.begin(), array.end()), model) << step;
        }
    }
    EXPECT_GT(watch.Failures(), 100u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

}  // namespace
