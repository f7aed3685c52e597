// Scripts of the library's operations, walked through with each request for memory and each call
// of the system failing in turn.

#include "tests/support/fault_walk.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/file_removal.h"
#include "foundation/file_stream.h"
#include "foundation/mem_stream.h"
#include "foundation/paths.h"
#include "foundation/temp_location.h"
#include "foundation/temp_mapped_file_stream.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using HasFailed = std::function<bool()>;

void UseMemory(const WideString&, const HasFailed& hasFailed) {
    DynMemStream stream;
    MemStream view;
    std::string model;
    std::int64_t count = 0;
    char few[] = "few";
    (void)stream.Open(0, -2);
    (void)view.Open(few, 3, 3);
    EXPECT_EQ(stream.IsOpen() && view.IsOpen(), !hasFailed());
    if (hasFailed()) return;
    const auto check = [&] {
        const auto size = static_cast<std::int64_t>(model.size());
        EXPECT_EQ(stream.GetSize(), size);
        EXPECT_EQ(stream.GetPosition(), size);
        EXPECT_EQ(std::string(static_cast<const char*>(stream.GetData()), model.size()), model);
    };
    const std::string large(5000, 'x');
    if (!IsFailure(stream.Write(large.data(), 5000, count))) model += large;
    check();
    if (!IsFailure(stream.CopyFrom(stream, SeekMode::Start, 0, stream.GetSize(), count))) {
        model += model;
    }
    check();
    if (!IsFailure(stream.SetSize(stream.GetSize() + 9000))) model += std::string(9000, '\0');
    (void)stream.Seek(SeekMode::End, 0);
    check();
    if (!IsFailure(stream.CopyFrom(view, SeekMode::Start, 0, 3, count))) model += few;
    (void)stream.Compact();
    Status cloned = kStatusOk;
    const bool isCloned = stream.Clone(&cloned) != nullptr;
    EXPECT_EQ(cloned, isCloned ? kStatusOk : kStatusInsufficientMemory);
    check();
}

void UseFile(const WideString& path, const HasFailed& hasFailed) {
    const WideString newPath = path + TEXT(".new");
    FileStream file;
    std::string model;
    std::int64_t count = 0;
    const Status opened = file.Open(path.c_str(), CREATE_ALWAYS, 3, FILE_SHARE_READ, 128);
    EXPECT_EQ(file.IsOpen(), !IsFailure(opened));
    if (IsFailure(opened)) return;
    (void)file.Write("hello world", 11, count);
    model += std::string("hello world", static_cast<std::size_t>(count));
    if (!IsFailure(file.SetSize(5))) model.resize(5);
    EXPECT_EQ(file.GetSize(), static_cast<std::int64_t>(model.size()));
    (void)file.Seek(SeekMode::End, 0);
    (void)file.CopyFrom(file, SeekMode::Start, 0, 3, count);
    model += model.substr(0, static_cast<std::size_t>(count));
    std::string large(9000, 'x');  // More than a copy's buffer.
    MemStream view;
    if (IsFailure(view.Open(large.data(), 9000, 3))) return;
    (void)file.CopyFrom(view, SeekMode::Start, 0, 9000, count);
    model += large.substr(0, static_cast<std::size_t>(count));
    Status cloned = kStatusOk;
    const std::unique_ptr<Stream> clone = file.Clone(&cloned);
    EXPECT_EQ(clone == nullptr, IsFailure(cloned));
    std::string bytes(model.size(), '?');
    if (clone && !IsFailure(clone->Read(bytes.data(), file.GetSize(), count))) {
        EXPECT_EQ(bytes, model);
    }
    FileIdentity identity;
    EXPECT_TRUE(file.GetFileIdentity(identity) || hasFailed());
    (void)file.Flush();
    (void)file.ReopenReadOnly();
    EXPECT_TRUE(file.IsOpen()) << "as it was, if not as it should";
    EXPECT_TRUE(!IsFailure(file.Rename(newPath.c_str())) || hasFailed());
    EXPECT_TRUE(!IsFailure(file.Close()) || hasFailed());
    EXPECT_FALSE(file.IsOpen());
    if (!hasFailed()) return;  // Looking at it would meet the fault.
    EXPECT_NE(test_support::Exists(path), test_support::Exists(newPath));
    EXPECT_EQ(test_support::ReadWholeFile(path) + test_support::ReadWholeFile(newPath), model);
}

void UseMappedFile(const WideString& path, const HasFailed& hasFailed) {
    TempMappedFileStream file;
    const std::string large(70'000, 'x');
    std::string model;
    std::int64_t count = 0;
    const Status opened = file.OpenTemp(TEXT("tmp"), nullptr, true);
    EXPECT_EQ(file.IsOpen(), !IsFailure(opened));
    if (IsFailure(opened)) return;
    const auto check = [&] {
        EXPECT_EQ(file.GetSize(), static_cast<std::int64_t>(model.size()));
        EXPECT_EQ(file.GetPosition(), static_cast<std::int64_t>(model.size()));
    };
    for (int round = 0; round < 2; ++round) {
        (void)file.Write(large.data(), 70'000, count);
        model.append(large, 0, static_cast<std::size_t>(count));
        check();
    }
    if (!IsFailure(file.SetSize(1000))) model.resize(1000);
    check();
    const bool isCompact = !IsFailure(file.Compact());
    EXPECT_TRUE(file.IsOpen() && (isCompact || hasFailed()));
    if (!IsFailure(file.SetSize(file.GetSize() + 5000))) model.resize(model.size() + 5000);
    (void)file.Seek(SeekMode::End, 0);
    check();
    const std::unique_ptr<Stream> clone = file.Clone();
    std::string bytes(model.size(), '?');
    if (clone && !IsFailure(clone->Read(bytes.data(), file.GetSize(), count))) {
        EXPECT_TRUE(bytes == model);
    }
    (void)file.ReopenReadOnly();
    EXPECT_TRUE(file.IsOpen());
    (void)file.Rename(path.c_str());
    const bool isOpen = file.IsOpen();
    EXPECT_EQ(file.GetSize(), isOpen ? static_cast<std::int64_t>(model.size()) : 0);
    EXPECT_TRUE(isOpen || test_support::ReadWholeFile(path) == model) << "not lost";
    EXPECT_TRUE(!IsFailure(file.Close()) || hasFailed());
    EXPECT_TRUE(hasFailed() || !test_support::Exists(path));
    (void)DeleteFileW(path.c_str());
}

void UseTempLocation(const WideString& path, const HasFailed& hasFailed) {
    WString folder;
    WString name;
    WString stem;
    const bool hasFolder = GetTempFolder(folder);
    EXPECT_NE(hasFolder, folder.IsEmpty());
    const bool isMade = MakeUniqueFileName(path.c_str(), TEXT("p"), TEXT("x"), name, &stem);
    EXPECT_TRUE(isMade != name.IsEmpty() && isMade != stem.IsEmpty());
    WCHAR buffer[MAX_PATH] = {};
    const Status status = MakeTempFileNameInFolder(buffer, TEXT("ab"));
    EXPECT_TRUE(hasFailed() || (hasFolder && isMade && !IsFailure(status)));
    EXPECT_TRUE(!hasFailed() || IsFailure(status) || test_support::Exists(buffer));
}

void UseFolders(const WideString& path, const HasFailed& hasFailed) {
    const Status made = CreateDirectoryTree((path + TEXT("\\a\\b")).c_str());
    const DWORD error = DeleteFolderTree(path.c_str());
    EXPECT_TRUE(hasFailed() || (!IsFailure(made) && !error));
    EXPECT_TRUE(!error || test_support::Exists(path));
}

TEST(EachFault, LeavesNothingBehindAndKeepsWhatIsPromised) {
    const struct {
        const char* why;
        void (*run)(const WideString&, const HasFailed&);
        std::uint64_t least;  // runs that meet a failure, whatever can be made to fail
    } kWorkloads[] = {{"memory streams", UseMemory, 7},
                      {"file streams", UseFile, 5},
                      {"mapped files", UseMappedFile, 5},
                      {"temporary locations", UseTempLocation, 5},
                      {"folders", UseFolders, 2}};
    const test_support::TestProfile profile;
    const platform::testing::InjectedFault awake("Sleep", 1, 0, 1000);
    for (const auto& workload : kWorkloads) {
        for (const DWORD error : {ERROR_GEN_FAILURE, ERROR_SHARING_VIOLATION, ERROR_BAD_NETPATH}) {
            SCOPED_TRACE(::testing::Message() << workload.why << ' ' << error);
            int run = 0;
            const auto work = [&](const HasFailed& hasFailed) {
                // A name of its own: clearing the last run's away would meet the fault.
                const std::string name = workload.why + std::to_string(error) + std::to_string(run);
                ++run;
                workload.run(profile.Path(platform::FromUtf8(name)), hasFailed);
            };
            EXPECT_GE(test_support::WalkFaults(work, error), workload.least);
        }
    }
}

}  // namespace
