#include "foundation/file_stream.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "platform/sync.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using platform::testing::InjectedFault;
using platform::testing::kOwnsTheSystem;

constexpr Status StatusOf(DWORD error) { return StatusFromSystemError(error); }

class FileStreamTest : public ::testing::Test {
protected:
    static Status Write(FileStream& stream, const std::string& text) {
        std::int64_t count = 0;
        return stream.Write(text.data(), static_cast<std::int64_t>(text.size()), count);
    }
    static std::string Read(FileStream& stream) {
        char buffer[64] = {};
        std::int64_t count = 0;
        EXPECT_EQ(stream.ReadAt(buffer, sizeof buffer, SeekMode::Start, 0, count), kStatusOk);
        return {buffer, static_cast<std::size_t>(count)};
    }
    Status Create(FileStream& stream, const std::string& text,
                  const WideString& name = TEXT("a.bin")) {
        const Status status = stream.Open(profile_.Path(name).c_str(), CREATE_ALWAYS, 3, 1, 128);
        return IsFailure(status) ? status : Write(stream, text);
    }
    Status OpenOld(FileStream& stream, std::uint32_t access) {
        return stream.Open(profile_.Path(TEXT("a.bin")).c_str(), OPEN_EXISTING, access,
                           FILE_SHARE_READ, FILE_ATTRIBUTE_NORMAL);
    }
    Status Rename(FileStream& stream, const WideString& name) {
        return stream.Rename(profile_.Path(name).c_str());
    }

    test_support::TestProfile profile_;
};

TEST_F(FileStreamTest, OpensAndTellsFilesApart) {
    FileStream file;
    FileStream other;
    EXPECT_EQ(OpenOld(file, 0), kStatusInvalidAccessMode);
    EXPECT_EQ(OpenOld(file, 1), StatusOf(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(file.ReleaseMapping(), kStatusNotInitialized);
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    ASSERT_EQ(Create(other, "hello", TEXT("b.bin")), kStatusOk);
    FileIdentity identity;
    FileIdentity second;
    ASSERT_TRUE(file.GetFileIdentity(identity) && other.GetFileIdentity(second));
    EXPECT_FALSE(identity == second);
    // Its own path, which it forgets as it closes; were it not closed, none could have it as well.
    ASSERT_EQ(file.Open(file.GetStore()->path.Text(), OPEN_EXISTING, kAccessWrite, 0, 128),
              kStatusOk);
    ASSERT_TRUE(file.GetFileIdentity(second));
    EXPECT_TRUE(identity == second);
    EXPECT_EQ(Read(file), "hello");
    ASSERT_EQ(OpenOld(file, kAccessRead), kStatusOk);
    EXPECT_EQ(Write(file, "x"), kStatusInvalidAccessMode);
    EXPECT_EQ(file.SetSize(0), kStatusInvalidAccessMode);
    if (kOwnsTheSystem) {
        const InjectedFault older("GetFileInformationByHandleEx", 1, ERROR_INVALID_PARAMETER);
        ASSERT_TRUE(file.GetFileIdentity(second));
        EXPECT_EQ(std::string(second.fileId + 8, second.fileId + 16),
                  std::string("\0\0\0\0\5\0\0\0", 8));
    }
    EXPECT_EQ(file.Close(), kStatusOk);
    EXPECT_EQ(file.GetStore()->Close(), 1);
}

TEST_F(FileStreamTest, ReopensWithOtherAccess) {
    FileStream file;
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    EXPECT_EQ(file.ReopenReadWrite(), kStatusOk);
    EXPECT_EQ(file.GetPosition(), 5);  // Nothing happened.
    EXPECT_EQ(file.ReopenReadOnly(), kStatusOk);
    EXPECT_EQ(file.GetAccess(), kAccessRead);
    EXPECT_EQ(file.GetPosition(), 0);
    FileStream reader;
    ASSERT_EQ(OpenOld(reader, kAccessRead), kStatusOk);
    EXPECT_EQ(file.ReopenReadWrite(), StatusOf(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(Read(file), "hello");
    if (!kOwnsTheSystem) return;
    const InjectedFault gone("CreateFileW", 1, ERROR_FILE_NOT_FOUND);
    const InjectedFault goneToo("CreateFileW", 2, ERROR_ACCESS_DENIED);
    EXPECT_EQ(file.ReopenReadWrite(), StatusOf(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(FileStreamTest, Renames) {
    FileStream file;
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    EXPECT_EQ(Rename(file, TEXT("a.bin")), kStatusOk);
    EXPECT_EQ(file.GetPosition(), 5);  // Nothing happened.
    FileStream other;
    ASSERT_EQ(Create(other, "replaced", TEXT("b.bin")), kStatusOk);
    EXPECT_EQ(other.Close(), kStatusOk);
    EXPECT_EQ(Rename(file, TEXT("b.bin")), kStatusOk);
    EXPECT_FALSE(test_support::Exists(profile_.Path(TEXT("a.bin"))));
    EXPECT_EQ(Rename(file, TEXT("none\\c.bin")), StatusOf(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(Read(file), "hello");
    EXPECT_EQ(file.GetAccess(), kAccessRead | kAccessWrite);
}

TEST_F(FileStreamTest, RenamesAtTheSixthAttemptAtTheLatest) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "the system's calls cannot be made to fail";
    const struct {
        DWORD error;
        unsigned failures;
        unsigned attempts;
        unsigned sleeps;
        Status result;
    } kCases[] = {
        {ERROR_SHARING_VIOLATION, 5, 5, 5, kStatusOk},
        {ERROR_SHARING_VIOLATION, 7, 6, 5, StatusOf(ERROR_SHARING_VIOLATION)},
        {ERROR_ACCESS_DENIED, 7, 6, 5, StatusOf(ERROR_ACCESS_DENIED)},
        {ERROR_DISK_FULL, 7, 1, 0, StatusOf(ERROR_DISK_FULL)},
        {NO_ERROR, 7, 1, 0, kStatusFailedToInitialize},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.error);
        FileStream file;
        ASSERT_EQ(Create(file, "hello"), kStatusOk);
        const InjectedFault awake("Sleep", 1, 0, 100);
        const InjectedFault held("MoveFileExW", 1, c.error, c.failures);
        EXPECT_EQ(Rename(file, TEXT("b.bin")), c.result);
        EXPECT_EQ(held.Times(), c.attempts);
        EXPECT_EQ(awake.Times(), c.sleeps);
        EXPECT_EQ(Read(file), "hello");
        EXPECT_EQ(test_support::Exists(profile_.Path(TEXT("a.bin"))), IsFailure(c.result));
        EXPECT_EQ(file.Close(), kStatusOk);
    }
}

TEST_F(FileStreamTest, ReadsOnAfterALostNetworkPath) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "the system's calls cannot be made to fail";
    const struct {
        const char* why;
        DWORD error;
        unsigned failures;
        DWORD sinceReopen;  // milliseconds
        Status result;
        bool isReopened;
        bool hasChanged;
    } kCases[] = {
        {"too soon: only tried again", 53, 1, 0, kStatusOk, false, false},
        {"the last error of its kind", 59, 3, 0, kStatusOk, false, false},
        {"opened anew", 53, 1, 1000, kStatusOk, true, false},
        {"opened anew", 59, 1, 1000, kStatusOk, true, false},
        {"lost again", 55, 2, 1000, static_cast<Status>(0xC2021001), true, false},
        {"another file", 53, 1, 1000, static_cast<Status>(0x8202001E), false, true},
        {"no lost path", 52, 1, 1000, StatusOf(52), false, false},
        {"no lost path", 60, 1, 1000, StatusOf(60), false, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        FileStream file;
        ASSERT_EQ(Create(file, "hello"), kStatusOk);
        ASSERT_EQ(OpenOld(file, kAccessRead), kStatusOk);
        const std::uint32_t before = GetTickCount() - c.sinceReopen;
        file.GetStore()->lastReopen = before;
        file.GetStore()->lastWriteTime += c.hasChanged;
        const InjectedFault lost("ReadFile", 1, c.error, c.failures);
        char bytes[3] = {};
        std::int64_t count = 7;
        EXPECT_EQ(file.Read(bytes, 3, count), c.result);
        EXPECT_EQ(lost.Times(), c.failures);
        EXPECT_EQ(std::string(bytes, 3), c.result ? std::string(3, 0) : "hel");
        EXPECT_EQ(count, c.result ? 0 : 3);
        EXPECT_EQ(file.GetStore()->lastReopen != before, c.isReopened);
        EXPECT_EQ(file.IsOpen(), !c.hasChanged);
        EXPECT_EQ(file.GetAccess(), c.hasChanged ? 0 : kAccessRead);
    }
}

TEST_F(FileStreamTest, ClonesReadAtTheSameTime) {
    constexpr std::int64_t kBlock = 1000;
    FileStream file;
    ASSERT_EQ(Create(file, std::string(kBlock, 'a') + std::string(kBlock, 'b')), kStatusOk);
    const auto read = [](Stream& stream, std::int64_t start, char content) {
        for (int round = 0; round < 20; ++round) {
            std::string buffer(kBlock, '\0');
            std::int64_t count = 0;
            EXPECT_EQ(stream.Seek(SeekMode::Start, start), kStatusOk);
            EXPECT_EQ(stream.Read(buffer.data(), kBlock, count), kStatusOk);
            EXPECT_EQ(buffer, std::string(kBlock, content));
        }
    };
    const std::unique_ptr<Stream> clone = file.Clone();
    std::thread reader([&] { read(*clone, kBlock, 'b'); });
    read(file, 0, 'a');
    reader.join();
}

}  // namespace
