/// What only the native registry promises: how its file behaves when disks, permissions, processes
/// and other programs do not.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <sqlite3.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/profile.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/scope_exit.h"
#include "platform/text.h"
#include "tests/platform/child_process.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr const WCHAR* kPath = TEXT("Software\\Store");

class RegistryStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string folder = ::testing::TempDir() + "qvdXXXXXX";
        ASSERT_TRUE(mkdtemp(folder.data()));
        base_ = folder;
        Use(base_ / "home");
    }
    void TearDown() override {
        if (isRoot_) {
            EXPECT_EQ(seteuid(0), 0);
        }
        fs::permissions(home_, fs::perms::owner_all);
        fs::remove_all(base_);
        unsetenv("QUVADA_HOME");
        ResetProfileFolder();
    }
    void Use(const fs::path& home) {
        home_ = home;
        file_ = home / "registry.db";
        setenv("QUVADA_HOME", home.c_str(), 1);
        ResetProfileFolder();
    }
    /// Permissions do not bind the superuser; from here on the test is an ordinary user.
    void BecomeOrdinaryUser() {
        constexpr uid_t kNobody = 65534;
        if (!isRoot_) return;
        ASSERT_EQ(chown(base_.c_str(), kNobody, gid_t(-1)), 0);
        for (const auto& entry : fs::recursive_directory_iterator(base_)) {
            ASSERT_EQ(chown(entry.path().c_str(), kNobody, gid_t(-1)), 0);
        }
        ASSERT_EQ(seteuid(kNobody), 0);
    }

    static LSTATUS Open(REGSAM access, RegistryKey& key) {
        return RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, access, key.Put());
    }
    static LSTATUS OpenAndClose(REGSAM access) {
        RegistryKey key;
        return Open(access, key);
    }
    static LSTATUS Write(DWORD number) {
        RegistryKey key;
        const LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_WRITE,
                                               nullptr, key.Put(), nullptr);
        if (status != ERROR_SUCCESS) return status;
        return RegSetValueExW(key.Get(), TEXT("v"), 0, REG_DWORD,
                              reinterpret_cast<const BYTE*>(&number), sizeof number);
    }
    static DWORD Read(const WCHAR* name = TEXT("v")) {
        RegistryKey key;
        DWORD number = 0;
        DWORD size = sizeof number;
        EXPECT_EQ(Open(KEY_READ, key), ERROR_SUCCESS);
        EXPECT_EQ(RegQueryValueExW(key.Get(), name, nullptr, nullptr,
                                   reinterpret_cast<BYTE*>(&number), &size),
                  ERROR_SUCCESS);
        return number;
    }
    static std::string Problem() {
        std::string problem;
        EXPECT_FALSE(CheckProfile(problem));
        return problem;
    }
    static bool IsHealthy() {
        std::string problem;
        return CheckProfile(problem);
    }
    std::string Content() const {
        std::ifstream in(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void SetContent(const std::string& content) const {
        std::ofstream(file_, std::ios::binary) << content;
    }

    const bool isRoot_ = geteuid() == 0;
    fs::path base_;
    fs::path home_;
    fs::path file_;
};

TEST_F(RegistryStoreTest, MakesTheProfileForItsUserAlone) {
    Use(base_ / "deep" / "er" / "home");
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Write(1), ERROR_SUCCESS);
    EXPECT_EQ(fs::status(home_).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(IsHealthy());
    RegistryKey old;
    ASSERT_EQ(Open(KEY_READ, old), ERROR_SUCCESS);
    Use(base_ / "second");
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExW(old.Get(), TEXT("v"), nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_HANDLE);
    Use(base_ / "deep" / "er" / "home");
    EXPECT_EQ(Read(), 1u);
}

TEST_F(RegistryStoreTest, NoticesThatItsFileWasReplaced) {
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    fs::copy_file(file_, base_ / "copy");
    ASSERT_EQ(Write(2), ERROR_SUCCESS);
    RegistryKey old;
    ASSERT_EQ(Open(KEY_READ, old), ERROR_SUCCESS);
    fs::rename(base_ / "copy", file_);
    EXPECT_EQ(Read(), 1u);
    EXPECT_EQ(RegQueryValueExW(old.Get(), TEXT("v"), nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    fs::remove_all(home_);
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Write(3), ERROR_SUCCESS);
    EXPECT_EQ(Read(), 3u);
}

TEST_F(RegistryStoreTest, LeavesAFileAloneThatItCannotRead) {
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    ResetProfileFolder();
    const std::string good = Content();
    std::string newer = good;
    newer[63] = 9;  // user_version, big-endian at 60
    std::string foreign = good;
    foreign[70] = 'x';  // application_id at 68
    std::string scrambled = good;
    std::mt19937 random(1);
    for (std::size_t i = 100; i < scrambled.size(); ++i) scrambled[i] = static_cast<char>(random());
    const struct {
        const char* why;
        std::string content;
        LSTATUS error;
        const char* inProblem;
    } kCases[] = {
        {"text", std::string(5000, 'x'), ERROR_BADDB, "holds no settings"},
        {"short text", "hello", ERROR_BADDB, "holds no settings"},
        {"another database", foreign, ERROR_BADDB, "holds no settings"},
        {"newer format", newer, ERROR_BADDB, "newer version"},
        {"cut in half", good.substr(0, good.size() / 2), ERROR_REGISTRY_CORRUPT, "damaged"},
        {"scrambled", scrambled, ERROR_REGISTRY_CORRUPT, "damaged"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        SetContent(c.content);
        EXPECT_EQ(OpenAndClose(KEY_READ), c.error);
        EXPECT_EQ(Write(2), c.error);
        EXPECT_NE(Problem().find(c.inProblem), std::string::npos) << Problem();
        EXPECT_NE(Problem().find(file_.string()), std::string::npos);
        EXPECT_TRUE(Content() == c.content) << "the file was changed";
        EXPECT_EQ(std::distance(fs::directory_iterator(home_), {}), 1);
    }
    // Put back, it works without a new start; an empty one is a new registry.
    SetContent(good);
    EXPECT_EQ(Read(), 1u);
    ResetProfileFolder();
    SetContent("");
    EXPECT_EQ(Write(2), ERROR_SUCCESS);
    EXPECT_EQ(Read(), 2u);
    EXPECT_TRUE(IsHealthy());
}

TEST_F(RegistryStoreTest, TakesNoTablesAndNoTypesButItsOwn) {
    const struct {
        const char* sql;
        LSTATUS opened;
        LSTATUS read;
    } kCases[] = {
        {"DROP TABLE vals; CREATE TABLE vals(key, folded, name, type, data)", ERROR_BADDB, 0},
        {"DROP TABLE keys; CREATE VIEW keys AS WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL "
         "SELECT id + 1 FROM n) SELECT id, 1 parent, x'' folded, x'' name, 1 written FROM n",
         ERROR_BADDB, 0},
        {"CREATE TRIGGER t AFTER UPDATE ON keys BEGIN DELETE FROM vals; END", ERROR_BADDB, 0},
        {"PRAGMA writable_schema = ON;"
         "UPDATE sqlite_schema SET sql = replace(sql, 'STRICT, ', '') WHERE name = 'vals';"
         "PRAGMA writable_schema = RESET; UPDATE vals SET data = 'text';"
         "PRAGMA writable_schema = ON; UPDATE sqlite_schema "
         "SET sql = replace(sql, 'WITHOUT', 'STRICT, WITHOUT') WHERE name = 'vals'",
         ERROR_SUCCESS, ERROR_REGISTRY_CORRUPT},
    };
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    const std::string good = Content();
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.sql);
        ResetProfileFolder();
        SetContent(good);
        sqlite3* editor = nullptr;
        ASSERT_EQ(sqlite3_open(file_.c_str(), &editor), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(editor, c.sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(editor);
        RegistryKey key;
        ASSERT_EQ(Open(KEY_READ, key), c.opened);
        if (!key) continue;
        BYTE data[8];
        DWORD size = sizeof data;
        EXPECT_EQ(RegQueryValueExW(key.Get(), TEXT("v"), nullptr, nullptr, data, &size), c.read);
    }
}

TEST_F(RegistryStoreTest, AReadOnlyProfileCanBeRead) {
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    struct Case {
        const char* why;
        fs::path path;
        fs::perms perms;
    };
    const fs::perms kReadFolder = fs::perms::owner_read | fs::perms::owner_exec;
    const Case kCases[] = {{"folder", home_, kReadFolder}, {"file", file_, fs::perms::owner_read}};
    BecomeOrdinaryUser();
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const fs::perms before = fs::status(c.path).permissions();
        fs::permissions(c.path, c.perms);
        ResetProfileFolder();
        EXPECT_EQ(Read(), 1u);
        EXPECT_EQ(OpenAndClose(KEY_READ | KEY_WRITE), ERROR_ACCESS_DENIED);
        EXPECT_EQ(Write(2), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kPath), ERROR_ACCESS_DENIED);
        EXPECT_NE(Problem().find("may only be read"), std::string::npos);
        // Given the permission, the next opening for writing has it, without a new start.
        fs::permissions(c.path, before);
        EXPECT_EQ(Write(1), ERROR_SUCCESS);
    }
}

TEST_F(RegistryStoreTest, AReadOnlyFolderWithoutAFileIsAnEmptyRegistry) {
    fs::create_directories(home_);
    BecomeOrdinaryUser();
    fs::permissions(home_, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Write(1), ERROR_ACCESS_DENIED);
    RegistryKey root;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, nullptr, 0, KEY_READ, root.Put()), ERROR_SUCCESS);
    fs::permissions(home_, fs::perms::owner_all);
    EXPECT_EQ(Write(1), ERROR_SUCCESS);
}

TEST_F(RegistryStoreTest, AChangeThatWasCutOffIsTakenBack) {
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    ResetProfileFolder();
    // What a process leaves that dies in the middle of writing a large change to the file.
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(file_.c_str(), &writer), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer,
                           "PRAGMA cache_size = 1; BEGIN; UPDATE vals SET data = zeroblob(9);"
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                           "WHERE i < 300) INSERT INTO vals SELECT 1, CAST(i AS BLOB), x'', 3, "
                           "zeroblob(3000) FROM n",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    fs::copy(home_, base_ / "left");
    sqlite3_close(writer);
    Use(base_ / "left");
    ASSERT_TRUE(fs::exists(home_ / "registry.db-journal"));
    ASSERT_GT(fs::file_size(file_), 500'000u);
    BecomeOrdinaryUser();
    for (const auto& entry : fs::directory_iterator(home_)) {
        fs::permissions(entry, fs::perms::owner_read);
    }
    fs::permissions(home_, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_REGISTRY_IO_FAILED);
    EXPECT_NE(Problem().find("was cut off"), std::string::npos) << Problem();
    fs::permissions(home_, fs::perms::owner_all);
    for (const auto& entry : fs::directory_iterator(home_)) {
        fs::permissions(entry, fs::perms::owner_read | fs::perms::owner_write);
    }
    EXPECT_EQ(Read(), 1u);
    EXPECT_TRUE(IsHealthy());
}

TEST_F(RegistryStoreTest, AProfileThatCannotBeIsAnError) {
    std::ofstream(base_ / "plain") << "a file";
    Use(base_ / "plain" / "home");
    EXPECT_NE(OpenAndClose(KEY_READ), ERROR_SUCCESS);
    EXPECT_NE(Write(1), ERROR_SUCCESS);
    EXPECT_NE(Problem().find("cannot be opened"), std::string::npos) << Problem();
    Use(base_ / "home");
    fs::create_directories(file_);
    EXPECT_EQ(OpenAndClose(KEY_READ), ERROR_ACCESS_DENIED);
    EXPECT_NE(Problem().find("permission is denied"), std::string::npos) << Problem();
}

TEST_F(RegistryStoreTest, AFullDiskKeepsTheOldValue) {
    ASSERT_EQ(Write(1), ERROR_SUCCESS);
    RegistryKey key;
    ASSERT_EQ(Open(KEY_READ | KEY_WRITE, key), ERROR_SUCCESS);
    // The limit on the size of files stands for the disk's.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const std::string large(200'000, 'x');
    {
        rlimit full = before;
        full.rlim_cur = fs::file_size(file_);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
        const ScopeExit restore([&] { setrlimit(RLIMIT_FSIZE, &before); });
        EXPECT_EQ(RegSetValueExW(key.Get(), TEXT("v"), 0, REG_BINARY,
                                 reinterpret_cast<const BYTE*>(large.data()),
                                 static_cast<DWORD>(large.size())),
                  ERROR_DISK_FULL);
        EXPECT_EQ(Read(), 1u);
        ResetProfileFolder();
        EXPECT_EQ(Read(), 1u);
    }
    EXPECT_EQ(Write(2), ERROR_SUCCESS);
    EXPECT_EQ(Read(), 2u);
    EXPECT_TRUE(IsHealthy());
}

TEST_F(RegistryStoreTest, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int kProcesses = 3;
    constexpr DWORD kWrites = 20;
    // The first of them has to make the file as well.
    {
        std::vector<std::unique_ptr<ChildProcess>> writers;
        for (int i = 0; i < kProcesses; ++i) {
            writers.push_back(std::make_unique<ChildProcess>(std::vector<std::string>{
                "write", "Software\\Store", std::string(1, static_cast<char>('a' + i)) + "-",
                std::to_string(kWrites)}));
        }
        for (const auto& writer : writers) EXPECT_EQ(writer->Wait(), 0);
    }
    RegistryKey key;
    ASSERT_EQ(Open(KEY_READ, key), ERROR_SUCCESS);
    DWORD subkeys = 0;
    DWORD values = 0;
    EXPECT_EQ(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                               &values, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(subkeys, kProcesses * kWrites);
    EXPECT_EQ(values, kProcesses * kWrites);
    EXPECT_EQ(Read(TEXT("B-19")), 19u);
    EXPECT_TRUE(IsHealthy());
}

TEST_F(RegistryStoreTest, AnEnumerationThatBeginsSeesWhatOthersWroteBefore) {
    ASSERT_EQ(Write(7), ERROR_SUCCESS);
    RegistryKey key;
    ASSERT_EQ(Open(KEY_READ, key), ERROR_SUCCESS);
    const auto count = [&] {
        DWORD values = 0;
        EXPECT_EQ(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   &values, nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        return values;
    };
    const auto nameAt = [&](DWORD index) {
        WCHAR name[10] = {};
        DWORD units = 10;
        (void)RegEnumValueW(key.Get(), index, name, &units, nullptr, nullptr, nullptr, nullptr);
        return ToUtf8(name);
    };
    for (const bool isBegun : {false, true}) {
        const DWORD before = count();  // It reads the values, too.
        if (isBegun) {
            EXPECT_EQ(nameAt(0), "A-0");
        }
        const std::string prefix = isBegun ? "0-" : "A-";
        EXPECT_EQ(ChildProcess({"write", "Software\\Store", prefix, "2"}).Wait(), 0);
        EXPECT_EQ(nameAt(0), prefix + "0");
        EXPECT_EQ(nameAt(1), prefix + "1");
        EXPECT_EQ(nameAt(before + 1), "v");
        EXPECT_EQ(nameAt(before + 2), "");
        EXPECT_EQ(count(), before + 2);
    }
}

TEST_F(RegistryStoreTest, AKilledWriterLeavesWholeValues) {
    std::mt19937 random(7);
    DWORD last = 0;
    for (int round = 0; round < 5; ++round) {
        ChildProcess writer({"churn", "Software\\Store"});
        ASSERT_EQ(writer.ReadLine(), "writing");
        usleep(static_cast<useconds_t>(random() % 20'000));
        writer.Kill();
        const DWORD a = Read(TEXT("a"));
        const DWORD b = Read(TEXT("b"));
        EXPECT_TRUE(a == b || a == b + 1) << a << ' ' << b;
        EXPECT_GE(a, 5u);
        last = a;
        EXPECT_TRUE(IsHealthy());
        ResetProfileFolder();
    }
    EXPECT_EQ(Write(last), ERROR_SUCCESS);
}

}  // namespace
}  // namespace platform
