#include "foundation/memory.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "foundation/memory_testing.h"

namespace {

using AUX::testing::AllocationWatch;

TEST(Memory, RefusesNothingAndTooMuch) {
    EXPECT_EQ(AUX::Alloc(0), nullptr);
    EXPECT_EQ(AUX::Alloc(AUX::kMaxRequest + 1), nullptr);
    AUX::Free(nullptr);
    void* block = AUX::Alloc(40);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    std::memset(block, 'x', 40);
    EXPECT_EQ(AUX::Realloc(block, AUX::kMaxRequest + 1), nullptr);
    EXPECT_EQ(AUX::Resize(block, AUX::kMaxRequest + 1), nullptr);
    block = AUX::Realloc(block, 100000);
    ASSERT_NE(block, nullptr);
    block = AUX::Resize(block, 40);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(static_cast<char*>(block), 40), std::string(40, 'x'));
    block = AUX::Realloc(block, 0);
    ASSERT_NE(block, nullptr);
    AUX::Free(block);
}

TEST(Memory, AWatchFailsTheRequestThatItIsTold) {
    AllocationWatch watch;
    watch.FailOnce(2);
    void* const first = AUX::Alloc(8);
    EXPECT_EQ(AUX::Realloc(first, 16), nullptr);
    void* const grown = AUX::Realloc(first, 16);
    EXPECT_NE(grown, nullptr);
    EXPECT_EQ(watch.LiveBlocks(), 1);
    watch.FailFrom(1);
    EXPECT_EQ(AUX::Alloc(8), nullptr);
    EXPECT_EQ(AUX::Resize(nullptr, 8), nullptr);
    AUX::Free(grown);
    EXPECT_EQ(watch.LiveBlocks(), 0);
    EXPECT_EQ(watch.Requests(), 5u);
    EXPECT_EQ(watch.Failures(), 3u);
}

}  // namespace
