#include "foundation/file_stream.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "platform/files.h"

namespace {

using namespace AUX;

class FileStreamTest : public testing::Test {
protected:
    FileStreamTest() {
        WCHAR folder[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, TEXT("str"), 0, path);
    }
    ~FileStreamTest() override { DeleteFileW(path); }

    WCHAR path[MAX_PATH] = {};
};

TEST_F(FileStreamTest, WritesABlockAndKeepsIt) {
    FileStream file;
    std::int64_t count = 0;
    ASSERT_EQ(file.Open(path, 2, 3, 1, 128), kStatusOk);
    EXPECT_EQ(file.Write("hello", 5, count), kStatusOk);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(file.GetSize(), 5);
    EXPECT_EQ(file.Close(), kStatusOk);
    ASSERT_EQ(file.Open(path, OPEN_EXISTING, kAccessRead, FILE_SHARE_READ, FILE_ATTRIBUTE_NORMAL),
              kStatusOk);
    char buffer[16] = {};
    EXPECT_EQ(file.Read(buffer, 16, count), kStatusOk);
    EXPECT_EQ(std::string(buffer), "hello");
    EXPECT_EQ(file.Read(buffer, 16, count), kStatusEndOfData);
}

}  // namespace
