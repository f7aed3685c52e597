#include "platform/posix/registry_tree.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "platform/posix/case_fold.h"

namespace platform {
namespace {

constexpr std::size_t kMaxKeyNameUnits = 255;
constexpr std::size_t kMaxValueNameUnits = 16383;

/// Now, as a FILETIME: 100 ns since 1601.
std::int64_t Now() {
    constexpr std::int64_t kUnixEpoch = 116444736000000000;
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return kUnixEpoch + std::int64_t{now.tv_sec} * 10'000'000 + now.tv_nsec / 100;
}

/// Takes the first part off `path`; runs of separators count as one.
WideView TakePart(WideView& path) {
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const WideView part = path.substr(0, end);
    path.remove_prefix(std::min(path.find_first_not_of(u'\\', end), path.size()));
    return part;
}

void ReadText(const Statement& statement, int column, WideString& text) {
    DWORD size = 0;
    const void* const bytes = statement.Bytes(column, size);
    text.resize(size / sizeof(WCHAR));
    if (!text.empty()) std::memcpy(text.data(), bytes, text.size() * sizeof(WCHAR));
}

/// Gives a column of bytes in the way of RegQueryValueExW.
LSTATUS ReadData(const Statement& statement, int column, BYTE* data, DWORD& size) {
    const DWORD room = size;
    const void* const stored = statement.Bytes(column, size);
    if (!data) return ERROR_SUCCESS;
    if (size > room) return ERROR_MORE_DATA;
    if (size) std::memcpy(data, stored, size);
    return ERROR_SUCCESS;
}

}  // namespace

LSTATUS RegistryTree::FindChild(KeyId parent, WideView name, KeyId& key) {
    if (name.size() > kMaxKeyNameUnits) return ERROR_INVALID_PARAMETER;
    const WideString folded = FoldCase(name);
    bool found = false;
    Statement statement(database_, Query::FindKey);
    const LSTATUS status = statement.Bind(1, parent).Bind(2, folded).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_FILE_NOT_FOUND;
    key = statement.Number(0);
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::MissingOrDeleted(KeyId key) {
    bool found = false;
    const LSTATUS status = Statement(database_, Query::KeyExists).Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
}

LSTATUS RegistryTree::Find(KeyId start, WideView path, KeyId& key) {
    // One transaction: the parts of the path belong to one state of the registry.
    Transaction transaction(database_, Transaction::Kind::Reading);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    if (path.empty()) {
        const LSTATUS status = MissingOrDeleted(start);
        if (status != ERROR_FILE_NOT_FOUND) return status;
        key = start;
        return ERROR_SUCCESS;
    }
    KeyId current = start;
    while (!path.empty()) {
        const LSTATUS status = FindChild(current, TakePart(path), current);
        if (status == ERROR_FILE_NOT_FOUND) return MissingOrDeleted(current);
        if (status != ERROR_SUCCESS) return status;
    }
    key = current;
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::Touch(KeyId key) {
    bool found = false;
    const LSTATUS status =
        Statement(database_, Query::TouchKey).Bind(1, key).Bind(2, Now()).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

LSTATUS RegistryTree::TouchParent(KeyId key) {
    bool found = false;
    const LSTATUS status =
        Statement(database_, Query::TouchParent).Bind(1, key).Bind(2, Now()).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

LSTATUS RegistryTree::AddChild(KeyId parent, WideView name, KeyId& key) {
    if (const LSTATUS status = Touch(parent); status != ERROR_SUCCESS) return status;
    const WideString folded = FoldCase(name);
    Statement statement(database_, Query::AddKey);
    bool found = false;
    const LSTATUS status =
        statement.Bind(1, parent).Bind(2, folded).Bind(3, name).Bind(4, Now()).Step(found);
    if (status != ERROR_SUCCESS) return status;
    key = statement.Number(0);
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::Create(KeyId start, WideView path, KeyId& key, bool& created) {
    created = false;
    if (database_.IsReadOnly()) return ERROR_ACCESS_DENIED;
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    KeyId current = start;
    bool isNew = false;
    while (!path.empty()) {
        const WideView name = TakePart(path);
        LSTATUS status = FindChild(current, name, current);
        if (status == ERROR_FILE_NOT_FOUND) {
            status = AddChild(current, name, current);
            isNew = true;
        }
        if (status != ERROR_SUCCESS) return status;
    }
    if (const LSTATUS status = transaction.Commit(); status != ERROR_SUCCESS) return status;
    key = current;
    created = isNew;
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::DeleteTree(KeyId key, bool keepKey) {
    touchedKey_ = 0;
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    const LSTATUS touched = keepKey ? Touch(key) : TouchParent(key);
    if (touched != ERROR_SUCCESS) return touched;
    for (const Query query : {Query::DeleteValuesBelow, Query::DeleteKeysBelow,
                              Query::DeleteValuesOf, Query::DeleteKey}) {
        if (query == Query::DeleteKey && keepKey) break;
        const LSTATUS status = Statement(database_, query).Bind(1, key).Run();
        if (status != ERROR_SUCCESS) return status;
    }
    return transaction.Commit();
}

LSTATUS RegistryTree::DeleteEmptyKey(KeyId key) {
    touchedKey_ = 0;
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    KeyInfo info;
    LSTATUS status = ReadInfo(key, info);
    if (status == ERROR_SUCCESS && info.subkeys > 0) status = ERROR_ACCESS_DENIED;
    if (status == ERROR_SUCCESS) status = TouchParent(key);
    for (const Query query : {Query::DeleteValuesOf, Query::DeleteKey}) {
        if (status == ERROR_SUCCESS) status = Statement(database_, query).Bind(1, key).Run();
    }
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

LSTATUS RegistryTree::StepTo(Statement& next, Statement& counted, const Cursor& cursor, KeyId key,
                             DWORD index, std::int64_t written, Statement*& used) {
    const bool follows =
        cursor.key == key && cursor.written == written && index > 0 && cursor.index == index - 1;
    used = follows ? &next : &counted;
    used->Bind(1, key);
    if (follows) {
        used->Bind(2, cursor.folded);
    } else {
        used->Bind(2, std::int64_t{index});
    }
    bool found = false;
    const LSTATUS status = used->Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_NO_MORE_ITEMS;
    // The file may come from elsewhere, and a conversion would move the bytes.
    return used->IsBlob(0) && used->IsBlob(1) ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

LSTATUS RegistryTree::ReadChildName(KeyId key, DWORD index, WideString& name) {
    std::int64_t written = 0;
    LSTATUS status = ReadTime(key, written);
    if (status != ERROR_SUCCESS) return status;
    Statement next(database_, Query::NextChild);
    Statement counted(database_, Query::ChildAt);
    Statement* used = nullptr;
    status = StepTo(next, counted, keyCursor_, key, index, written, used);
    if (status != ERROR_SUCCESS) return status;
    ReadText(*used, 1, name);
    keyCursor_.key = key;
    keyCursor_.written = written;
    keyCursor_.index = index;
    ReadText(*used, 0, keyCursor_.folded);
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::ReadTime(KeyId key, std::int64_t& written) {
    Statement statement(database_, Query::KeyTime);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_KEY_DELETED;
    written = statement.Number(0);
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::ReadInfo(KeyId key, KeyInfo& info) {
    Statement statement(database_, Query::KeyInfo);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_KEY_DELETED;
    info.written = statement.Number(0);
    info.subkeys = static_cast<DWORD>(statement.Number(1));
    info.values = static_cast<DWORD>(statement.Number(2));
    info.longestName = static_cast<DWORD>(statement.Number(3) / sizeof(WCHAR));
    info.longestData = static_cast<DWORD>(statement.Number(4));
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::ReadValue(KeyId key, WideView name, DWORD& type, BYTE* data, DWORD& size) {
    if (name.size() > kMaxValueNameUnits) return ERROR_FILE_NOT_FOUND;
    const WideString folded = FoldCase(name);
    Statement statement(database_, Query::ReadValue);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Bind(2, folded).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_KEY_DELETED;
    if (statement.IsNull(0)) return ERROR_FILE_NOT_FOUND;
    // The file may come from elsewhere, and a conversion would move the bytes.
    if (!statement.IsBlob(1)) return ERROR_REGISTRY_CORRUPT;
    type = static_cast<DWORD>(statement.Number(0));
    return ReadData(statement, 1, data, size);
}

std::int64_t RegistryTree::Changes() const {
    return sqlite3_total_changes64(database_.Connection());
}

const RegistryTree::ValuesAhead::Row* RegistryTree::RowAhead(KeyId key, DWORD index) const {
    if (key != ahead_.key || index != ahead_.next || ahead_.changes != Changes()) return nullptr;
    const std::size_t place = index - ahead_.first;
    return place < ahead_.rows.size() ? &ahead_.rows[place] : nullptr;
}

LSTATUS RegistryTree::ReadAhead(KeyId key, DWORD index) {
    constexpr std::size_t kMostBytes = 64 * 1024;
    ahead_.rows.clear();
    std::int64_t written = 0;
    LSTATUS status = ReadTime(key, written);
    if (status != ERROR_SUCCESS) return status;
    Statement next(database_, Query::NextValues);
    Statement counted(database_, Query::ValuesAt);
    Statement* used = nullptr;
    status = StepTo(next, counted, valueCursor_, key, index, written, used);
    if (status != ERROR_SUCCESS) return status;
    ahead_.key = key;
    ahead_.changes = Changes();
    ahead_.first = ahead_.next = index;
    std::size_t bytes = 0;
    for (bool found = true; found && bytes < kMostBytes;) {
        if (!used->IsBlob(0) || !used->IsBlob(1) || !used->IsBlob(3)) break;
        ValuesAhead::Row& row = ahead_.rows.emplace_back();
        ReadText(*used, 0, row.folded);
        ReadText(*used, 1, row.name);
        row.type = static_cast<DWORD>(used->Number(2));
        DWORD size = 0;
        const auto* const data = static_cast<const BYTE*>(used->Bytes(3, size));
        row.data.assign(data, data + size);
        bytes += size;
        // What fails behind the first row is told when its turn comes.
        if (used->Step(found) != ERROR_SUCCESS) break;
    }
    if (ahead_.rows.empty()) return ERROR_REGISTRY_CORRUPT;
    valueCursor_.key = key;
    valueCursor_.written = written;
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::ReadValueAt(KeyId key, DWORD index, FoundValue& value, BYTE* data,
                                  DWORD& size) {
    const ValuesAhead::Row* row = index > 0 ? RowAhead(key, index) : nullptr;
    if (!row) {
        if (const LSTATUS status = ReadAhead(key, index); status != ERROR_SUCCESS) return status;
        row = &ahead_.rows.front();
    }
    value.name = row->name;
    value.type = row->type;
    valueCursor_.index = index;
    valueCursor_.folded = row->folded;
    // A caller that had too little room asks again, which reads it again.
    ahead_.next = index + 1;
    const DWORD room = size;
    size = static_cast<DWORD>(row->data.size());
    if (!data) return ERROR_SUCCESS;
    if (size > room) return ERROR_MORE_DATA;
    if (size) std::memcpy(data, row->data.data(), size);
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::TouchOnce(KeyId key) {
    constexpr std::int64_t kMillisecond = 10'000;
    const std::int64_t now = Now();
    if (touchedKey_ == key && now >= touched_ && now - touched_ < kMillisecond) {
        return ERROR_SUCCESS;
    }
    const LSTATUS status = Touch(key);
    touchedKey_ = status == ERROR_SUCCESS ? key : 0;
    touched_ = now;
    return status;
}

LSTATUS RegistryTree::WriteValue(KeyId key, WideView name, DWORD type, const BYTE* data,
                                 DWORD size) {
    if (name.size() > kMaxValueNameUnits) return ERROR_INVALID_PARAMETER;
    const WideString folded = FoldCase(name);
    const auto write = [&] {
        return Statement(database_, Query::WriteValue)
            .Bind(1, key)
            .Bind(2, folded)
            .Bind(3, name)
            .Bind(4, std::int64_t{type})
            .Bind(5, data, size)
            .Run();
    };
    // Within a transaction a failed write leaves at most the key's time behind.
    if (sqlite3_get_autocommit(database_.Connection()) == 0) {
        const LSTATUS status = TouchOnce(key);
        return status == ERROR_SUCCESS ? write() : status;
    }
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    if (const LSTATUS status = Touch(key); status != ERROR_SUCCESS) return status;
    const LSTATUS status = write();
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

LSTATUS RegistryTree::DeleteValue(KeyId key, WideView name) {
    const WideString folded = FoldCase(name);
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    bool found = false;
    LSTATUS status =
        Statement(database_, Query::DeleteValue).Bind(1, key).Bind(2, folded).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return MissingOrDeleted(key);
    status = Touch(key);
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

}  // namespace platform
