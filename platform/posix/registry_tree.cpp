#include "platform/posix/registry_tree.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <utility>

#include "platform/posix/case_fold.h"

namespace platform {
namespace {

constexpr std::size_t kMaxKeyNameUnits = 255;
constexpr std::size_t kMaxValueNameUnits = 16383;
constexpr std::size_t kMostValuesAhead = 256;

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

ValueBatch::Stored Stored(const Statement& statement, int column) {
    DWORD size = 0;
    const void* const bytes = statement.Bytes(column, size);
    return {bytes, size};
}

/// Gives data in the way of RegQueryValueExW.
LSTATUS GiveData(ValueBatch::Stored stored, BYTE* data, DWORD& size) {
    const DWORD room = std::exchange(size, stored.size);
    if (!data) return ERROR_SUCCESS;
    if (size > room) return ERROR_MORE_DATA;
    if (size) std::memcpy(data, stored.bytes, size);
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
    DWORD children = 0;
    LSTATUS status = CountChildren(key, children);
    if (status == ERROR_SUCCESS && children > 0) status = ERROR_ACCESS_DENIED;
    if (status == ERROR_SUCCESS) status = TouchParent(key);
    for (const Query query : {Query::DeleteValuesOf, Query::DeleteKey}) {
        if (status == ERROR_SUCCESS) status = Statement(database_, query).Bind(1, key).Run();
    }
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

LSTATUS RegistryTree::StepTo(Statement& next, Statement& counted, std::optional<WideView> behind,
                             KeyId key, DWORD index, Statement*& used) {
    used = behind ? &next : &counted;
    used->Bind(1, key);
    if (behind) {
        used->Bind(2, *behind);
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
    const Transaction moment(database_, Transaction::Kind::Reading);
    if (moment.Status() != ERROR_SUCCESS) return moment.Status();
    std::int64_t written = 0;
    LSTATUS status = ReadTime(key, written);
    if (status != ERROR_SUCCESS) return status;
    const bool follows =
        cursor_.key == key && cursor_.written == written && index > 0 && cursor_.index == index - 1;
    const auto behind = follows ? std::optional<WideView>(cursor_.folded) : std::nullopt;
    Statement next(database_, Query::NextChild);
    Statement counted(database_, Query::ChildAt);
    Statement* used = nullptr;
    status = StepTo(next, counted, behind, key, index, used);
    if (status != ERROR_SUCCESS) return status;
    ReadText(*used, 1, name);
    cursor_.key = key;
    cursor_.written = written;
    cursor_.index = index;
    // Bound to the cursor's text until here.
    WideString folded;
    ReadText(*used, 0, folded);
    cursor_.folded = std::move(folded);
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

LSTATUS RegistryTree::CountChildren(KeyId key, DWORD& count) {
    Statement statement(database_, Query::CountChildren);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Step(found);
    if (status == ERROR_SUCCESS) count = static_cast<DWORD>(statement.Number(0));
    return status;
}

LSTATUS RegistryTree::ReadInfo(KeyId key, KeyInfo& info) {
    const Transaction moment(database_, Transaction::Kind::Reading);
    if (moment.Status() != ERROR_SUCCESS) return moment.Status();
    LSTATUS status = CountChildren(key, info.subkeys);
    if (status != ERROR_SUCCESS) return status;
    status = ReadTime(key, info.written);
    if (status != ERROR_SUCCESS) return status;
    status = ReadAhead(key, 0);
    if (status == ERROR_NO_MORE_ITEMS) return ERROR_SUCCESS;
    if (status != ERROR_SUCCESS || !ahead_.isToTheEnd) return MeasureValues(key, info);
    info.values = static_cast<DWORD>(ahead_.rows.Count());
    for (std::size_t i = 0; i < ahead_.rows.Count(); ++i) {
        const ValueBatch::Row row = ahead_.rows.At(i);
        info.longestName = std::max(info.longestName, static_cast<DWORD>(row.name.size()));
        info.longestData = std::max(info.longestData, row.size);
    }
    return ERROR_SUCCESS;
}

LSTATUS RegistryTree::MeasureValues(KeyId key, KeyInfo& info) {
    Statement statement(database_, Query::MeasureValues);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    info.values = static_cast<DWORD>(statement.Number(0));
    info.longestName = static_cast<DWORD>(statement.Number(1) / sizeof(WCHAR));
    info.longestData = static_cast<DWORD>(statement.Number(2));
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
    return GiveData(Stored(statement, 1), data, size);
}

void RegistryTree::ForgetFile() {
    cursor_ = {};
    ahead_.key = 0;
    touchedKey_ = 0;
}

std::int64_t RegistryTree::Changes() const {
    return sqlite3_total_changes64(database_.Connection());
}

bool RegistryTree::IsAheadIn(KeyId key) const {
    return ahead_.key == key && ahead_.changes == Changes();
}

void RegistryTree::TakeRows(Statement& statement, KeyId key, DWORD index, std::int64_t written) {
    constexpr std::size_t kMostBytes = 64 * 1024;
    ahead_.key = key;
    ahead_.written = written;
    ahead_.changes = Changes();
    ahead_.first = ahead_.next = index;
    ahead_.isToTheEnd = false;
    ahead_.rows.Clear();
    // What fails behind the first row is told when its turn comes.
    for (bool found = true; ahead_.rows.Bytes() < kMostBytes;) {
        if (!statement.IsBlob(0) || !statement.IsBlob(1) || !statement.IsBlob(3)) return;
        ahead_.rows.Add(Stored(statement, 0), Stored(statement, 1),
                        static_cast<DWORD>(statement.Number(2)), Stored(statement, 3));
        if (statement.Step(found) != ERROR_SUCCESS) return;
        if (!found) {
            ahead_.isToTheEnd = ahead_.rows.Count() < kMostValuesAhead;
            return;
        }
    }
}

LSTATUS RegistryTree::ReadAhead(KeyId key, DWORD index) {
    const Transaction moment(database_, Transaction::Kind::Reading);
    if (moment.Status() != ERROR_SUCCESS) return moment.Status();
    std::int64_t written = 0;
    LSTATUS status = ReadTime(key, written);
    if (status != ERROR_SUCCESS) return status;
    const bool isKnown = IsAheadIn(key) && ahead_.written == written;
    if (isKnown && index >= ahead_.first && index - ahead_.first < ahead_.rows.Count()) {
        return ERROR_SUCCESS;
    }
    // Bound until the statement ends, while the rows change.
    WideString last;
    std::optional<WideView> behind;
    if (isKnown && index > ahead_.first && index - ahead_.first == ahead_.rows.Count()) {
        last = ahead_.rows.At(ahead_.rows.Count() - 1).folded;
        behind = last;
    }
    Statement next(database_, Query::NextValues);
    Statement counted(database_, Query::ValuesAt);
    for (Statement* const statement : {&next, &counted}) {
        statement->Bind(3, std::int64_t{kMostValuesAhead});
    }
    Statement* used = nullptr;
    status = StepTo(next, counted, behind, key, index, used);
    if (status != ERROR_SUCCESS) return status;
    TakeRows(*used, key, index, written);
    return ahead_.rows.Count() > 0 ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

LSTATUS RegistryTree::ReadValueAt(KeyId key, DWORD index, FoundValue& value, BYTE* data,
                                  DWORD& size) {
    const bool goesOn = index > 0 && index == ahead_.next && IsAheadIn(key);
    const bool isBehind = goesOn && index - ahead_.first >= ahead_.rows.Count();
    if (isBehind && ahead_.isToTheEnd) return ERROR_NO_MORE_ITEMS;
    if (!goesOn || isBehind) {
        if (const LSTATUS status = ReadAhead(key, index); status != ERROR_SUCCESS) return status;
    }
    const ValueBatch::Row row = ahead_.rows.At(index - ahead_.first);
    value = {row.name, row.type};
    // A caller that had too little room asks again, which looks at the key again.
    ahead_.next = index + 1;
    return GiveData({row.data, row.size}, data, size);
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
