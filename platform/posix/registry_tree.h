#pragma once

#include <cstdint>
#include <optional>

#include "platform/posix/registry_database.h"
#include "platform/posix/value_batch.h"
#include "platform/registry.h"

namespace platform {

using KeyId = std::int64_t;

/// What a key holds besides the data themselves.
struct KeyInfo {
    std::int64_t written = 0;  // FILETIME
    DWORD subkeys = 0;
    DWORD values = 0;
    DWORD longestName = 0;  // of the values, in units
    DWORD longestData = 0;  // bytes
};

/// A value that an enumeration came to.
struct FoundValue {
    WideView name;
    DWORD type = 0;
};

/// The keys and values as one connection sees them: outside of transactions, or from within one.
/// Every operation takes effect as a whole or not at all. Results are Win32 error codes,
/// ERROR_KEY_DELETED for a key that is gone. Not thread-safe.
class RegistryTree {
public:
    explicit RegistryTree(RegistryDatabase& database) : database_(database) {}
    RegistryTree(const RegistryTree&) = delete;
    RegistryTree& operator=(const RegistryTree&) = delete;

    [[nodiscard]] RegistryDatabase& Database() const { return database_; }
    /// To be called when the connection was opened anew: nothing is known of its keys.
    void ForgetFile();

    /// The key at a path below an open one; an empty path is that key itself.
    LSTATUS Find(KeyId start, WideView path, KeyId& key);
    /// The same, and makes what is missing of the path.
    LSTATUS Create(KeyId start, WideView path, KeyId& key, bool& created);
    LSTATUS DeleteTree(KeyId key, bool keepKey);
    /// ERROR_ACCESS_DENIED if the key has subkeys.
    LSTATUS DeleteEmptyKey(KeyId key);
    /// The name of a subkey by its place in the alphabet, or ERROR_NO_MORE_ITEMS.
    LSTATUS ReadChildName(KeyId key, DWORD index, WideString& name);

    LSTATUS ReadTime(KeyId key, std::int64_t& written);
    /// Visits every value of the key, and keeps what it has read for the enumeration that mostly
    /// follows.
    LSTATUS ReadInfo(KeyId key, KeyInfo& info);

    /// `data` and `size` as RegQueryValueExW has them; a null `data` reads only type and size.
    LSTATUS ReadValue(KeyId key, WideView name, DWORD& type, BYTE* data, DWORD& size);
    /// The value at a place in the alphabet, or ERROR_NO_MORE_ITEMS; `data` and `size` as above.
    /// Its name is valid until the next call.
    ///
    /// An enumeration sees values as they were when it came to the first of a batch: other
    /// processes may change the key meanwhile, this one's changes are noticed.
    LSTATUS ReadValueAt(KeyId key, DWORD index, FoundValue& value, BYTE* data, DWORD& size);
    LSTATUS WriteValue(KeyId key, WideView name, DWORD type, const BYTE* data, DWORD size);
    LSTATUS DeleteValue(KeyId key, WideView name);

    /// ERROR_FILE_NOT_FOUND if the key is there, which is then what its caller missed in it.
    LSTATUS MissingOrDeleted(KeyId key);

private:
    /// Where an enumeration of subkeys came to: as long as the key is as it was, the next place is
    /// found by the name before it, without counting from the first one.
    struct Cursor {
        KeyId key = 0;
        std::int64_t written = 0;
        DWORD index = 0;
        WideString folded;
    };

    /// Values read ahead of an enumeration.
    struct ValuesAhead {
        KeyId key = 0;
        std::int64_t written = 0;
        std::int64_t changes = 0;  // of this connection, when they were read
        DWORD first = 0;           // the index of the first row
        DWORD next = 0;            // the index that is served next
        bool isToTheEnd = false;   // no value stands behind the last row
        ValueBatch rows;
    };

    LSTATUS FindChild(KeyId parent, WideView name, KeyId& key);
    LSTATUS AddChild(KeyId parent, WideView name, KeyId& key);
    LSTATUS CountChildren(KeyId key, DWORD& count);
    /// Numbers and lengths of the values.
    LSTATUS MeasureValues(KeyId key, KeyInfo& info);
    LSTATUS Touch(KeyId key);
    LSTATUS TouchParent(KeyId key);
    /// Whether the values ahead are those of the key as this connection knows it.
    [[nodiscard]] bool IsAheadIn(KeyId key) const;
    LSTATUS ReadAhead(KeyId key, DWORD index);
    /// Reads from a statement that has come to its first row.
    void TakeRows(Statement& statement, KeyId key, DWORD index, std::int64_t written);
    [[nodiscard]] std::int64_t Changes() const;
    /// Touches a key within a transaction, unless that has just been done.
    LSTATUS TouchOnce(KeyId key);

    /// Steps to the row behind a folded name, or where none is known to the one of an index.
    LSTATUS StepTo(Statement& next, Statement& counted, std::optional<WideView> behind, KeyId key,
                   DWORD index, Statement*& used);

    RegistryDatabase& database_;
    Cursor cursor_;
    ValuesAhead ahead_;
    KeyId touchedKey_ = 0;  // 0 for none
    std::int64_t touched_ = 0;
};

}  // namespace platform
