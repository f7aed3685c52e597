#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/posix/registry_database.h"
#include "platform/posix/registry_transaction.h"
#include "platform/posix/registry_tree.h"
#include "platform/registry.h"

namespace platform {

/// A key, and the tree that its handle sees it in.
struct KeyRef {
    RegistryTree* tree = nullptr;
    KeyId key = 0;
};

/// A key that was found or made by its path.
struct KeyPlace {
    KeyId key = 0;
    std::optional<WideString> classPath;  // below HKEY_CLASSES_ROOT, if it was reached through that
    std::shared_ptr<RegistryTransaction> transaction;  // null outside of one
};

/// The registry of this process: the connection to the profile's file, the open handles, and the
/// transaction under way, if there is one. One connection outside of transactions, guarded by
/// `lock`, since a handle may be used from any thread and a call takes microseconds; the caller
/// holds `lock` over each operation. It opens at the first use, and anew when the file was
/// replaced.
class RegistryStore {
public:
    static RegistryStore& Instance();

    std::mutex lock;

    /// What a handle stands for, checked: it is open, its key is in the present file or its
    /// transaction is active, and it was opened with all of `access`. Roots have every access.
    LSTATUS Resolve(HKEY handle, REGSAM access, KeyRef& key);

    /// Before a key is opened for writing: if only reading was possible so far, the next call
    /// opens the file anew.
    void Prepare(REGSAM access);

    /// Whether keys may be opened with `access`: ERROR_ACCESS_DENIED for writing where only
    /// reading is possible.
    LSTATUS CheckAccess(REGSAM access);

    /// Before a change through `handle`: waits for the end of another thread's transaction, with
    /// the lock given up meanwhile. \return ERROR_TRANSACTIONAL_CONFLICT if that would be this
    ///     thread's own, which nobody could end; ERROR_BUSY after ten seconds.
    LSTATUS AwaitTurn(HKEY handle);

    HKEY AddHandle(KeyPlace place, REGSAM access);
    LSTATUS CloseHandle(HKEY handle);

    /// The key at a path below an open one; an empty path is that key itself.
    LSTATUS Find(HKEY base, WideView path, KeyPlace& place);
    /// The same, and makes what is missing of the path.
    LSTATUS Create(HKEY base, WideView path, KeyPlace& place, bool& created);
    /// The same within a transaction, which begins with its first key.
    LSTATUS CreateIn(const std::shared_ptr<RegistryTransaction>& transaction, HKEY base,
                     WideView path, KeyPlace& place, bool& created);
    /// The tree that a place was found in.
    [[nodiscard]] RegistryTree& TreeOf(const KeyPlace& place);

    /// Both take the lock themselves.
    LSTATUS CommitTransaction(RegistryTransaction& transaction);
    /// Rolls back what is not committed. \return the state that it ended in.
    RegistryTransaction::State EndTransaction(RegistryTransaction& transaction);

    /// Closes the file and all handles, and undoes a transaction; the next call opens the profile
    /// that is then current. Takes the lock itself.
    void Reset();

private:
    struct Handle {
        KeyPlace place;
        REGSAM access;
        std::uint32_t generation;
    };
    using TransactionPtr = std::shared_ptr<RegistryTransaction>;

    LSTATUS EnsureOpen();
    LSTATUS WaitFor(const RegistryTransaction* own);
    const Handle* HandleOf(HKEY handle) const;
    TransactionPtr TransactionOf(HKEY handle) const;
    std::optional<WideString> ClassPath(HKEY base, WideView path) const;
    LSTATUS RootIn(RegistryTree& tree, HKEY root, KeyId& key);
    LSTATUS FindClass(RegistryTree& tree, const WideString& path, KeyId& key);
    LSTATUS BaseIn(const TransactionPtr& transaction, HKEY base, KeyPlace& place);
    LSTATUS MakeIn(RegistryTree& tree, WideView path, KeyPlace& place, bool& created);
    void Ended(const RegistryTransaction& transaction);

    RegistryDatabase database_;
    RegistryTree tree_{database_};
    std::unordered_map<std::uintptr_t, Handle> handles_;
    std::uintptr_t nextHandle_ = 0x100;
    FileIdentity identity_;
    std::uint32_t generation_ = 0;
    TransactionPtr active_;  // the one that holds the write lock
    std::condition_variable ended_;
};

}  // namespace platform
