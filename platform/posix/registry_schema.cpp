#include "platform/posix/registry_schema.h"

namespace platform {

// The view `listing` is for people: sqlite3 registry.db 'select * from listing'.
const char* const kCreateSchema = R"sql(
CREATE TABLE keys(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    parent INTEGER NOT NULL,
    folded BLOB NOT NULL,
    name BLOB NOT NULL,
    written INTEGER NOT NULL,
    UNIQUE(parent, folded)) STRICT;
CREATE TABLE vals(
    key INTEGER NOT NULL,
    folded BLOB NOT NULL,
    name BLOB NOT NULL,
    type INTEGER NOT NULL,
    data BLOB NOT NULL,
    PRIMARY KEY(key, folded)) STRICT, WITHOUT ROWID;
CREATE VIEW listing(path, name, type, data) AS
    WITH RECURSIVE tree(id, path) AS (
        SELECT id, CAST(name AS TEXT) FROM keys WHERE parent = 0
        UNION ALL
        SELECT keys.id, path || '\' || CAST(keys.name AS TEXT)
            FROM tree JOIN keys ON keys.parent = tree.id)
    SELECT path, CAST(vals.name AS TEXT), type,
        CASE WHEN type IN (1, 2) THEN CAST(data AS TEXT) ELSE hex(data) END
        FROM tree LEFT JOIN vals ON vals.key = tree.id;
INSERT INTO keys VALUES
    (1, 0, CAST('HKEY_CURRENT_USER' AS BLOB), CAST('HKEY_CURRENT_USER' AS BLOB), 0),
    (2, 0, CAST('HKEY_LOCAL_MACHINE' AS BLOB), CAST('HKEY_LOCAL_MACHINE' AS BLOB), 0);
PRAGMA application_id = 0x51564452;
PRAGMA user_version = 1;
)sql";

const char* QueryText(Query query) {
    switch (query) {
        case Query::Begin:
            return "BEGIN";
        case Query::BeginWriting:
            // Takes the write lock at once: two transactions that first read and then want to
            // write would block each other, and one would have to give up.
            return "BEGIN IMMEDIATE";
        case Query::Commit:
            return "COMMIT";
        case Query::Rollback:
            return "ROLLBACK";
        case Query::Savepoint:
            return "SAVEPOINT step";
        case Query::ReleaseSavepoint:
            return "RELEASE step";
        case Query::RollbackToSavepoint:
            return "ROLLBACK TO step";
        case Query::KeepPages:
            return "PRAGMA cache_spill = OFF";
        case Query::FindKey:
            return "SELECT id FROM keys WHERE parent = ?1 AND folded = ?2";
        case Query::KeyExists:
            return "SELECT 1 FROM keys WHERE id = ?1";
        case Query::AddKey:
            return "INSERT INTO keys(parent, folded, name, written) VALUES(?1, ?2, ?3, ?4) "
                   "RETURNING id";
        case Query::TouchKey:
            return "UPDATE keys SET written = max(?2, written + 1) WHERE id = ?1 RETURNING 1";
        case Query::TouchParent:
            return "UPDATE keys SET written = max(?2, written + 1) "
                   "WHERE id = (SELECT parent FROM keys WHERE id = ?1) RETURNING 1";
        case Query::ReadValue:
            // No row: the key is gone. A null type: there is no such value.
            return "SELECT vals.type, vals.data FROM keys LEFT JOIN vals "
                   "ON vals.key = keys.id AND vals.folded = ?2 WHERE keys.id = ?1";
        case Query::WriteValue:
            return "INSERT INTO vals(key, folded, name, type, data) VALUES(?1, ?2, ?3, ?4, ?5) "
                   "ON CONFLICT(key, folded) DO UPDATE SET type = ?4, data = ?5";
        case Query::DeleteValue:
            return "DELETE FROM vals WHERE key = ?1 AND folded = ?2 RETURNING 1";
        case Query::DeleteValuesBelow:
            return "WITH RECURSIVE below(id) AS (SELECT id FROM keys WHERE parent = ?1 "
                   "UNION SELECT keys.id FROM below JOIN keys ON keys.parent = below.id) "
                   "DELETE FROM vals WHERE key IN below";
        case Query::DeleteKeysBelow:
            return "WITH RECURSIVE below(id) AS (SELECT id FROM keys WHERE parent = ?1 "
                   "UNION SELECT keys.id FROM below JOIN keys ON keys.parent = below.id) "
                   "DELETE FROM keys WHERE id IN below";
        case Query::DeleteValuesOf:
            return "DELETE FROM vals WHERE key = ?1";
        case Query::DeleteKey:
            return "DELETE FROM keys WHERE id = ?1";
        case Query::ChildAt:
            return "SELECT folded, name FROM keys WHERE parent = ?1 "
                   "ORDER BY folded LIMIT 1 OFFSET ?2";
        case Query::NextChild:
            return "SELECT folded, name FROM keys WHERE parent = ?1 AND folded > ?2 "
                   "ORDER BY folded LIMIT 1";
        case Query::ValuesAt:
            return "SELECT folded, name, type, data FROM vals WHERE key = ?1 "
                   "ORDER BY folded LIMIT ?3 OFFSET ?2";
        case Query::NextValues:
            return "SELECT folded, name, type, data FROM vals WHERE key = ?1 AND folded > ?2 "
                   "ORDER BY folded LIMIT ?3";
        case Query::KeyTime:
            return "SELECT written FROM keys WHERE id = ?1";
        case Query::CountChildren:
            return "SELECT count(*) FROM keys WHERE parent = ?1";
        case Query::MeasureValues:
            return "SELECT count(*), max(length(name)), max(length(data)) FROM vals "
                   "WHERE key = ?1";
        case Query::Count:
            break;
    }
    return "";
}

}  // namespace platform
