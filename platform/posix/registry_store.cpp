#include "platform/posix/registry_store.h"

#include <chrono>

#include "platform/posix/profile.h"
#include "platform/posix/profile_folder.h"
#include "platform/posix/registry_schema.h"

namespace platform {
namespace {

// READ_CONTROL is no writing; the generic rights beyond these are not served.
constexpr REGSAM kWriteAccess = 0xD0000 | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;
// As long as another process's change is waited for.
constexpr std::chrono::seconds kMaxWait{10};

/// Where a path below HKEY_CLASSES_ROOT lies below the user's root and the machine's.
WideString WholeClassPath(const WideString& path) {
    return path.empty() ? WideString(TEXT("Software\\Classes"))
                        : TEXT("Software\\Classes\\") + path;
}

bool IsRoot(HKEY handle) {
    return handle == HKEY_CLASSES_ROOT || handle == HKEY_CURRENT_USER ||
           handle == HKEY_LOCAL_MACHINE;
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
    tree_.ForgetFile();
    if (status == ERROR_SUCCESS && database_.Identity() != identity_) {
        identity_ = database_.Identity();
        ++generation_;
    }
    return status;
}

void RegistryStore::Prepare(REGSAM access) {
    if ((access & kWriteAccess) && database_.IsOpen() && database_.IsReadOnly()) database_.Close();
}

const RegistryStore::Handle* RegistryStore::HandleOf(HKEY handle) const {
    const auto found = handles_.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == handles_.end() ? nullptr : &found->second;
}

RegistryStore::TransactionPtr RegistryStore::TransactionOf(HKEY handle) const {
    const Handle* const found = HandleOf(handle);
    return found ? found->place.transaction : nullptr;
}

RegistryTree& RegistryStore::TreeOf(const KeyPlace& place) {
    return place.transaction ? place.transaction->Tree() : tree_;
}

LSTATUS RegistryStore::RootIn(RegistryTree& tree, HKEY root, KeyId& key) {
    key = root == HKEY_CURRENT_USER ? kCurrentUserId : kLocalMachineId;
    return root == HKEY_CLASSES_ROOT ? tree.Find(key, WholeClassPath({}), key) : ERROR_SUCCESS;
}

LSTATUS RegistryStore::Resolve(HKEY handle, REGSAM access, KeyRef& key) {
    if (IsRoot(handle)) {
        if (database_.IsOpen() && database_.IsReplaced()) database_.Close();
        if (const LSTATUS status = EnsureOpen(); status != ERROR_SUCCESS) return status;
        key.tree = &tree_;
        return RootIn(tree_, handle, key.key);
    }
    const Handle* const found = HandleOf(handle);
    if (!found) return ERROR_INVALID_HANDLE;
    if ((found->access & access) != access) return ERROR_ACCESS_DENIED;
    if (const TransactionPtr& transaction = found->place.transaction) {
        if (transaction->GetState() != RegistryTransaction::State::Active) {
            return ERROR_TRANSACTION_NOT_ACTIVE;
        }
    } else {
        if (const LSTATUS status = EnsureOpen(); status != ERROR_SUCCESS) return status;
        if (found->generation != generation_) return ERROR_KEY_DELETED;
    }
    key = {&TreeOf(found->place), found->place.key};
    return ERROR_SUCCESS;
}

LSTATUS RegistryStore::CheckAccess(REGSAM access) {
    return (access & kWriteAccess) && database_.IsReadOnly() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

LSTATUS RegistryStore::WaitFor(const RegistryTransaction* own) {
    if (!active_ || active_.get() == own) return ERROR_SUCCESS;
    if (active_->Owner() == std::this_thread::get_id()) return ERROR_TRANSACTIONAL_CONFLICT;
    std::unique_lock held(lock, std::adopt_lock);
    const bool isFree = ended_.wait_for(held, kMaxWait, [this] { return !active_; });
    (void)held.release();  // The caller's guard gives it back.
    return isFree ? ERROR_SUCCESS : ERROR_BUSY;
}

LSTATUS RegistryStore::AwaitTurn(HKEY handle) { return WaitFor(TransactionOf(handle).get()); }

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
    if (active_) active_->Rollback();
    active_.reset();
    ended_.notify_all();
    handles_.clear();
    database_.Close();
    identity_ = {};
}

std::optional<WideString> RegistryStore::ClassPath(HKEY base, WideView path) const {
    if (base == HKEY_CLASSES_ROOT) return WideString(path);
    const Handle* const found = HandleOf(base);
    if (!found || !found->place.classPath) return std::nullopt;
    WideString whole = *found->place.classPath;
    if (!whole.empty() && !path.empty()) whole += u'\\';
    return whole += path;
}

LSTATUS RegistryStore::FindClass(RegistryTree& tree, const WideString& path, KeyId& key) {
    LSTATUS status = ERROR_FILE_NOT_FOUND;
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        KeyId start = 0;
        status = RootIn(tree, root, start);
        if (status == ERROR_SUCCESS) status = tree.Find(start, WholeClassPath(path), key);
        if (status != ERROR_FILE_NOT_FOUND) return status;
    }
    return status;
}

LSTATUS RegistryStore::Find(HKEY base, WideView path, KeyPlace& place) {
    place.classPath = ClassPath(base, path);
    place.transaction = TransactionOf(base);
    KeyRef start;
    // Below the classes the base itself may be gone, or not be there yet.
    const HKEY checked = place.classPath && !place.transaction ? HKEY_CURRENT_USER : base;
    const LSTATUS status = Resolve(checked, 0, start);
    if (status != ERROR_SUCCESS) return status;
    return place.classPath ? FindClass(*start.tree, *place.classPath, place.key)
                           : start.tree->Find(start.key, path, place.key);
}

LSTATUS RegistryStore::MakeIn(RegistryTree& tree, WideView path, KeyPlace& place, bool& created) {
    if (!place.classPath) return tree.Create(place.key, path, place.key, created);
    return tree.Create(kLocalMachineId, WholeClassPath(*place.classPath), place.key, created);
}

LSTATUS RegistryStore::Create(HKEY base, WideView path, KeyPlace& place, bool& created) {
    created = false;
    // Most keys exist already and need no lock for writing.
    const LSTATUS present = Find(base, path, place);
    if (present != ERROR_FILE_NOT_FOUND) return present;
    if (const LSTATUS status = AwaitTurn(base); status != ERROR_SUCCESS) return status;
    KeyRef start;
    const bool isClass = place.classPath && !place.transaction;
    const LSTATUS status = Resolve(isClass ? HKEY_LOCAL_MACHINE : base, 0, start);
    if (status != ERROR_SUCCESS) return status;
    place.key = start.key;
    return MakeIn(*start.tree, path, place, created);
}

LSTATUS RegistryStore::BaseIn(const TransactionPtr& transaction, HKEY base, KeyPlace& place) {
    place.transaction = transaction;
    if (place.classPath) return ERROR_SUCCESS;
    if (IsRoot(base)) return RootIn(transaction->Tree(), base, place.key);
    const TransactionPtr its = TransactionOf(base);
    if (its && its != transaction) return ERROR_INVALID_PARAMETER;
    KeyRef start;
    const LSTATUS status = Resolve(base, 0, start);
    place.key = start.key;
    return status;
}

LSTATUS RegistryStore::CreateIn(const TransactionPtr& transaction, HKEY base, WideView path,
                                KeyPlace& place, bool& created) {
    using State = RegistryTransaction::State;
    const State state = transaction->GetState();
    if (state != State::New && state != State::Active) return ERROR_TRANSACTION_NOT_ACTIVE;
    if (state == State::New) {
        if (const LSTATUS status = WaitFor(nullptr); status != ERROR_SUCCESS) return status;
        const LSTATUS status = transaction->Begin(ProfileFolder());
        if (status != ERROR_SUCCESS) return status;
        active_ = transaction;
    }
    place.classPath = ClassPath(base, path);
    if (const LSTATUS status = BaseIn(transaction, base, place); status != ERROR_SUCCESS) {
        return status;
    }
    RegistryTree& tree = transaction->Tree();
    created = false;
    if (!place.classPath) return MakeIn(tree, path, place, created);
    const LSTATUS present = FindClass(tree, *place.classPath, place.key);
    return present == ERROR_FILE_NOT_FOUND ? MakeIn(tree, path, place, created) : present;
}

void RegistryStore::Ended(const RegistryTransaction& transaction) {
    if (active_.get() != &transaction) return;
    active_.reset();
    ended_.notify_all();
}

LSTATUS RegistryStore::CommitTransaction(RegistryTransaction& transaction) {
    const std::lock_guard guard(lock);
    const LSTATUS status = transaction.Commit();
    Ended(transaction);
    return status;
}

RegistryTransaction::State RegistryStore::EndTransaction(RegistryTransaction& transaction) {
    const std::lock_guard guard(lock);
    transaction.Rollback();
    Ended(transaction);
    return transaction.GetState();
}

}  // namespace platform
