#include "foundation/array.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "foundation/memory_testing.h"

namespace {

using AUX::Array;
using AUX::testing::AllocationWatch;

TEST(Array, GrowsByItsRule) {
    Array<int> array;
    std::vector<std::uint32_t> capacities = {0};
    for (int i = 0; i < 82; ++i) {
        ASSERT_TRUE(array.Add(i ? array[0] : i));  // Its own element, also as the block moves.
        if (capacities.back() != array.Capacity()) capacities.push_back(array.Capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{0, 4, 8, 12, 16, 24, 36, 54, 81, 121}));
    EXPECT_EQ(array[81], 0);
    Array<int> sized;
    for (const auto& [total, capacity] : {std::pair{5u, 8u}, {8u, 8u}, {25u, 28u}, {37u, 42u}}) {
        ASSERT_TRUE(sized.EnsureCapacity(total));
        EXPECT_EQ(sized.Capacity(), capacity);
    }
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
}

TEST(Array, AgreesWithAVectorWhateverFails) {
    std::mt19937 random(4711);
    AllocationWatch watch;
    {
        Array<std::uint64_t> array;
        std::vector<std::uint64_t> model;
        for (int step = 0; step < 20000; ++step) {
            const std::uint64_t value = random();
            const std::uint32_t place = static_cast<std::uint32_t>(random() % (array.Count() + 1));
            const std::uint32_t capacity = array.Capacity();
            const std::uint64_t action = random() % 400;
            if (action % 8 == 0) watch.FailFrom(1);
            if (action % 8 == 1) watch.FailOnce(1);  // It takes a new block instead.
            if (action == 399) {
                array.Free();
                model.clear();
            } else if (action < 100 && place < array.Count()) {
                array.RemoveAt(place);
                model.erase(model.begin() + place);
            } else if (array.InsertAt(place, value)) {
                model.insert(model.begin() + place, value);
            } else {
                ASSERT_EQ(array.Capacity(), capacity) << step;
            }
            watch.FailNone();
            ASSERT_EQ(std::vector<std::uint64_t>(array.begin(), array.end()), model) << step;
        }
    }
    EXPECT_GT(watch.Failures(), 100u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

}  // namespace
