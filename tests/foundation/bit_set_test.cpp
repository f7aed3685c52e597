#include "foundation/bit_set.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

#include "foundation/bit_kernels.h"
#include "foundation/system_facts.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace AUX;
using Model = std::vector<bool>;

/// The forms that this processor runs.
std::vector<const BitKernels*> Forms() {
    std::vector<const BitKernels*> forms = {&kPlainBitKernels};
    if (Facts().hasPopcnt) forms.push_back(&kPopcntBitKernels);
    if (Facts().hasAvx2) forms.push_back(&kAvx2BitKernels);
    if (Facts().hasWideBitCount) forms.push_back(&kAvx512BitKernels);
    return forms;
}

/// Sets with each of the forms in turn.
class BitSetTest : public ::testing::TestWithParam<const BitKernels*> {
protected:
    BitSetTest() : chosen_(std::exchange(kernels, GetParam())) {}
    ~BitSetTest() override { kernels = chosen_; }

    std::uint32_t Below(std::size_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

    static void ExpectSame(const BitSet& set, const Model& model) {
        const auto size = static_cast<std::uint32_t>(model.size());
        ASSERT_EQ(set.Size(), size);
        std::int64_t next = -1;
        for (std::uint32_t i = 0; i < size; ++i) {
            ASSERT_EQ(set.Test(i), model[i]) << i;
            if (!model[i]) continue;
            ASSERT_EQ(next = set.NextSet(next), i);
        }
        EXPECT_EQ(set.NextSet(next), -1);
        EXPECT_FALSE(set.Test(size));
        const auto count = std::count(model.begin(), model.end(), true);
        EXPECT_EQ(set.CountRange(0, UINT32_MAX), count);
        EXPECT_EQ(set.Any(), count > 0);
        EXPECT_EQ(set.None(), count == 0);
    }

    void Fill(BitSet& set, Model& model, std::uint32_t size) {
        ASSERT_TRUE(set.Create(size));
        model.assign(size, false);
        for (std::uint32_t i = 0; i < size; ++i) {
            if (Below(3)) continue;
            EXPECT_FALSE(set.SetBit(i, model[i] = true));
        }
    }

    void Combine(BitSet& set, Model& model, const BitSet& other, const Model& otherModel) {
        const std::size_t common = std::min(model.size(), otherModel.size());
        bool intersects = false;
        for (std::size_t i = 0; i < common; ++i) intersects |= model[i] && otherModel[i];
        EXPECT_EQ(set.Intersects(other), intersects);
        EXPECT_EQ(set.Equal(other), model == otherModel);
        // Words that only one set has stay; a common word's bits behind the shorter set are zeros.
        const std::size_t andEnd = std::min(model.size(), (common + 63) / 64 * 64);
        switch (Below(4)) {
            case 0:
                set.And(other);
                for (std::size_t i = 0; i < andEnd; ++i) {
                    model[i] = model[i] && i < common && otherModel[i];
                }
                break;
            case 1:
                set.AndNot(other);
                for (std::size_t i = 0; i < common; ++i) model[i] = model[i] && !otherModel[i];
                break;
            case 2:
                ASSERT_TRUE(set.Or(other));
                model.resize(std::max(model.size(), otherModel.size()));
                for (std::size_t i = 0; i < otherModel.size(); ++i) {
                    model[i] = model[i] || otherModel[i];
                }
                break;
            default:
                ASSERT_TRUE(set.Assign(other));
                model = otherModel;
        }
    }

    void Change(BitSet& set, Model& model) {
        const std::size_t size = model.size();
        const std::uint32_t first = Below(size + 3);
        const std::uint32_t count = Below(4) ? Below(size + 9) : UINT32_MAX - Below(2);
        const bool value = Below(2) != 0;
        const std::size_t end = std::min<std::size_t>(size, std::size_t{first} + count);
        switch (Below(4)) {
            case 0:
                set.FillRange(value, first, count);
                for (std::size_t i = first; i < end; ++i) model[i] = value;
                break;
            case 1: {
                const bool old = first < size && model[first];
                EXPECT_EQ(set.SetBit(first, value), old);
                if (first < size) model[first] = value;
                break;
            }
            case 2:
                if (first >= size) model.resize(first + 1);
                EXPECT_EQ(set.SetBitGrow(first, value), model[first]);
                model[first] = value;
                break;
            default:
                // Down and up again: what was cut off is lost.
                ASSERT_TRUE(set.Resize(first));
                model.resize(first);
                ASSERT_TRUE(set.Resize(static_cast<std::uint32_t>(size)));
                model.resize(size);
        }
        const std::uint32_t from = Below(size + 2);
        const std::uint32_t to = Below(2) ? Below(size + 2) : from + Below(70);
        std::uint32_t expected = 0;
        for (std::size_t i = from; i < std::min<std::size_t>(to, model.size()); ++i) {
            expected += model[i];
        }
        EXPECT_EQ(set.CountRange(from, to), expected);
    }

    std::mt19937 random_{69};

private:
    const BitKernels* chosen_;
};

INSTANTIATE_TEST_SUITE_P(Forms, BitSetTest, ::testing::ValuesIn(Forms()));

TEST_P(BitSetTest, AgreesWithAVectorOfBits) {
    std::vector<std::uint32_t> sizes(261);
    for (std::uint32_t i = 0; i < sizes.size(); ++i) sizes[i] = i;
    // The steps of each form, and their borders.
    for (const std::uint32_t words : {8u, 16u, 32u, 64u, 157u}) {
        for (const std::uint32_t bits : {63u, 64u, 65u}) sizes.push_back(words * 64 + bits - 64);
    }
    for (const std::uint32_t size : sizes) {
        SCOPED_TRACE(size);
        BitSet set;
        BitSet other;
        Model model;
        Model otherModel;
        Fill(set, model, size);
        ExpectSame(set, model);
        for (int round = 0; round < 6; ++round) {
            Fill(other, otherModel, Below(2) ? size : sizes[Below(sizes.size())]);
            Combine(set, model, other, otherModel);
            ExpectSame(set, model);
            for (int step = 0; step < 4; ++step) Change(set, model);
            ExpectSame(set, model);
        }
    }
}

TEST_P(BitSetTest, CountsAsTheOthersDo) {
    std::vector<std::uint64_t> words(1001);
    for (std::uint64_t& word : words) word = std::uint64_t{random_()} << 32 | random_();
    std::fill_n(words.begin(), 300, ~std::uint64_t{0});
    for (std::size_t first = 0; first < 3; ++first) {
        std::uint64_t sum = 0;
        for (std::size_t count = 0; first + count < words.size(); ++count) {
            ASSERT_EQ(kernels->count(words.data() + first, count), sum) << count;
            sum += CountWord(words[first + count]);
        }
    }
}

TEST(BitSet, WorksOnItself) {
    BitSet set;
    ASSERT_TRUE(set.Create(0));
    EXPECT_TRUE(set.None() && set.Equal(set) && set.Or(set) && set.Assign(set));
    ASSERT_TRUE(set.Create(100));
    set.SetBit(99, true);
    set.And(set);
    EXPECT_TRUE(set.Or(set) && set.Assign(set) && set.Equal(set) && set.Intersects(set));
    EXPECT_EQ(set.NextSet(-1), 99);
    EXPECT_EQ(set.NextSet(INT64_MAX), -1);
    BitSet moved = std::move(set);
    EXPECT_TRUE(moved.Test(99) && set.None() && set.Size() == 0);
    moved.AndNot(moved);
    EXPECT_TRUE(moved.None() && moved.Size() == 100 && !moved.Intersects(moved));
}

TEST(BitSet, StaysWholeWithoutMemory) {
    EXPECT_EQ(test_support::FailEachAllocation([](auto hasFailed) {
                  BitSet set;
                  const bool isCreated = set.Create(1);
                  EXPECT_NE(isCreated, hasFailed());
                  const std::uint32_t before = set.Size();
                  set.SetBit(0, true);
                  EXPECT_FALSE(set.SetBitGrow(UINT32_MAX, true));
                  EXPECT_FALSE(set.SetBitGrow(1000, true));
                  EXPECT_TRUE(set.Test(1000) || (hasFailed() && set.Size() == before));
                  BitSet other;
                  const bool isAssigned = other.Assign(set);
                  EXPECT_EQ(other.Equal(set), isAssigned);
                  EXPECT_TRUE(isAssigned || other.Size() == 0);
                  BitSet joined;
                  const bool isJoined = joined.Or(set);
                  EXPECT_EQ(joined.Equal(set), isJoined);
                  const bool isMade = other.Create(5000);
                  EXPECT_EQ(other.Size(), isMade ? 5000u : 0u);
              }),
              5u);
}

}  // namespace
