#include "platform/posix/registry_store.h"

#include <cstring>
#include <ctime>

#include "platform/posix/case_fold.h"
#include "platform/posix/profile.h"
#include "platform/posix/profile_folder.h"
#include "platform/posix/registry_schema.h"

namespace platform {
namespace {

constexpr std::size_t kMaxKeyNameUnits = 255;
constexpr std::size_t kMaxValueNameUnits = 16383;
// READ_CONTROL is no writing; the generic rights beyond these are not served.
constexpr REGSAM kWriteAccess = 0xD0000 | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

/// Now, as a FILETIME: 100 ns since 1601.
std::int64_t Now() {
    constexpr std::int64_t kUnixEpoch = 116444736000000000;
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return kUnixEpoch + std::int64_t{now.tv_sec} * 10'000'000 + now.tv_nsec / 100;
}

/// Where a path below HKEY_CLASSES_ROOT lies below the user's root and the machine's.
WideString WholeClassPath(const WideString& path) {
    return path.empty() ? WideString(TEXT("Software\\Classes"))
                        : TEXT("Software\\Classes\\") + path;
}

bool IsRoot(HKEY handle) {
    return handle == HKEY_CLASSES_ROOT || handle == HKEY_CURRENT_USER ||
           handle == HKEY_LOCAL_MACHINE;
}

/// Takes the first part off `path`; runs of separators count as one.
WideView TakePart(WideView& path) {
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const WideView part = path.substr(0, end);
    path.remove_prefix(std::min(path.find_first_not_of(u'\\', end), path.size()));
    return part;
}

}  // namespace

RegistryStore& RegistryStore::Instance() {
    // Never destroyed: threads may still read settings while the process ends.
    static RegistryStore& store = []() -> RegistryStore& {
        OnProfileReset([]() noexcept { Instance().Reset(); });
        return *new RegistryStore;
    }();
    return store;
}

LSTATUS RegistryStore::EnsureOpen() {
    if (database_.IsOpen()) return ERROR_SUCCESS;
    const LSTATUS status = database_.Open(ProfileFolder());
    if (status == ERROR_SUCCESS && database_.Identity() != identity_) {
        identity_ = database_.Identity();
        ++generation_;
    }
    return status;
}

void RegistryStore::Prepare(REGSAM access) {
    if ((access & kWriteAccess) && database_.IsOpen() && database_.IsReadOnly()) database_.Close();
}

LSTATUS RegistryStore::Resolve(HKEY handle, REGSAM access, KeyId& key) {
    if (!IsRoot(handle)) {
        const auto found = handles_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == handles_.end()) return ERROR_INVALID_HANDLE;
        if ((found->second.access & access) != access) return ERROR_ACCESS_DENIED;
        if (const LSTATUS status = EnsureOpen(); status != ERROR_SUCCESS) return status;
        if (found->second.generation != generation_) return ERROR_KEY_DELETED;
        key = found->second.place.key;
        return ERROR_SUCCESS;
    }
    if (database_.IsOpen() && database_.IsReplaced()) database_.Close();
    if (const LSTATUS status = EnsureOpen(); status != ERROR_SUCCESS) return status;
    key = handle == HKEY_CURRENT_USER ? kCurrentUserId : kLocalMachineId;
    return handle == HKEY_CLASSES_ROOT ? FindPath(key, WholeClassPath({}), key) : ERROR_SUCCESS;
}

LSTATUS RegistryStore::CheckAccess(REGSAM access) {
    return (access & kWriteAccess) && database_.IsReadOnly() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

HKEY RegistryStore::AddHandle(KeyPlace place, REGSAM access) {
    // Numbers are not used twice, so that a closed handle stays invalid.
    const std::uintptr_t number = nextHandle_;
    nextHandle_ += 4;
    handles_[number] = {std::move(place), access, generation_};
    return reinterpret_cast<HKEY>(number);
}

LSTATUS RegistryStore::CloseHandle(HKEY handle) {
    if (IsRoot(handle)) return ERROR_SUCCESS;
    const bool closed = handles_.erase(reinterpret_cast<std::uintptr_t>(handle)) != 0;
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

void RegistryStore::Reset() {
    const std::lock_guard guard(lock);
    handles_.clear();
    database_.Close();
    identity_ = {};
}

LSTATUS RegistryStore::FindChild(KeyId parent, WideView name, KeyId& key) {
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

LSTATUS RegistryStore::MissingOrDeleted(KeyId key) {
    bool found = false;
    const LSTATUS status = Statement(database_, Query::KeyExists).Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
}

LSTATUS RegistryStore::FindPath(KeyId start, WideView path, KeyId& key) {
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

std::optional<WideString> RegistryStore::ClassPath(HKEY base, WideView path) const {
    if (base == HKEY_CLASSES_ROOT) return WideString(path);
    const auto found = handles_.find(reinterpret_cast<std::uintptr_t>(base));
    if (found == handles_.end() || !found->second.place.classPath) return std::nullopt;
    WideString whole = *found->second.place.classPath;
    if (!whole.empty() && !path.empty()) whole += u'\\';
    return whole += path;
}

LSTATUS RegistryStore::Find(HKEY base, WideView path, KeyPlace& place) {
    place.classPath = ClassPath(base, path);
    if (!place.classPath) {
        const LSTATUS status = Resolve(base, 0, place.key);
        return status == ERROR_SUCCESS ? FindPath(place.key, path, place.key) : status;
    }
    LSTATUS status = ERROR_FILE_NOT_FOUND;
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        KeyId start = 0;
        status = Resolve(root, 0, start);
        if (status != ERROR_SUCCESS) return status;
        status = FindPath(start, WholeClassPath(*place.classPath), place.key);
        if (status != ERROR_FILE_NOT_FOUND) return status;
    }
    return status;
}

LSTATUS RegistryStore::Create(HKEY base, WideView path, KeyPlace& place, bool& created) {
    created = false;
    // Most keys exist already and need no lock for writing.
    const LSTATUS present = Find(base, path, place);
    if (present != ERROR_FILE_NOT_FOUND) return present;
    KeyId start = 0;
    const LSTATUS status = Resolve(place.classPath ? HKEY_LOCAL_MACHINE : base, 0, start);
    if (status != ERROR_SUCCESS) return status;
    return place.classPath ? CreatePath(start, WholeClassPath(*place.classPath), place.key, created)
                           : CreatePath(start, path, place.key, created);
}

LSTATUS RegistryStore::Touch(KeyId key) {
    bool found = false;
    const LSTATUS status =
        Statement(database_, Query::TouchKey).Bind(1, key).Bind(2, Now()).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

LSTATUS RegistryStore::TouchParent(KeyId key) {
    bool found = false;
    const LSTATUS status =
        Statement(database_, Query::TouchParent).Bind(1, key).Bind(2, Now()).Step(found);
    if (status != ERROR_SUCCESS) return status;
    return found ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

LSTATUS RegistryStore::AddChild(KeyId parent, WideView name, KeyId& key) {
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

LSTATUS RegistryStore::CreatePath(KeyId start, WideView path, KeyId& key, bool& created) {
    if (database_.IsReadOnly()) return ERROR_ACCESS_DENIED;
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    KeyId current = start;
    while (!path.empty()) {
        const WideView name = TakePart(path);
        LSTATUS status = FindChild(current, name, current);
        if (status == ERROR_FILE_NOT_FOUND) {
            status = AddChild(current, name, current);
            created = true;
        }
        if (status != ERROR_SUCCESS) return status;
    }
    if (const LSTATUS status = transaction.Commit(); status != ERROR_SUCCESS) return status;
    key = current;
    return ERROR_SUCCESS;
}

LSTATUS RegistryStore::DeleteTree(KeyId key, bool keepKey) {
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

LSTATUS RegistryStore::DeleteEmptyKey(KeyId key) {
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    std::int64_t written = 0;
    DWORD subkeys = 0;
    DWORD values = 0;
    LSTATUS status = ReadKeyInfo(key, written, subkeys, values);
    if (status == ERROR_SUCCESS && subkeys > 0) status = ERROR_ACCESS_DENIED;
    if (status == ERROR_SUCCESS) status = TouchParent(key);
    for (const Query query : {Query::DeleteValuesOf, Query::DeleteKey}) {
        if (status == ERROR_SUCCESS) status = Statement(database_, query).Bind(1, key).Run();
    }
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

LSTATUS RegistryStore::ReadChildName(KeyId key, DWORD index, WideString& name) {
    Statement statement(database_, Query::ChildName);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Bind(2, std::int64_t{index}).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) {
        const LSTATUS missing = MissingOrDeleted(key);
        return missing == ERROR_FILE_NOT_FOUND ? ERROR_NO_MORE_ITEMS : missing;
    }
    if (!statement.IsBlob(0)) return ERROR_REGISTRY_CORRUPT;
    DWORD size = 0;
    const void* const bytes = statement.Bytes(0, size);
    name.resize(size / sizeof(WCHAR));
    if (!name.empty()) std::memcpy(name.data(), bytes, name.size() * sizeof(WCHAR));
    return ERROR_SUCCESS;
}

LSTATUS RegistryStore::ReadKeyInfo(KeyId key, std::int64_t& written, DWORD& subkeys,
                                   DWORD& values) {
    Statement statement(database_, Query::KeyInfo);
    bool found = false;
    const LSTATUS status = statement.Bind(1, key).Step(found);
    if (status != ERROR_SUCCESS) return status;
    if (!found) return ERROR_KEY_DELETED;
    written = statement.Number(0);
    subkeys = static_cast<DWORD>(statement.Number(1));
    values = static_cast<DWORD>(statement.Number(2));
    return ERROR_SUCCESS;
}

LSTATUS RegistryStore::ReadValue(KeyId key, WideView name, DWORD& type, BYTE* data, DWORD& size) {
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
    const DWORD room = size;
    const void* const stored = statement.Bytes(1, size);
    if (!data) return ERROR_SUCCESS;
    if (size > room) return ERROR_MORE_DATA;
    if (size) std::memcpy(data, stored, size);
    return ERROR_SUCCESS;
}

LSTATUS RegistryStore::WriteValue(KeyId key, WideView name, DWORD type, const BYTE* data,
                                  DWORD size) {
    if (name.size() > kMaxValueNameUnits) return ERROR_INVALID_PARAMETER;
    const WideString folded = FoldCase(name);
    Transaction transaction(database_, Transaction::Kind::Writing);
    if (transaction.Status() != ERROR_SUCCESS) return transaction.Status();
    if (const LSTATUS status = Touch(key); status != ERROR_SUCCESS) return status;
    const LSTATUS status = Statement(database_, Query::WriteValue)
                               .Bind(1, key)
                               .Bind(2, folded)
                               .Bind(3, name)
                               .Bind(4, std::int64_t{type})
                               .Bind(5, data, size)
                               .Run();
    return status == ERROR_SUCCESS ? transaction.Commit() : status;
}

LSTATUS RegistryStore::DeleteValue(KeyId key, WideView name) {
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
