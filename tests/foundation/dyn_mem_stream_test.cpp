#include "foundation/dyn_mem_stream.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

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
        {"by the whole", 8192, -1, 8192, 1, 16384},
        {"by a quarter", 8192, -4, 8192, 1, 10240},
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
        EXPECT_EQ(count, c.written);
        EXPECT_EQ(stream.GetSize(), c.initialSize + c.written);
        EXPECT_EQ(stream.GetAllocated(), c.allocated);
    }
}

}  // namespace
