#pragma once

#include <thread>

#include "platform/posix/registry_database.h"
#include "platform/posix/registry_tree.h"

namespace platform {

/// A transaction over the registry: a connection of its own, which holds the write lock from the
/// first key on. Others read the state before it until it is committed, a process that dies leaves
/// that state, and nobody else writes meanwhile. The store's lock guards it.
class RegistryTransaction {
public:
    enum class State { New, Active, Committed, RolledBack };

    [[nodiscard]] RegistryTree& Tree() { return tree_; }
    [[nodiscard]] std::thread::id Owner() const { return owner_; }
    /// RolledBack also when an error, such as a full disk, has undone everything already.
    [[nodiscard]] State GetState() const;

    /// Takes the write lock of the profile in `folder`.
    LSTATUS Begin(const std::string& folder);
    /// Ends it. When committing fails all is undone.
    LSTATUS Commit();
    void Rollback();

private:
    RegistryDatabase database_;
    RegistryTree tree_{database_};
    std::thread::id owner_;
    State state_ = State::New;
};

}  // namespace platform
