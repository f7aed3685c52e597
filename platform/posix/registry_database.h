#pragma once

#include <array>
#include <cstdint>
#include <sqlite3.h>
#include <string>

#include "platform/base.h"
#include "platform/text.h"

namespace platform {

/// The statements of the store, by their place in the table of their texts.
enum class Query {
    Begin,
    BeginWriting,
    Commit,
    Rollback,
    Savepoint,
    ReleaseSavepoint,
    RollbackToSavepoint,
    KeepPages,
    FindKey,
    KeyExists,
    AddKey,
    TouchKey,
    TouchParent,
    ReadValue,
    WriteValue,
    DeleteValue,
    DeleteValuesBelow,
    DeleteKeysBelow,
    DeleteValuesOf,
    DeleteKey,
    ChildAt,
    NextChild,
    ValuesAt,
    NextValues,
    KeyTime,
    CountChildren,
    MeasureValues,
    Count,
};

/// What opening the file came to, for a message to the user.
enum class StoreProblem {
    None,
    ReadOnly,      // only reading is possible
    NotARegistry,  // another kind of file lies there
    NewerFormat,   // written by a later version
    Damaged,       // the file's structure is broken
    CannotOpen,    // not accessible, or the folder cannot be made
    Unfinished,    // a change was cut off and cannot be taken back without write access
};

/// Which file a path leads to; all zero for none.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// The connection to a profile's registry.db. The file is never replaced: what cannot be read is
/// an error. Not thread-safe, and not to be carried over a fork.
///
/// A rollback journal, not a write-ahead log: without further files it reads with a full disk, in a
/// read-only folder and on a network drive, and a copy of the one file is a whole copy. The cost
/// is two waits for the disk with each write, which a dialog's OK does not show.
class RegistryDatabase {
public:
    RegistryDatabase() = default;
    ~RegistryDatabase() { Close(); }
    RegistryDatabase(const RegistryDatabase&) = delete;
    RegistryDatabase& operator=(const RegistryDatabase&) = delete;

    /// Opens `folder`/registry.db and makes both when missing. Where writing is refused it opens
    /// for reading; a file that is missing there reads as an empty registry.
    LSTATUS Open(const std::string& folder);
    void Close();

    [[nodiscard]] bool IsOpen() const { return connection_ != nullptr; }
    [[nodiscard]] bool IsReadOnly() const { return readOnly_; }
    [[nodiscard]] StoreProblem Problem() const { return problem_; }

    /// Reads the whole file and checks its structure; slow.
    [[nodiscard]] bool IsSound();

    /// Whether the file at the path is no longer the opened one: deleted, or put back from a copy.
    [[nodiscard]] bool IsReplaced() const;
    [[nodiscard]] FileIdentity Identity() const { return identity_; }

    /// The prepared statement, made at its first use; null with the error in Error().
    sqlite3_stmt* Prepare(Query query);

    /// The Win32 code for the connection's last error, ERROR_SUCCESS if there was none.
    [[nodiscard]] LSTATUS Error() const;

    [[nodiscard]] sqlite3* Connection() const { return connection_; }

private:
    LSTATUS Connect(const std::string& path, int flags);
    LSTATUS OpenEmpty();
    LSTATUS CheckSchema(bool& isNew);
    bool HasOwnSchema();
    LSTATUS CreateSchema();
    LSTATUS Fail(LSTATUS error);
    bool Execute(const char* sql);
    bool ReadNumber(const char* sql, std::int64_t& number);

    sqlite3* connection_ = nullptr;
    std::array<sqlite3_stmt*, static_cast<std::size_t>(Query::Count)> statements_{};
    std::string path_;
    FileIdentity identity_;
    bool readOnly_ = false;
    StoreProblem problem_ = StoreProblem::None;
};

/// One use of a prepared statement: binds, steps, and resets it when it ends.
class Statement {
public:
    Statement(RegistryDatabase& database, Query query)
        : database_(database), statement_(database.Prepare(query)) {}
    ~Statement() {
        if (!statement_) return;
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Bound bytes are borrowed until the statement ends.
    Statement& Bind(int index, std::int64_t number);
    Statement& Bind(int index, WideView text);
    Statement& Bind(int index, const BYTE* data, DWORD size);

    /// \param found  whether there is a row to read.
    LSTATUS Step(bool& found);
    /// For a statement whose rows do not matter.
    LSTATUS Run();

    [[nodiscard]] bool IsNull(int column) const;
    [[nodiscard]] bool IsBlob(int column) const;
    [[nodiscard]] std::int64_t Number(int column) const;
    /// Bytes that stay valid until the next step; null when there are none.
    const void* Bytes(int column, DWORD& size) const;

private:
    RegistryDatabase& database_;
    sqlite3_stmt* statement_;
    bool bound_ = true;
};

/// A change that takes effect as a whole, or a reading of one state: rolled back unless committed.
/// Where the connection is in a transaction already, a step of that.
class Transaction {
public:
    enum class Kind { Reading, Writing };

    Transaction(RegistryDatabase& database, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// How the beginning went; without success nothing else may be called.
    [[nodiscard]] LSTATUS Status() const { return status_; }
    LSTATUS Commit();

private:
    RegistryDatabase& database_;
    const bool isStep_;
    const Kind kind_;
    LSTATUS status_ = ERROR_SUCCESS;
    bool isCommitted_ = false;
};

}  // namespace platform
