// The streams over memory.

#include "foundation/block_stream.h"

#include <gtest/gtest.h>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/mem_stream.h"

namespace {

using namespace AUX;

std::string ContentOf(Stream& stream) {
    return {static_cast<const char*>(stream.GetData()), static_cast<std::size_t>(stream.GetSize())};
}

TEST(DynMemStream, GrowsByItsRule) {
    const struct {
        const char* why;
        std::int64_t initialSize;
        std::int64_t growth;
        std::int64_t firstAllocated;
        std::int64_t written;
        std::int64_t allocated;
    } kCases[] = {
        {"first growth is to two pages", 0, -2, 4096, 5000, 8192},
        {"a larger need is rounded to pages", 0, -2, 4096, 9000, 12288},
        {"0 stands for -2", 8192, 0, 8192, 1, 12288},
        {"below -4 is -4", 8192, -9, 8192, 1, 10240},
        {"fixed steps", 0, 100, 100, 101, 200},
        {"the first size is rounded too", 150, 100, 200, 51, 300},
        {"what fits changes nothing", 0, -2, 4096, 4096, 4096},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        DynMemStream stream;
        ASSERT_EQ(stream.Open(c.initialSize, c.growth), kStatusOk);
        EXPECT_EQ(stream.GetSize(), c.initialSize);
        EXPECT_EQ(stream.GetAllocated(), c.firstAllocated);
        const std::string bytes(static_cast<std::size_t>(c.written), 'x');
        std::int64_t count = 0;
        ASSERT_EQ(stream.Seek(SeekMode::End, 0), kStatusOk);
        ASSERT_EQ(stream.Write(bytes.data(), c.written, count), kStatusOk);
        EXPECT_EQ(stream.GetAllocated(), c.allocated);
    }
}

TEST(DynMemStream, RefusesWhatNoMemoryHolds) {
    DynMemStream stream;
    std::int64_t count = 0;
    EXPECT_EQ(stream.Open(-1, 0), kStatusInvalidArgument);
    EXPECT_EQ(stream.Open(0, INT64_MAX), kStatusInsufficientMemory);
    EXPECT_FALSE(stream.IsOpen());
    ASSERT_EQ(stream.Open(0, -2), kStatusOk);
    ASSERT_EQ(stream.Write("abc", 3, count), kStatusOk);
    for (const std::int64_t size : {INT64_MAX, INT64_MAX - 4096, INT64_MAX / 2 + 2}) {
        EXPECT_EQ(stream.SetSize(size), kStatusInsufficientMemory);
        EXPECT_EQ(stream.Write("x", size, count), kStatusInsufficientMemory);
        EXPECT_EQ(stream.CopyFrom(stream, SeekMode::Start, 0, size, count),
                  kStatusInsufficientMemory);
    }
    EXPECT_EQ(ContentOf(stream), "abc");
}

TEST(DynMemStream, WritesItsOwnBytesAndZeros) {
    DynMemStream stream;
    std::int64_t count = 0;
    ASSERT_EQ(stream.Open(0, 0), kStatusOk);
    ASSERT_EQ(stream.Write(std::string(4000, 'x').data(), 4000, count), kStatusOk);
    ASSERT_EQ(stream.Write(stream.GetData(), 4000, count), kStatusOk);  // The block moves.
    EXPECT_EQ(ContentOf(stream), std::string(8000, 'x'));
    const std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_NE(clone, nullptr);
    ASSERT_EQ(stream.Seek(SeekMode::Start, 3), kStatusOk);
    ASSERT_EQ(clone->SetSize(1), kStatusOk);
    ASSERT_EQ(stream.Write("!", 1, count), kStatusOk);  // Behind what the clone cut off.
    EXPECT_EQ(ContentOf(stream), std::string("x\0\0!", 4));
    char few[] = {'a', 'b'};
    MemStream source;
    ASSERT_EQ(source.Open(few, 2, kAccessRead), kStatusOk);
    ASSERT_EQ(stream.SetSize(0), kStatusOk);
    EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 4, count), kStatusEndOfData);
    EXPECT_EQ(ContentOf(stream), std::string("ab\0\0", 4));
    EXPECT_EQ(stream.Compact(), kStatusOk);
    EXPECT_EQ(stream.GetAllocated(), 4);
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
    char bytes[] = "abcd";
    char buffer[2] = {};
    std::int64_t count = 0;
    MemStream stream;
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.access);
        MemStream source;
        ASSERT_EQ(stream.Open(bytes, 4, c.access), kStatusOk);
        ASSERT_EQ(source.Open(buffer, 2, kAccessRead), kStatusOk);
        EXPECT_EQ(stream.Read(buffer, 1, count), c.read);
        EXPECT_EQ(stream.ReadAt(buffer, 1, SeekMode::Start, 0, count), c.read);
        EXPECT_EQ(stream.Write("x", 1, count), c.write);
        EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 1, count), c.write);
    }
    EXPECT_EQ(stream.Open(bytes, 4, 0), kStatusInvalidAccessMode);
    EXPECT_FALSE(stream.IsOpen());
    EXPECT_EQ(stream.Open(nullptr, 4, 1), kStatusInvalidArgument);
    EXPECT_EQ(stream.Open(bytes, -1, 1), kStatusInvalidArgument);
}

}  // namespace
