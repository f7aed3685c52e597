// What a command pays for its settings: all values loaded over the record, against the same values
// read from a plain SQLite file, one query a value as the registry's callers ask, and in one query.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <sqlite3.h>
#include <string>
#include <vector>

#include "settings/conversion_settings.h"
#include "settings/setting_rows.h"

namespace {

namespace fs = std::filesystem;

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

const BenchProfile& Profile() {
    static const BenchProfile profile;
    return profile;
}

void LoadSettings(benchmark::State& state) {
    (void)Profile();
    ConversionSettings settings(TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin"));
    if (settings.Save() != S_OK) return state.SkipWithError("cannot save");
    settings.LoadDelay = 0;
    for (auto _ : state) {
        if (settings.Load() != S_OK) return state.SkipWithError("cannot load");
    }
    if (settings.LoadDelay != 500) state.SkipWithError("nothing was loaded");
}
BENCHMARK(LoadSettings)->Unit(benchmark::kMicrosecond);

/// A file with as many values under names of that length.
sqlite3* OpenPeer() {
    sqlite3* database = nullptr;
    sqlite3_open(Profile().Path("peer.db").c_str(), &database);
    sqlite3_exec(database,
                 "PRAGMA journal_mode=WAL; DROP TABLE IF EXISTS v;"
                 "CREATE TABLE v(name TEXT PRIMARY KEY, type INTEGER, data BLOB) WITHOUT ROWID;",
                 nullptr, nullptr, nullptr);
    for (std::size_t i = 0; i < SettingRows().size(); ++i) {
        const std::string insert =
            "INSERT INTO v VALUES('TheNameOfValue" + std::to_string(i) + "', 4, x'01020304')";
        sqlite3_exec(database, insert.c_str(), nullptr, nullptr, nullptr);
    }
    return database;
}

/// Steps a statement to its end. \return the rows that had four bytes.
std::size_t ReadRows(sqlite3_stmt* statement) {
    std::size_t rows = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) rows += sqlite3_column_bytes(statement, 1) == 4;
    sqlite3_reset(statement);
    return rows;
}

void PeerOneQueryAValue(benchmark::State& state) {
    sqlite3* database = OpenPeer();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, "SELECT type, data FROM v WHERE name = ?", -1, &statement,
                       nullptr);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < SettingRows().size(); ++i) {
        names.push_back("TheNameOfValue" + std::to_string(i));
    }
    for (auto _ : state) {
        std::size_t rows = 0;
        for (const std::string& name : names) {
            sqlite3_bind_text(statement, 1, name.c_str(), -1, SQLITE_STATIC);
            rows += ReadRows(statement);
        }
        if (rows != names.size()) {
            state.SkipWithError("rows are missing");
            break;
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
}
BENCHMARK(PeerOneQueryAValue)->Unit(benchmark::kMicrosecond);

void PeerOneQuery(benchmark::State& state) {
    sqlite3* database = OpenPeer();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, "SELECT type, data FROM v", -1, &statement, nullptr);
    for (auto _ : state) {
        if (ReadRows(statement) != SettingRows().size()) {
            state.SkipWithError("rows are missing");
            break;
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
}
BENCHMARK(PeerOneQuery)->Unit(benchmark::kMicrosecond);

}  // namespace
