#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/temp_mapped_file_stream.h"
#include "platform/sync.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using platform::testing::InjectedFault;
using platform::testing::kOwnsTheSystem;

constexpr std::int64_t kGranule = 65536;
constexpr Status StatusOf(DWORD error) { return StatusFromSystemError(error); }

/// Shows its view.
class Shown : public MappedFileStream {
public:
    using FileView::view, FileView::viewBase, FileView::viewLeft, FileView::viewLength;
};

class MappedFileTest : public ::testing::Test {
protected:
    Status OpenAs(FileStream& stream, std::uint32_t access, DWORD share = FILE_SHARE_READ) {
        return stream.Open(path_.c_str(), OPEN_EXISTING, access, share, FILE_ATTRIBUTE_NORMAL);
    }
    void Make(const std::string& content) {
        ASSERT_TRUE(test_support::WriteWholeFile(path_, content));
    }
    static std::string Content(std::size_t size) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>('a' + i / 100 % 26);
        return content;
    }
    static Status ReadByte(Stream& stream, char& byte) {
        std::int64_t count = 0;
        return stream.Read(&byte, 1, count);
    }
    std::uintmax_t SizeOnDisk() { return std::filesystem::file_size(File()); }
    std::filesystem::path File() { return test_support::LocalPath(path_); }

    const test_support::TestProfile profile_;
    const WideString path_ = profile_.Path(TEXT("a.bin"));
};

TEST_F(MappedFileTest, SlidesItsViewByTheRule) {
    const struct {
        std::int64_t size;
        std::uint32_t access;
        std::int64_t place;
        std::int64_t allocated;
        std::int64_t base;
        std::uint32_t length;
        std::uint32_t left;
    } kCases[] = {{100, 1, 30, 100, 0, 100, 70},
                  {100, 3, 100, kGranule, 0, 65536, 65436},
                  {0, 3, 0, kGranule, 0, 65536, 65536},
                  {kGranule, 3, 65536, 2 * kGranule, 0, 131072, 65536},
                  {1'000'000, 1, 70000, 1'000'000, 65536, 131072, 126608},
                  {131072, 1, 70000, 131072, 0, 131072, 61072},
                  {131072, 1, 131072, 131072, 65536, 65536, 0},
                  {1'000'000, 1, 999'999, 1'000'000, 917504, 82496, 1}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        Make(Content(static_cast<std::size_t>(c.size)));
        Shown stream;
        ASSERT_EQ(OpenAs(stream, c.access), kStatusOk);
        ASSERT_EQ(stream.Seek(SeekMode::Start, c.place), kStatusOk);
        EXPECT_EQ(stream.GetAllocated(), c.allocated);
        EXPECT_EQ(stream.viewBase, c.base);
        EXPECT_EQ(stream.viewLength, c.length);
        EXPECT_EQ(stream.viewLeft, c.left);
        EXPECT_FALSE(stream.view);
        EXPECT_EQ(SizeOnDisk(), static_cast<std::uintmax_t>(c.allocated));
        EXPECT_EQ(stream.Close(), kStatusOk);
        EXPECT_EQ(SizeOnDisk(), static_cast<std::uintmax_t>(c.size));
    }
}

TEST_F(MappedFileTest, KeepsTheViewInsideAGranule) {
    Make(Content(300'000));
    Shown stream;
    ASSERT_EQ(OpenAs(stream, kAccessRead), kStatusOk);
    char byte = 0;
    ASSERT_EQ(ReadByte(stream, byte), kStatusOk);
    const struct {
        std::int64_t place;
        bool isKept;
    } kCases[] = {{65535, true}, {0, true}, {65536, false}, {131071, false}, {131072, false}};
    for (const auto& c : kCases) {
        ASSERT_EQ(stream.Seek(SeekMode::Start, c.place), kStatusOk);
        EXPECT_EQ(static_cast<bool>(stream.view), c.isKept) << c.place;
    }
    ASSERT_EQ(ReadByte(stream, byte), kStatusOk);
    EXPECT_EQ(stream.ReleaseView(), kStatusOk);
    EXPECT_FALSE(stream.view);
    EXPECT_EQ(stream.GetPosition(), 131073);
    ASSERT_EQ(stream.Close(), kStatusOk);
    Make("");
    ASSERT_EQ(OpenAs(stream, kAccessRead), kStatusOk);
    EXPECT_EQ(ReadByte(stream, byte), kStatusEndOfData);
    EXPECT_TRUE(stream.IsOpen() && !stream.view && stream.GetAllocated() == 0);
}

TEST_F(MappedFileTest, OnlyReadsAReadOnlyFile) {
    Make("hello");
    MappedFileStream stream;
    ASSERT_EQ(OpenAs(stream, kAccessRead), kStatusOk);
    std::int64_t count = 0;
    for (const Status status : {stream.Write("x", 1, count), stream.SetSize(1), stream.Compact(),
                                stream.CopyFrom(stream, SeekMode::Start, 0, 1, count)}) {
        EXPECT_EQ(status, kStatusInvalidAccessMode);
    }
    EXPECT_EQ(stream.ReopenReadWrite(), kStatusOk);
    EXPECT_EQ(stream.Write("J", 1, count), kStatusOk);
    EXPECT_EQ(stream.Flush(), kStatusOk);
    EXPECT_EQ(stream.Rename(profile_.Path(TEXT("b.bin")).c_str()), kStatusOk);
    EXPECT_EQ(stream.ReopenReadOnly(), kStatusOk);
    char bytes[6] = {};
    EXPECT_EQ(stream.Read(bytes, 6, count), kStatusOk);
    EXPECT_STREQ(bytes, "Jello");
    // Without its mapping it is closed, but it has a file to close.
    EXPECT_EQ(stream.ReopenReadWrite(), kStatusOk);
    EXPECT_EQ(stream.ReleaseMapping(), kStatusOk);
    EXPECT_FALSE(stream.IsOpen());
    EXPECT_EQ(stream.Detach(), kStatusOk);
    EXPECT_EQ(test_support::ReadWholeFile(profile_.Path(TEXT("b.bin"))), "Jello");
}

TEST_F(MappedFileTest, ReachesAllOfALargeFile) {
    constexpr std::int64_t kSize = 5LL << 30;
    FileStream plain;
    std::int64_t count = 0;
    ASSERT_EQ(plain.Open(path_.c_str(), CREATE_ALWAYS, 3, 0, 128), kStatusOk);
    ASSERT_EQ(plain.SetSize(kSize), kStatusOk);
    ASSERT_EQ(plain.Close(), kStatusOk);
    MappedFileStream stream;
    ASSERT_EQ(OpenAs(stream, 3), kStatusOk);
    for (const std::int64_t place : {kSize - 3, kSize / 2 - 3, std::int64_t{kGranule - 3}}) {
        ASSERT_EQ(stream.Seek(SeekMode::Start, place), kStatusOk);
        ASSERT_EQ(stream.Write("large", 5, count), kStatusOk);
    }
    EXPECT_EQ(stream.Close(), kStatusOk);
    ASSERT_EQ(OpenAs(plain, kAccessRead), kStatusOk);
    EXPECT_EQ(plain.GetSize(), kSize + 2);
    for (const std::int64_t place : {kSize - 3, kSize / 2 - 3, std::int64_t{kGranule - 3}}) {
        char bytes[6] = {};
        EXPECT_EQ(plain.ReadAt(bytes, 5, SeekMode::Start, place, count), kStatusOk);
        EXPECT_STREQ(bytes, "large");
    }
}

TEST_F(MappedFileTest, TellsThatItsFileWasCut) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "Windows cuts no file that is mapped";
    const std::string content = Content(300'000);
    std::string bytes(content.size(), '\0');
    const auto length = static_cast<std::int64_t>(content.size());
    std::int64_t count = 0;
    MappedFileStream stream;
    // Reading meets a file of another size.
    Make(content);
    ASSERT_EQ(OpenAs(stream, kAccessRead), kStatusOk);
    std::filesystem::resize_file(File(), 100'000);
    stream.GetStore()->lastReopen -= 1000;
    EXPECT_EQ(stream.Read(bytes.data(), length, count), static_cast<Status>(0x8202001E));
    EXPECT_EQ(bytes.substr(0, 65536), content.substr(0, 65536));
    EXPECT_FALSE(stream.IsOpen());
    // Reading finds the same file again, and goes on where it was.
    ASSERT_EQ(stream.Close(), kStatusOk);
    Make(content);
    ASSERT_EQ(OpenAs(stream, kAccessRead), kStatusOk);
    std::filesystem::rename(File(), File().string() + ".old");
    Make(content);
    std::filesystem::last_write_time(File(),
                                     std::filesystem::last_write_time(File().string() + ".old"));
    std::filesystem::resize_file(File().string() + ".old", 0);
    stream.GetStore()->lastReopen -= 1000;
    ASSERT_EQ(stream.Seek(SeekMode::Start, 5), kStatusOk);
    EXPECT_EQ(stream.Read(bytes.data(), length, count), kStatusOk);
    EXPECT_TRUE(bytes.substr(0, static_cast<std::size_t>(count)) == content.substr(5));
    // Writing does not try again, wherever the bytes come from.
    DynMemStream memory;
    MappedFileStream mapped;
    FileStream file;
    const WideString other = profile_.Path(TEXT("b.bin"));
    ASSERT_TRUE(test_support::WriteWholeFile(other, content));
    ASSERT_EQ(memory.Open(0, 0), kStatusOk);
    ASSERT_EQ(memory.Write(content.data(), length, count), kStatusOk);
    ASSERT_EQ(mapped.Open(other.c_str(), OPEN_EXISTING, 1, 1, 128), kStatusOk);
    ASSERT_EQ(file.Open(other.c_str(), OPEN_EXISTING, 1, 1, 128), kStatusOk);
    for (Stream* source : {static_cast<Stream*>(nullptr), static_cast<Stream*>(&memory),
                           static_cast<Stream*>(&mapped), static_cast<Stream*>(&file)}) {
        (void)stream.Close();
        Make(content);
        ASSERT_EQ(OpenAs(stream, 3), kStatusOk);
        std::filesystem::resize_file(File(), 4096);
        const Status status = source ? stream.CopyFrom(*source, SeekMode::Start, 0, 200'000, count)
                                     : stream.Write(content.data(), 200'000, count);
        EXPECT_EQ(status, static_cast<Status>(0xC2021002));
        EXPECT_EQ(stream.GetPosition(), count);
        EXPECT_TRUE(mapped.IsOpen());
    }
    EXPECT_EQ(mapped.Read(reinterpret_cast<char*>(64), 1, count), StatusOf(ERROR_NOACCESS));
    EXPECT_EQ(stream.Write(reinterpret_cast<char*>(64), 1, count), StatusOf(ERROR_NOACCESS));
}

TEST_F(MappedFileTest, StaysAsItWasWhenItCannotGrowOrShrink) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "the system's calls cannot be made to fail";
    const std::string content = Content(100'000);
    const struct {
        const char* call;
        unsigned nth;
        unsigned count;
        bool isCompact;
        bool isOpen;
    } kCases[] = {
        {"CreateFileMappingW", 1, 1, false, true}, {"CreateFileMappingW", 1, 2, false, false},
        {"CreateFileMappingW", 1, 1, true, true},  {"CreateFileMappingW", 1, 2, true, false},
        {"SetEndOfFile", 1, 1, true, true},        {"FlushFileBuffers", 1, 1, true, true},
        {"MapViewOfFile", 1, 1, false, true}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        Make(content);
        MappedFileStream stream;
        ASSERT_EQ(OpenAs(stream, 3), kStatusOk);
        const std::int64_t allocated = stream.GetAllocated();
        std::int64_t count = 0;
        ASSERT_EQ(stream.Seek(SeekMode::End, 0), kStatusOk);
        {
            const InjectedFault full(c.call, c.nth, ERROR_DISK_FULL, c.count);
            EXPECT_EQ(c.isCompact ? stream.Compact() : stream.Write(content.data(), 50'000, count),
                      StatusOf(ERROR_DISK_FULL));
            EXPECT_EQ(full.Times(), c.count);
        }
        EXPECT_EQ(count, 0);
        EXPECT_EQ(stream.IsOpen(), c.isOpen);
        EXPECT_EQ(stream.GetSize(), c.isOpen ? 100'000 : 0);
        const bool isSame = stream.GetAllocated() == allocated;
        EXPECT_TRUE(!c.isOpen || isSame || stream.GetPosition() == 100'000);
        EXPECT_TRUE(!c.isOpen || stream.Write("!", 1, count) == kStatusOk);
        EXPECT_EQ(stream.Close(), kStatusOk);
        EXPECT_TRUE(test_support::ReadWholeFile(path_) == (c.isOpen ? content + '!' : content));
    }
}

TEST_F(MappedFileTest, TemporaryFilesGoWhenTheyAreClosed) {
    const WideString folder = profile_.Path(TEXT("t\\"));
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    for (const bool deletes : {true, false}) {
        SCOPED_TRACE(deletes);
        TempMappedFileStream stream;
        std::int64_t count = 0;
        ASSERT_EQ(stream.OpenTemp(TEXT("abc"), folder.c_str(), deletes), kStatusOk);
        ASSERT_EQ(stream.Write("x", 1, count), kStatusOk);
        ASSERT_EQ(test_support::ListFolder(folder).size(), 1u);
        EXPECT_EQ(test_support::ListFolder(folder)[0].substr(0, 3), TEXT("abc"));
        {
            const std::unique_ptr<Stream> clone = stream.Clone();
            ASSERT_NE(clone, nullptr);
            EXPECT_EQ(stream.Rename((folder + TEXT("new")).c_str()),
                      deletes ? kStatusOk : kStatusUnsupportedOperation);
            EXPECT_EQ(stream.ReopenReadOnly(), deletes ? kStatusOk : kStatusUnsupportedOperation);
            EXPECT_EQ(clone->GetSize(), 1);
        }
        EXPECT_EQ(stream.Close(), kStatusOk);
        EXPECT_TRUE(test_support::ListFolder(folder).empty());
        // Nothing of that holds for the next file.
        Make("mine");
        ASSERT_EQ(OpenAs(stream, 3), kStatusOk);
        EXPECT_EQ(stream.Close(), kStatusOk);
        EXPECT_EQ(test_support::ReadWholeFile(path_), "mine");
    }
    TempMappedFileStream kept;
    std::int64_t count = 0;
    ASSERT_EQ(kept.OpenTemp(nullptr, folder.c_str(), true), kStatusOk);
    ASSERT_EQ(kept.Write("kept", 4, count), kStatusOk);
    kept.GetStore()->keep = true;
    EXPECT_EQ(kept.Detach(), kStatusOk);
    ASSERT_EQ(test_support::ListFolder(folder).size(), 1u);
    EXPECT_EQ(test_support::ReadWholeFile(folder + test_support::ListFolder(folder)[0]), "kept");
    EXPECT_TRUE(IsFailure(kept.OpenTemp(nullptr, profile_.Path(TEXT("none\\")).c_str(), true)));
}

}  // namespace
