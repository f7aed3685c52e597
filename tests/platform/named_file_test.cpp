/// What only the native layer promises of named memory: files that no death and no foreign hand
/// leaves behind or misuses.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/memory.h"
#include "tests/platform/child_process.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr const WCHAR* kName = TEXT("Global\\QVD native");

class NamedFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string folder = ::testing::TempDir() + "qvdXXXXXX";
        ASSERT_TRUE(mkdtemp(folder.data()));
        session_ = folder;
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        setenv("QUVADA_HOME", (folder + "/home").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("XDG_RUNTIME_DIR");
        unsetenv("QUVADA_HOME");
        fs::remove_all(session_);
    }
    static HANDLE Create(DWORD size = 10) {
        return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, kName);
    }
    /// Files of objects; the folder's lock is none.
    std::size_t FileCount() const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(session_ / "quvada")) {
            count += entry.path().filename() != "lock";
        }
        return count;
    }

    fs::path session_;
};

TEST_F(NamedFileTest, AKilledHolderLeavesNothingToFind) {
    ChildProcess holder({"hold", "Global\\QVD native", "100000"});
    ASSERT_EQ(holder.ReadLine(), "holding");
    MappingHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, kName));
    ASSERT_TRUE(mapping);
    holder.Kill();
    const MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, 100000));
    ASSERT_TRUE(view) << "this process holds it still";
    EXPECT_EQ(static_cast<unsigned char*>(view.Get())[99999], 0xFF);
    {
        ChildProcess other({"hold", "Global\\QVD other", "5000"});
        ASSERT_EQ(other.ReadLine(), "holding");
        EXPECT_EQ(FileCount(), 2u);
    }
    // The next object that is made sweeps up.
    EXPECT_EQ(FileCount(), 2u);
    const MappingHandle third(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 10, TEXT("third")));
    EXPECT_EQ(FileCount(), 2u);
}

TEST_F(NamedFileTest, ProfilesHaveTheirOwnNames) {
    const MappingHandle mapping(Create());
    setenv("QUVADA_HOME", (session_ / "other").c_str(), 1);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, kName), nullptr);
    // The same profile by another path is the same.
    fs::create_directory_symlink(session_ / "home", session_ / "link");
    setenv("QUVADA_HOME", (session_ / "link").c_str(), 1);
    EXPECT_TRUE(MappingHandle(OpenFileMappingW(FILE_MAP_READ, FALSE, kName)));
}

TEST_F(NamedFileTest, RefusesARuntimeFolderThatOthersCouldUse) {
    const fs::path folder = session_ / "quvada";
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms::all);
    EXPECT_EQ(Create(), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    fs::remove(folder);
    fs::create_directory(session_ / "elsewhere");
    fs::permissions(session_ / "elsewhere", fs::perms::owner_all);
    fs::create_directory_symlink(session_ / "elsewhere", folder);
    EXPECT_EQ(Create(), nullptr);
    EXPECT_TRUE(fs::is_empty(session_ / "elsewhere"));
}

TEST_F(NamedFileTest, FollowsNoLinkAndTakesNoForeignFile) {
    fs::path file;
    {
        const MappingHandle mapping(Create());
        for (const auto& entry : fs::directory_iterator(session_ / "quvada")) {
            if (entry.path().filename() != "lock") file = entry.path();
        }
    }
    const fs::path victim = session_ / "victim";
    std::ofstream(victim) << "keep";
    fs::create_symlink(victim, file);
    EXPECT_EQ(Create(), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(fs::file_size(victim), 4u);
    fs::remove(file);
    // A file that nobody holds is what a killed process left, whatever is in it.
    std::ofstream(file) << "stale";
    const MappingHandle mapping(Create());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    const MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, 5));
    EXPECT_EQ(std::string(static_cast<char*>(view.Get()), 5), std::string(5, '\0'));
}

TEST_F(NamedFileTest, NothingIsLeftOfAFailureOrOfTheLastHolder) {
    MappingHandle(Create()).Reset();
    EXPECT_EQ(FileCount(), 0u);
    EXPECT_EQ(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0x7FFF, 0, kName),
              nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_COMMITMENT_LIMIT));
    EXPECT_EQ(FileCount(), 0u);
}

}  // namespace
}  // namespace platform
