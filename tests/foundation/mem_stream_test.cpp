#include "foundation/mem_stream.h"

#include <gtest/gtest.h>
#include <string>

#include "foundation/memory_testing.h"

namespace {

using namespace AUX;

TEST(MemStream, KeepsToItsAccess) {
    const struct {
        std::uint32_t access;
        Status read;
        Status write;
    } kCases[] = {{kAccessRead, kStatusOk, kStatusInvalidAccessMode},
                  {kAccessWrite, kStatusInvalidAccessMode, kStatusOk},
                  {kAccessRead | kAccessWrite | 4, kStatusOk, kStatusOk}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.access);
        char bytes[4] = {};
        char buffer[2] = {};
        std::int64_t count = 0;
        MemStream stream;
        MemStream source;
        ASSERT_EQ(stream.Open(bytes, 4, c.access), kStatusOk);
        ASSERT_EQ(source.Open(buffer, 2, kAccessRead), kStatusOk);
        EXPECT_EQ(stream.GetAccess(), c.access & kAccessMask);
        EXPECT_EQ(stream.Read(buffer, 1, count), c.read);
        EXPECT_EQ(stream.ReadAt(buffer, 1, SeekMode::Start, 0, count), c.read);
        EXPECT_EQ(stream.Write(buffer, 1, count), c.write);
        EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 1, count), c.write);
        EXPECT_EQ(stream.SetAccess(3), kStatusUnsupportedOperation);
    }
}

TEST(MemStream, BorrowsItsBytes) {
    char bytes[4] = {'a', 'b', 'c', 'd'};
    AUX::testing::AllocationWatch watch;
    {
        MemStream stream;
        EXPECT_EQ(stream.Open(bytes, 4, 0), kStatusInvalidAccessMode);
        EXPECT_EQ(stream.Open(nullptr, 4, 1), kStatusInvalidArgument);
        EXPECT_EQ(stream.Open(bytes, -1, 1), kStatusInvalidArgument);
        watch.FailFrom(1);
        EXPECT_EQ(stream.Open(bytes, 4, 1), kStatusInsufficientMemory);
        EXPECT_FALSE(stream.IsOpen());
        watch.FailNone();
        ASSERT_EQ(stream.Open(bytes, 4, 3), kStatusOk);
        EXPECT_EQ(stream.GetData(), bytes);
        EXPECT_EQ(stream.GetAllocated(), 4);
        std::int64_t count = 0;
        EXPECT_EQ(stream.Write("xyz", 3, count), kStatusOk);
        EXPECT_EQ(stream.Close(), kStatusOk);
        ASSERT_EQ(stream.Open(bytes, 0, 3), kStatusOk);
        EXPECT_EQ(stream.Write("x", 1, count), kStatusEndOfData);
        EXPECT_EQ(stream.CopyFrom(stream, SeekMode::Start, 0, 1, count), kStatusOk);
        EXPECT_EQ(count, 0);
    }
    EXPECT_EQ(std::string(bytes, 4), "xyzd");
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

}  // namespace
