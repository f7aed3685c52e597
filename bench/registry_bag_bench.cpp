// A bag of 10,000 values in the registry: saved and loaded, beside the same rows written to a store
// of the same kind and read from it directly; and an incremental save of one change.

#include <cstdlib>
#include <filesystem>
#include <sqlite3.h>
#include <string>
#include <vector>

#include "bench/ratio_table.h"
#include "cab/data_dictionary.h"
#include "cab/data_root.h"
#include "cab/registry_load.h"
#include "cab/registry_save.h"
#include "platform/text.h"

namespace {

namespace fs = std::filesystem;
using namespace AUX::CAB;
using bench::RatioTable;

constexpr int kKeys = 100, kValues = 100;
constexpr const WCHAR* kPath = TEXT("HKCU\\Software\\Bag");

/// A profile of its own for the run.
class BenchProfile {
public:
    BenchProfile() {
        std::string pattern = (fs::temp_directory_path() / "qvd_bench_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        setenv("QUVADA_HOME", folder_.c_str(), 1);
    }
    ~BenchProfile() { fs::remove_all(folder_); }
    [[nodiscard]] std::string Path(const char* name) const { return (folder_ / name).string(); }

private:
    fs::path folder_;
};

struct ReleaseBag {
    void operator()(DataRoot* bag) const { bag->Release(); }
};
using Bag = std::unique_ptr<DataRoot, ReleaseBag>;

DataItem& Child(DataItem& parent, const std::string& name, Kind kind) {
    const auto wide = platform::FromUtf8(name);
    DataItem* const made =
        parent.AsDictionary()->GetOrAdd(wide.data(), static_cast<std::int64_t>(wide.size()), kind);
    if (!made) std::abort();
    return *made;
}

Bag MakeBag() {
    Bag bag(DataRoot::Create());
    for (int key = 0; key < kKeys; ++key) {
        DataItem& group =
            Child(*bag->GetRootItem(), "group" + std::to_string(key), Kind::Dictionary);
        for (std::int32_t i = 0; i < kValues; ++i) {
            if (!Child(group, "value" + std::to_string(i), Kind::Int).SetInt(&i, 0)) std::abort();
        }
    }
    return bag;
}

void Require(HRESULT result) {
    if (FAILED(result)) std::abort();
}

/// The peer: the registry's table of values in a file that is as safe, without keys around it.
class Database {
public:
    explicit Database(const std::string& path) {
        if (sqlite3_open(path.c_str(), &database_) != SQLITE_OK) std::abort();
        Run("PRAGMA encoding='UTF-16le'; PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL;"
            "CREATE TABLE vals(key INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT NULL,"
            " type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, folded))"
            " STRICT, WITHOUT ROWID;");
        Prepare("INSERT INTO vals VALUES(?1, ?2, ?3, 4, ?4)", insert_);
        Prepare("SELECT folded, name, type, data FROM vals WHERE key = ? ORDER BY folded", select_);
    }
    ~Database() {
        sqlite3_finalize(insert_);
        sqlite3_finalize(select_);
        sqlite3_close(database_);
    }

    void Save() {
        Run("BEGIN IMMEDIATE; DELETE FROM vals;");
        for (int key = 0; key < kKeys; ++key) {
            for (int i = 0; i < kValues; ++i) {
                const std::string number = std::to_string(i);
                const auto folded = platform::FromUtf8("I.VALUE" + number);
                const auto name = platform::FromUtf8("i.value" + number);
                const auto bytes = static_cast<int>(name.size() * sizeof(WCHAR));
                sqlite3_bind_int(insert_, 1, key);
                sqlite3_bind_blob(insert_, 2, folded.data(), bytes, SQLITE_STATIC);
                sqlite3_bind_blob(insert_, 3, name.data(), bytes, SQLITE_STATIC);
                sqlite3_bind_blob(insert_, 4, &i, sizeof i, SQLITE_STATIC);
                if (sqlite3_step(insert_) != SQLITE_DONE) std::abort();
                sqlite3_reset(insert_);
            }
        }
        Run("COMMIT;");
    }

    [[nodiscard]] int Load() {
        int rows = 0;
        for (int key = 0; key < kKeys; ++key) {
            sqlite3_bind_int(select_, 1, key);
            while (sqlite3_step(select_) == SQLITE_ROW) {
                rows += sqlite3_column_bytes(select_, 3) == 4 && sqlite3_column_blob(select_, 1) &&
                        sqlite3_column_int(select_, 2) == 4;
            }
            sqlite3_reset(select_);
        }
        return rows;
    }

private:
    void Run(const char* statements) {
        if (sqlite3_exec(database_, statements, nullptr, nullptr, nullptr) != SQLITE_OK)
            std::abort();
    }
    void Prepare(const char* text, sqlite3_stmt*& statement) {
        if (sqlite3_prepare_v2(database_, text, -1, &statement, nullptr) != SQLITE_OK) std::abort();
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    sqlite3_stmt* select_ = nullptr;
};

}  // namespace

int main(int count, char** arguments) {
    const BenchProfile profile;
    Database peer(profile.Path("peer.db"));
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    DataItem& changing =
        *root.AsDictionary()->Find(TEXT("group7"))->AsDictionary()->Find(TEXT("value7"));
    peer.Save();
    Require(SaveToRegistry(root, nullptr, kPath, false, false));
    RatioTable table;
    RatioTable::Add("save", "registry", [&](benchmark::State& state) {
        for (auto _ : state) Require(SaveToRegistry(root, nullptr, kPath, false, false));
    });
    RatioTable::Add("save", "rows", [&](benchmark::State& state) {
        for (auto _ : state) peer.Save();
    });
    RatioTable::Add("load", "registry", [&](benchmark::State& state) {
        for (auto _ : state) {
            const Bag loaded(DataRoot::Create());
            Require(LoadFromRegistry(*loaded->GetRootItem(), nullptr, kPath));
        }
    });
    RatioTable::Add("load", "rows", [&](benchmark::State& state) {
        for (auto _ : state) {
            if (peer.Load() != kKeys * kValues) std::abort();
        }
    });
    RatioTable::Add("one change", "registry", [&](benchmark::State& state) {
        std::int32_t value = 1000;
        for (auto _ : state) {
            ++value;
            if (!changing.SetInt(&value, 0)) std::abort();
            Require(SaveToRegistry(root, nullptr, kPath, true, true));
        }
    });
    RatioTable::Add("no change", "registry", [&](benchmark::State& state) {
        for (auto _ : state) Require(SaveToRegistry(root, nullptr, kPath, true, true));
    });
    if (!table.RunAll(count, arguments)) return 1;
    RatioTable::PrintHead("10,000 values, by the time of SQLite's rows", {"registry"});
    table.PrintRow("save", {"registry"}, "rows", 1.5);
    table.PrintRow("load", {"registry"}, "rows", 1.5);
    return 0;
}
