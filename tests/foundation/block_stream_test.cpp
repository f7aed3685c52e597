// The streams over memory.

#include "foundation/block_stream.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "foundation/dyn_mem_stream.h"
#include "foundation/mem_stream.h"
#include "foundation/memory_testing.h"

namespace {

using namespace AUX;

struct GrowthCase {
    const char* why;
    std::int64_t initialSize;
    std::int64_t growth;
    std::int64_t firstAllocated;
    std::int64_t written;
    std::int64_t allocated;
};

TEST(DynMemStream, GrowsByItsRule) {
    constexpr GrowthCase kCases[] = {
        {"first growth is to two pages", 0, -2, 4096, 5000, 8192},
        {"a larger need is rounded to pages", 0, -2, 4096, 9000, 12288},
        {"0 stands for -2", 8192, 0, 8192, 1, 12288},
        {"below -4 is -4", 8192, -9, 8192, 1, 10240},
        {"fixed steps", 0, 100, 100, 101, 200},
        {"the first size is rounded too", 150, 100, 200, 51, 300},
        {"what fits changes nothing", 0, -2, 4096, 4096, 4096},
    };
    for (const GrowthCase& c : kCases) {
        SCOPED_TRACE(c.why);
        DynMemStream stream;
        ASSERT_EQ(stream.Open(c.initialSize, c.growth), kStatusOk);
        EXPECT_EQ(stream.GetSize(), c.initialSize);
        EXPECT_EQ(stream.GetAllocated(), c.firstAllocated);
        const std::vector<char> bytes(static_cast<std::size_t>(c.written), 'x');
        std::int64_t count = 0;
        ASSERT_EQ(stream.Seek(SeekMode::End, 0), kStatusOk);
        ASSERT_EQ(stream.Write(bytes.data(), c.written, count), kStatusOk);
        EXPECT_EQ(stream.GetAllocated(), c.allocated);
    }
}

TEST(DynMemStream, StaysAsItWasWhenMemoryRunsOut) {
    AUX::testing::AllocationWatch watch;
    {
        DynMemStream stream;
        watch.FailOnce(1);  // The store.
        EXPECT_EQ(stream.Open(0, -2), kStatusInsufficientMemory);
        watch.FailOnce(2);  // The block.
        EXPECT_EQ(stream.Open(0, -2), kStatusInsufficientMemory);
        EXPECT_FALSE(stream.IsOpen());
        EXPECT_EQ(stream.Open(-1, 0), kStatusInvalidArgument);
        EXPECT_EQ(stream.Open(0, INT64_MAX), kStatusInsufficientMemory);
        ASSERT_EQ(stream.Open(0, -2), kStatusOk);
        std::int64_t count = 0;
        ASSERT_EQ(stream.Write("abc", 3, count), kStatusOk);
        const std::vector<char> large(5000, 'x');
        DynMemStream source;
        ASSERT_EQ(source.Open(5000, 0), kStatusOk);

        watch.FailFrom(1);
        EXPECT_EQ(stream.Write(large.data(), 5000, count), kStatusInsufficientMemory);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(stream.SetSize(5000), kStatusInsufficientMemory);
        EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 5000, count),
                  kStatusInsufficientMemory);
        EXPECT_EQ(stream.Compact(), kStatusInsufficientMemory);
        watch.FailNone();
        for (const std::int64_t size : {INT64_MAX, INT64_MAX - 4096, INT64_MAX / 2 + 2}) {
            EXPECT_EQ(stream.SetSize(size), kStatusInsufficientMemory);
            EXPECT_EQ(stream.Write("x", size, count), kStatusInsufficientMemory);
            EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, size, count),
                      kStatusInsufficientMemory);
        }
        EXPECT_EQ(stream.GetSize(), 3);
        EXPECT_EQ(stream.GetPosition(), 3);
        EXPECT_EQ(stream.GetAllocated(), 4096);
        EXPECT_EQ(std::memcmp(stream.GetData(), "abc", 3), 0);
    }
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

TEST(DynMemStream, WritesItsOwnBytes) {
    DynMemStream stream;
    ASSERT_EQ(stream.Open(0, 0), kStatusOk);
    const std::vector<char> first(4000, 'x');
    std::int64_t count = 0;
    ASSERT_EQ(stream.Write(first.data(), 4000, count), kStatusOk);
    ASSERT_EQ(stream.Write(stream.GetData(), 4000, count), kStatusOk);  // The block moves.
    EXPECT_EQ(std::string(static_cast<const char*>(stream.GetData()), 8000),
              std::string(8000, 'x'));
}

TEST(DynMemStream, NewBytesAreZero) {
    DynMemStream stream;
    std::int64_t count = 0;
    ASSERT_EQ(stream.Open(0, 0), kStatusOk);
    ASSERT_EQ(stream.Write("secret", 6, count), kStatusOk);
    const std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_NE(clone, nullptr);
    ASSERT_EQ(clone->SetSize(1), kStatusOk);
    ASSERT_EQ(stream.Write("!", 1, count), kStatusOk);  // Behind what the clone cut off.
    EXPECT_EQ(std::memcmp(stream.GetData(), "s\0\0\0\0\0!", 7), 0);
    char few[] = {'a', 'b'};
    MemStream source;
    ASSERT_EQ(source.Open(few, 2, kAccessRead), kStatusOk);
    ASSERT_EQ(stream.SetSize(0), kStatusOk);
    EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 4, count), kStatusEndOfData);
    EXPECT_EQ(stream.GetSize(), 4);
    EXPECT_EQ(std::memcmp(stream.GetData(), "ab\0\0", 4), 0);
}

TEST(DynMemStream, CompactsToItsContent) {
    DynMemStream stream;
    std::int64_t count = 0;
    ASSERT_EQ(stream.Open(0, 0), kStatusOk);
    EXPECT_EQ(stream.Compact(), kStatusOk);
    EXPECT_EQ(stream.GetAllocated(), 4);
    ASSERT_EQ(stream.Write("abcdefg", 7, count), kStatusOk);
    EXPECT_EQ(stream.Compact(), kStatusOk);
    EXPECT_EQ(stream.GetAllocated(), 7);
    EXPECT_EQ(std::memcmp(stream.GetData(), "abcdefg", 7), 0);
    EXPECT_EQ(stream.SetAccess(kAccessRead | 8), kStatusOk);
    EXPECT_EQ(stream.GetAccess(), kAccessRead);
    EXPECT_EQ(stream.Write("h", 1, count), kStatusOk);
    EXPECT_EQ(stream.CopyFrom(stream, SeekMode::Start, 0, 1, count), kStatusInvalidAccessMode);
}

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
        EXPECT_EQ(stream.Read(buffer, 1, count), c.read);
        EXPECT_EQ(stream.ReadAt(buffer, 1, SeekMode::Start, 0, count), c.read);
        EXPECT_EQ(stream.Write(buffer, 1, count), c.write);
        EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 1, count), c.write);
    }
}

TEST(MemStream, BorrowsItsBytes) {
    char bytes[] = "abcd";
    AUX::testing::AllocationWatch watch;
    {
        MemStream stream;
        EXPECT_EQ(stream.Open(bytes, 4, 0), kStatusInvalidAccessMode);
        EXPECT_EQ(stream.Open(nullptr, 4, 1), kStatusInvalidArgument);
        EXPECT_EQ(stream.Open(bytes, -1, 1), kStatusInvalidArgument);
        watch.FailOnce(1);
        EXPECT_EQ(stream.Open(bytes, 4, 1), kStatusInsufficientMemory);
        ASSERT_EQ(stream.Open(bytes, 4, 3), kStatusOk);
        std::int64_t count = 0;
        EXPECT_EQ(stream.Write("xyz", 3, count), kStatusOk);
    }
    EXPECT_STREQ(bytes, "xyzd");
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

}  // namespace
