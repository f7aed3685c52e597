#include "platform/posix/registry_database.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/profile_folder.h"
#include "platform/posix/registry_schema.h"

namespace platform {
namespace {

// Far above what any change takes; a process that was stopped in the middle of one blocks longer.
constexpr int kMaxBusyTries = 10'000;
constexpr useconds_t kBusyPauseUs = 1000;

// SQLite's own handler sleeps longer and longer, so that of several busy writers one may starve.
int WaitWhileBusy(void*, int tries) {
    if (tries >= kMaxBusyTries) return 0;
    usleep(kBusyPauseUs);
    return 1;
}

bool IsRefusal(int error) { return error == EACCES || error == EPERM || error == EROFS; }

bool IsWritable(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

FileIdentity IdentityOf(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return {};
    return {info.st_dev, info.st_ino};
}

// SQLite would let others read the file; what it makes beside it gets the file's mode.
void MakeFile(const std::string& path) {
    // Only a new file: closing an open one would give up the locks that this process has on it.
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) close(file);
}

bool IsSpaceError(int error) { return error == ENOSPC || error == EDQUOT || error == EFBIG; }

}  // namespace

LSTATUS RegistryDatabase::Open(const std::string& folder) {
    Close();
    path_ = folder + "/registry.db";
    if (const int error = MakeFolders(folder)) {
        if (IsRefusal(error)) return OpenEmpty();
        return Fail(static_cast<LSTATUS>(ErrorFromErrno(error)));
    }
    MakeFile(path_);
    if (!IsWritable(folder) || !IsWritable(path_)) problem_ = StoreProblem::ReadOnly;
    const LSTATUS status = Connect(path_, SQLITE_OPEN_READWRITE);
    if (status != ERROR_SUCCESS) {
        const bool isMissing = access(path_.c_str(), F_OK) != 0 && errno == ENOENT;
        return isMissing && !IsWritable(folder) ? OpenEmpty() : Fail(status);
    }
    identity_ = IdentityOf(path_);
    // A writable file in a folder that is not has no room for the journal.
    readOnly_ = problem_ == StoreProblem::ReadOnly;
    bool isNew = false;
    const LSTATUS checked = CheckSchema(isNew);
    if (checked != ERROR_SUCCESS) return Fail(checked);
    if (!isNew) return ERROR_SUCCESS;
    if (readOnly_) return OpenEmpty();
    const LSTATUS created = CreateSchema();
    return created == ERROR_SUCCESS ? created : Fail(created);
}

void RegistryDatabase::Close() {
    for (sqlite3_stmt*& statement : statements_) {
        sqlite3_finalize(statement);
        statement = nullptr;
    }
    sqlite3_close(connection_);
    connection_ = nullptr;
    readOnly_ = false;
    problem_ = StoreProblem::None;
    identity_ = {};
}

bool RegistryDatabase::IsSound() {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection_, "PRAGMA integrity_check(1)", -1, &statement, nullptr);
    const bool found = statement && sqlite3_step(statement) == SQLITE_ROW;
    const auto* const text =
        found ? reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)) : nullptr;
    const bool sound = text && std::string_view(text) == "ok";
    sqlite3_finalize(statement);
    return sound;
}

bool RegistryDatabase::IsReplaced() const { return IdentityOf(path_) != identity_; }

sqlite3_stmt* RegistryDatabase::Prepare(Query query) {
    sqlite3_stmt*& statement = statements_[static_cast<std::size_t>(query)];
    if (!statement) {
        sqlite3_prepare_v3(connection_, QueryText(query), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                           nullptr);
    }
    return statement;
}

LSTATUS RegistryDatabase::Error() const {
    if (!connection_) return ERROR_NOT_ENOUGH_MEMORY;
    const int error = sqlite3_extended_errcode(connection_);
    const int system = sqlite3_system_errno(connection_);
    switch (error & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return ERROR_SUCCESS;
        case SQLITE_NOTADB:
            return ERROR_BADDB;
        case SQLITE_FULL:
            return ERROR_DISK_FULL;
        case SQLITE_IOERR:
            // ENOSPC is SQLITE_FULL; a write that fails otherwise met a quota or a limit, or the
            // disk is broken, and rolling back has overwritten the reason.
            if (error == SQLITE_IOERR_WRITE || IsSpaceError(system)) return ERROR_DISK_FULL;
            return error == SQLITE_IOERR_NOMEM ? ERROR_NOT_ENOUGH_MEMORY : ERROR_REGISTRY_IO_FAILED;
        case SQLITE_READONLY:
            if (error == SQLITE_READONLY_ROLLBACK) return ERROR_REGISTRY_IO_FAILED;
            return ERROR_ACCESS_DENIED;
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return ERROR_ACCESS_DENIED;
        case SQLITE_CANTOPEN:
            if (IsSpaceError(system)) return ERROR_DISK_FULL;
            if (IsRefusal(system) || system == EISDIR) return ERROR_ACCESS_DENIED;
            return ERROR_REGISTRY_IO_FAILED;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return ERROR_BUSY;
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            return ERROR_NOT_ENOUGH_MEMORY;
        default:
            // SQLITE_CORRUPT, and what only another writer's tables can cause.
            return ERROR_REGISTRY_CORRUPT;
    }
}

LSTATUS RegistryDatabase::Connect(const std::string& path, int flags) {
    // The store's lock serves all threads, so SQLite needs none.
    sqlite3_open_v2(path.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (const LSTATUS status = Error(); status != ERROR_SUCCESS) return status;
    sqlite3_extended_result_codes(connection_, 1);
    sqlite3_busy_handler(connection_, WaitWhileBusy, nullptr);
    sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    // The file may be anyone's: nothing in it runs, and broken pages are noticed early.
    if (!Execute("PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON;"
                 "PRAGMA synchronous = FULL; PRAGMA temp_store = MEMORY;")) {
        return Error();
    }
    return ERROR_SUCCESS;
}

LSTATUS RegistryDatabase::OpenEmpty() {
    Close();
    const LSTATUS status = Connect(":memory:", SQLITE_OPEN_READWRITE);
    if (status != ERROR_SUCCESS) return Fail(status);
    if (!Execute(kCreateSchema)) return Fail(Error());
    readOnly_ = true;
    problem_ = StoreProblem::ReadOnly;
    return ERROR_SUCCESS;
}

LSTATUS RegistryDatabase::CheckSchema(bool& isNew) {
    // One moment for all of it: another process may just be making the tables.
    const Transaction moment(*this, Transaction::Kind::Reading);
    if (moment.Status() != ERROR_SUCCESS) return moment.Status();
    std::int64_t application = 0;
    std::int64_t version = 0;
    std::int64_t tables = 0;
    if (!ReadNumber("PRAGMA application_id", application) ||
        !ReadNumber("PRAGMA user_version", version) ||
        !ReadNumber("SELECT count(*) FROM sqlite_schema", tables)) {
        return Error();
    }
    isNew = application == 0 && version == 0 && tables == 0;
    if (isNew) return ERROR_SUCCESS;
    if (application == kApplicationId && version == kSchemaVersion) {
        return HasOwnSchema() ? ERROR_SUCCESS : ERROR_BADDB;
    }
    if (application == kApplicationId && version > kSchemaVersion) {
        problem_ = StoreProblem::NewerFormat;
    }
    return ERROR_BADDB;
}

bool RegistryDatabase::HasOwnSchema() {
    // A file from elsewhere may hold views that never end, triggers, or columns of other types.
    // The database keeps each text as it was given, without the semicolon.
    constexpr const char* kCompare =
        "SELECT count(*) = 3 AND total(instr(?1, sql || ';') = 0) = 0 FROM sqlite_schema "
        "WHERE sql IS NOT NULL AND name <> 'sqlite_sequence'";
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection_, kCompare, -1, &statement, nullptr);
    const bool isOwn =
        statement &&
        sqlite3_bind_text(statement, 1, kCreateSchema, -1, SQLITE_STATIC) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_int(statement, 0);
    sqlite3_finalize(statement);
    return isOwn;
}

LSTATUS RegistryDatabase::CreateSchema() {
    if (!Execute("PRAGMA encoding = 'UTF-16le'")) return Error();
    Transaction transaction(*this, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    // Another process may have been first.
    bool isNew = false;
    const LSTATUS status = CheckSchema(isNew);
    if (status != ERROR_SUCCESS) return status;
    if (!isNew) return ERROR_SUCCESS;
    if (!Execute(kCreateSchema)) return Error();
    return transaction.Commit();
}

LSTATUS RegistryDatabase::Fail(LSTATUS error) {
    const StoreProblem before = problem_;
    Close();
    problem_ = StoreProblem::CannotOpen;
    if (error == ERROR_REGISTRY_CORRUPT) problem_ = StoreProblem::Damaged;
    if (error == ERROR_BADDB) problem_ = StoreProblem::NotARegistry;
    if (before == StoreProblem::NewerFormat) problem_ = before;
    // With the first read, the journal of an interrupted change is played back.
    if (before == StoreProblem::ReadOnly && error == ERROR_REGISTRY_IO_FAILED) {
        problem_ = StoreProblem::Unfinished;
    }
    return error;
}

bool RegistryDatabase::Execute(const char* sql) {
    return sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool RegistryDatabase::ReadNumber(const char* sql, std::int64_t& number) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection_, sql, -1, &statement, nullptr) != SQLITE_OK) return false;
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    if (found) number = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return found;
}

Statement& Statement::Bind(int index, std::int64_t number) {
    bound_ = bound_ && sqlite3_bind_int64(statement_, index, number) == SQLITE_OK;
    return *this;
}

Statement& Statement::Bind(int index, WideView text) {
    const void* const bytes = text.empty() ? static_cast<const void*>("") : text.data();
    bound_ = bound_ && sqlite3_bind_blob64(statement_, index, bytes, text.size() * sizeof(WCHAR),
                                           SQLITE_STATIC) == SQLITE_OK;
    return *this;
}

Statement& Statement::Bind(int index, const BYTE* data, DWORD size) {
    // A null pointer would bind NULL and not an empty blob.
    const void* const bytes = size ? static_cast<const void*>(data) : "";
    bound_ =
        bound_ && sqlite3_bind_blob64(statement_, index, bytes, size, SQLITE_STATIC) == SQLITE_OK;
    return *this;
}

LSTATUS Statement::Step(bool& found) {
    found = false;
    if (!statement_ || !bound_) return database_.Error();
    const int result = sqlite3_step(statement_);
    found = result == SQLITE_ROW;
    return found || result == SQLITE_DONE ? ERROR_SUCCESS : database_.Error();
}

LSTATUS Statement::Run() {
    bool found = false;
    return Step(found);
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

bool Statement::IsBlob(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_BLOB;
}

std::int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement_, column);
}

const void* Statement::Bytes(int column, DWORD& size) const {
    const void* const bytes = sqlite3_column_blob(statement_, column);
    size = static_cast<DWORD>(sqlite3_column_bytes(statement_, column));
    return bytes;
}

Transaction::Transaction(RegistryDatabase& database, Kind kind)
    : database_(database),
      isStep_(sqlite3_get_autocommit(database.Connection()) == 0),
      kind_(kind) {
    const bool isWriting = kind == Kind::Writing;
    if (isStep_ && !isWriting) return;
    const Query begin = isStep_ ? Query::Savepoint : isWriting ? Query::BeginWriting : Query::Begin;
    status_ = Statement(database, begin).Run();
}

Transaction::~Transaction() {
    if (isCommitted_ || status_ != ERROR_SUCCESS || (isStep_ && kind_ == Kind::Reading)) return;
    // Some errors (a full disk) have rolled back already.
    if (sqlite3_get_autocommit(database_.Connection())) return;
    if (!isStep_) {
        (void)Statement(database_, Query::Rollback).Run();
        return;
    }
    (void)Statement(database_, Query::RollbackToSavepoint).Run();
    (void)Statement(database_, Query::ReleaseSavepoint).Run();
}

LSTATUS Transaction::Commit() {
    if (isStep_ && kind_ == Kind::Reading) return ERROR_SUCCESS;
    const LSTATUS status =
        Statement(database_, isStep_ ? Query::ReleaseSavepoint : Query::Commit).Run();
    isCommitted_ = status == ERROR_SUCCESS;
    return status;
}

}  // namespace platform
