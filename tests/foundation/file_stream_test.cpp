#include "foundation/file_stream.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "foundation/memory_testing.h"
#include "platform/sync.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using platform::testing::InjectedFault;

constexpr Status StatusOf(DWORD error) { return StatusFromSystemError(error); }

class FileStreamTest : public ::testing::Test {
protected:
    static Status Write(FileStream& stream, const std::string& text) {
        std::int64_t count = 0;
        const Status status =
            stream.Write(text.data(), static_cast<std::int64_t>(text.size()), count);
        EXPECT_TRUE(IsFailure(status) || count == static_cast<std::int64_t>(text.size()));
        return status;
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
    Status OpenOld(FileStream& stream, std::uint32_t access, DWORD share = FILE_SHARE_READ,
                   const WideString& name = TEXT("a.bin")) {
        return stream.Open(profile_.Path(name).c_str(), OPEN_EXISTING, access, share,
                           FILE_ATTRIBUTE_NORMAL);
    }

    test_support::TestProfile profile_;
};

TEST_F(FileStreamTest, OpensAndTellsFilesApart) {
    FileStream file;
    FileStream other;
    EXPECT_EQ(OpenOld(file, 0), kStatusInvalidAccessMode);
    EXPECT_EQ(OpenOld(file, 1), StatusOf(ERROR_FILE_NOT_FOUND));
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    ASSERT_EQ(Create(other, "hello", TEXT("b.bin")), kStatusOk);
    FileIdentity identity;
    FileIdentity second;
    ASSERT_TRUE(file.GetFileIdentity(identity));
    ASSERT_TRUE(other.GetFileIdentity(second));
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
    {
        FileStream reader;
        ASSERT_EQ(OpenOld(reader, kAccessRead), kStatusOk);
        EXPECT_EQ(file.ReopenReadWrite(), StatusOf(ERROR_SHARING_VIOLATION));
        EXPECT_EQ(Read(file), "hello");
    }
    AUX::testing::AllocationWatch watch;
    for (std::uint64_t n = 1; n <= 2; ++n) {
        watch.FailOnce(n);
        EXPECT_EQ(file.ReopenReadWrite(), kStatusInsufficientMemory);
        EXPECT_EQ(file.GetAccess(), kAccessRead);
    }
    EXPECT_EQ(file.ReopenReadWrite(), kStatusOk);
    EXPECT_EQ(file.GetAccess(), kAccessRead | kAccessWrite);
}

TEST_F(FileStreamTest, Renames) {
    FileStream file;
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    EXPECT_EQ(file.Rename(profile_.Path(TEXT("a.bin")).c_str()), kStatusOk);
    EXPECT_EQ(file.GetPosition(), 5);  // Nothing happened.
    {
        FileStream other;
        ASSERT_EQ(Create(other, "replaced", TEXT("b.bin")), kStatusOk);
    }
    EXPECT_EQ(file.Rename(profile_.Path(TEXT("b.bin")).c_str()), kStatusOk);
    EXPECT_FALSE(test_support::Exists(profile_.Path(TEXT("a.bin"))));
    EXPECT_EQ(Read(file), "hello");
    EXPECT_EQ(file.Rename(profile_.Path(TEXT("none\\c.bin")).c_str()),
              StatusOf(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(Read(file), "hello");
    AUX::testing::AllocationWatch watch;
    for (std::uint64_t n = 1; n <= 2; ++n) {
        watch.FailOnce(n);
        EXPECT_EQ(file.Rename(profile_.Path(TEXT("d.bin")).c_str()), kStatusInsufficientMemory);
        EXPECT_EQ(Read(file), "hello");
    }
    if (!platform::testing::kOwnsTheSystem) return;
    InjectedFault held("MoveFileExW", 1, ERROR_SHARING_VIOLATION);
    EXPECT_EQ(file.Rename(profile_.Path(TEXT("c.bin")).c_str()), kStatusOk);
    EXPECT_TRUE(held.HasFired());
    EXPECT_EQ(file.GetAccess(), kAccessRead | kAccessWrite);
}

TEST_F(FileStreamTest, ReadsOnAfterALostNetworkPath) {
    if (!platform::testing::kOwnsTheSystem)
        GTEST_SKIP() << "the system's calls cannot be made to fail";
    FileStream file;
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    ASSERT_EQ(file.Close(), kStatusOk);
    ASSERT_EQ(OpenOld(file, kAccessRead), kStatusOk);
    char byte = 0;
    std::int64_t count = 0;
    FileStore& store = *file.GetStore();
    for (const DWORD error : {53u, 59u}) {
        SCOPED_TRACE(error);
        // Within half a second nothing is opened anew: the read is only tried again.
        store.lastReopen = GetTickCount();
        const HANDLE before = store.handle.Get();
        {
            InjectedFault lost("ReadFile", 1, error);
            EXPECT_EQ(file.Read(&byte, 1, count), kStatusOk);
            EXPECT_TRUE(lost.HasFired());
        }
        EXPECT_EQ(store.handle.Get(), before);
        // Later it is, once: the time of reopening says so.
        store.lastReopen = GetTickCount() - 1000;
        const std::uint32_t old = store.lastReopen;
        {
            InjectedFault lost("ReadFile", 1, error);
            EXPECT_EQ(file.Read(&byte, 1, count), kStatusOk);
        }
        EXPECT_NE(store.lastReopen, old);
    }
    EXPECT_EQ(file.GetPosition(), 4);
    for (const DWORD error : {52u, 60u, 5u}) {
        InjectedFault other("ReadFile", 1, error);
        EXPECT_EQ(file.Read(&byte, 1, count), StatusOf(error));
        EXPECT_EQ(count, 0);
    }
    // The path stays lost when the file is opened anew.
    store.lastReopen = GetTickCount() - 1000;
    {
        InjectedFault lost("ReadFile", 1, 53);
        store.lastWriteTime += 1;
        EXPECT_EQ(file.Read(&byte, 1, count), kStatusFileChanged);
        EXPECT_FALSE(file.IsOpen());
    }
    EXPECT_EQ(file.Read(&byte, 1, count), kStatusNotInitialized);
}

TEST_F(FileStreamTest, KeepsWhatReachedTheFile) {
    if (!platform::testing::kOwnsTheSystem)
        GTEST_SKIP() << "the system's calls cannot be made to fail";
    FileStream file;
    std::int64_t count = 0;
    ASSERT_EQ(Create(file, "hello"), kStatusOk);
    {
        InjectedFault full("WriteFile", 1, ERROR_DISK_FULL);
        EXPECT_EQ(Write(file, " you"), StatusOf(ERROR_DISK_FULL));
    }
    for (const char* call : {"SetEndOfFile", "SetFilePointerEx"}) {
        InjectedFault refused(call, 1, ERROR_DISK_FULL);
        EXPECT_EQ(file.SetSize(100), StatusOf(ERROR_DISK_FULL));
        EXPECT_EQ(file.GetSize(), 5);
    }
    {
        InjectedFault refused("CreateEventW", 1, ERROR_OUTOFMEMORY);
        Status status = kStatusOk;
        EXPECT_EQ(file.Clone(&status), nullptr);
        EXPECT_EQ(status, StatusOf(ERROR_OUTOFMEMORY));
    }
    {
        InjectedFault refused("SetEndOfFile", 1, ERROR_DISK_FULL);
        EXPECT_EQ(file.Close(), StatusOf(ERROR_DISK_FULL));
        EXPECT_FALSE(file.IsOpen());
    }
    AUX::testing::AllocationWatch watch;
    for (std::uint64_t n = 1; n < 10; ++n) {
        FileStream other;
        watch.FailOnce(n);
        const Status status = OpenOld(other, 3);
        EXPECT_EQ(other.IsOpen(), status == kStatusOk);
        if (status == kStatusOk) {
            EXPECT_EQ(other.CopyFrom(other, SeekMode::Start, 0, 1, count),
                      n == 3 ? kStatusInsufficientMemory : kStatusOk);
        }
    }
    ASSERT_EQ(OpenOld(file, kAccessRead), kStatusOk);
    EXPECT_EQ(Read(file), "hello");
}

TEST_F(FileStreamTest, ClonesReadAtTheSameTime) {
    constexpr int kThreads = 4;
    constexpr int kBlock = 1000;
    FileStream file;
    ASSERT_EQ(Create(file, {}), kStatusOk);
    for (int i = 0; i < kThreads; ++i)
        ASSERT_EQ(Write(file, std::string(kBlock, static_cast<char>('a' + i))), kStatusOk);
    std::vector<std::unique_ptr<Stream>> clones;
    for (int i = 0; i < kThreads; ++i) clones.push_back(file.Clone());
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&clones, i] {
            Stream& stream = *clones[static_cast<std::size_t>(i)];
            for (int round = 0; round < 20; ++round) {
                char buffer[kBlock];
                std::int64_t count = 0;
                EXPECT_EQ(stream.Seek(SeekMode::Start, i * kBlock), kStatusOk);
                EXPECT_EQ(stream.Read(buffer, kBlock, count), kStatusOk);
                EXPECT_EQ(std::string(buffer, kBlock),
                          std::string(kBlock, static_cast<char>('a' + i)));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(FileStreamTest, CopiesMoreThanItsBuffer) {
    FileStream source;
    FileStream file;
    const std::string text(10000, 'x');
    std::int64_t count = 0;
    ASSERT_EQ(Create(source, text, TEXT("b.bin")), kStatusOk);
    ASSERT_EQ(Create(file, "12"), kStatusOk);
    EXPECT_EQ(file.CopyFrom(source, SeekMode::Start, 1000, 9000, count), kStatusOk);
    EXPECT_EQ(count, 9000);
    EXPECT_EQ(file.CopyFrom(source, SeekMode::End, -10, 20, count), kStatusEndOfData);
    EXPECT_EQ(count, 10);
    EXPECT_EQ(file.GetSize(), 9012);
    EXPECT_EQ(file.CompareRange(9010, 2, source, 0), 1);
}

}  // namespace
