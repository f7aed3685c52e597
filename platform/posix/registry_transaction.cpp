#include "platform/posix/registry_transaction.h"

#include "platform/handles.h"
#include "platform/posix/faults.h"
#include "platform/posix/kernel_object.h"
#include "platform/posix/last_error.h"
#include "platform/posix/registry_store.h"

namespace platform {

RegistryTransaction::State RegistryTransaction::GetState() const {
    const bool isUndone =
        state_ == State::Active && sqlite3_get_autocommit(database_.Connection()) != 0;
    return isUndone ? State::RolledBack : state_;
}

LSTATUS RegistryTransaction::Begin(const std::string& folder) {
    LSTATUS status = database_.Open(folder);
    if (status == ERROR_SUCCESS && database_.IsReadOnly()) status = ERROR_ACCESS_DENIED;
    // Pages that do not fit the cache would otherwise be written to the file before the end, which
    // shuts out readers.
    if (status == ERROR_SUCCESS) status = Statement(database_, Query::KeepPages).Run();
    if (status == ERROR_SUCCESS) status = Statement(database_, Query::BeginWriting).Run();
    if (status != ERROR_SUCCESS) {
        database_.Close();
        return status;
    }
    owner_ = std::this_thread::get_id();
    state_ = State::Active;
    return ERROR_SUCCESS;
}

LSTATUS RegistryTransaction::Commit() {
    if (GetState() == State::RolledBack) return ERROR_TRANSACTION_ALREADY_ABORTED;
    if (state_ == State::Committed) return ERROR_TRANSACTION_ALREADY_COMMITTED;
    if (state_ == State::Active) {
        const LSTATUS status = Statement(database_, Query::Commit).Run();
        if (status != ERROR_SUCCESS) {
            Rollback();
            return status;
        }
    }
    database_.Close();
    state_ = State::Committed;
    return ERROR_SUCCESS;
}

void RegistryTransaction::Rollback() {
    if (state_ == State::Committed) return;
    // Closing the connection undoes what is not committed.
    database_.Close();
    state_ = State::RolledBack;
}

namespace {

/// What a transaction's handle names; rolls back when the last one is closed.
class TransactionObject final : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Transaction;

    TransactionObject() : KernelObject(kKind) {}
    ~TransactionObject() override { RegistryStore::Instance().EndTransaction(*transaction); }

    const std::shared_ptr<RegistryTransaction> transaction =
        std::make_shared<RegistryTransaction>();
};

/// Ends the transaction of a handle; `call` is what tests name to let it fail.
template <class End>
BOOL EndBy(const char* call, HANDLE handle, End end) noexcept {
    if (InjectFault(call)) return FALSE;
    const ObjectRef<TransactionObject> object = FindObject<TransactionObject>(handle);
    if (!object) return FALSE;
    const LSTATUS status = end(*object->transaction);
    return status == ERROR_SUCCESS ? TRUE : Fail(static_cast<DWORD>(status));
}

}  // namespace
}  // namespace platform

HANDLE CreateTransaction(SECURITY_ATTRIBUTES*, GUID*, DWORD, DWORD, DWORD, DWORD timeout,
                         LPWSTR) noexcept {
    using platform::TransactionObject;
    if (platform::InjectFault("CreateTransaction")) return INVALID_HANDLE_VALUE;
    if (timeout != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        platform::OpenHandle(platform::ObjectRef<TransactionObject>(new TransactionObject));
    return handle ? handle : INVALID_HANDLE_VALUE;
}

BOOL CommitTransaction(HANDLE transaction) noexcept {
    return platform::EndBy("CommitTransaction", transaction, [](auto& ended) {
        return platform::RegistryStore::Instance().CommitTransaction(ended);
    });
}

BOOL RollbackTransaction(HANDLE transaction) noexcept {
    return platform::EndBy("RollbackTransaction", transaction, [](auto& ended) -> LSTATUS {
        using State = platform::RegistryTransaction::State;
        return platform::RegistryStore::Instance().EndTransaction(ended) == State::Committed
                   ? ERROR_TRANSACTION_ALREADY_COMMITTED
                   : ERROR_SUCCESS;
    });
}

LSTATUS RegCreateKeyTransactedW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR, DWORD options,
                                REGSAM access, const SECURITY_ATTRIBUTES*, PHKEY result,
                                LPDWORD disposition, HANDLE transaction, PVOID) noexcept {
    using namespace platform;
    if (!result) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    if (InjectFault("RegCreateKeyTransactedW")) return static_cast<LSTATUS>(GetLastError());
    if (reserved != 0 || options != REG_OPTION_NON_VOLATILE) return ERROR_INVALID_PARAMETER;
    if (path && path[0] == u'\\') return ERROR_BAD_PATHNAME;
    const ObjectRef<TransactionObject> object = FindObject<TransactionObject>(transaction);
    if (!object) return ERROR_INVALID_HANDLE;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyPlace place;
    bool created = false;
    const LSTATUS status = store.CreateIn(object->transaction, key,
                                          path ? WideView(path) : WideView(), place, created);
    if (status != ERROR_SUCCESS) return status;
    *result = store.AddHandle(std::move(place), access);
    if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}
