#pragma once

#include <utility>

namespace platform {

/// Runs an action when the scope is left, on every path. The action must not throw.
template <class Action>
class ScopeExit {
public:
    explicit ScopeExit(Action action) noexcept : action_(std::move(action)) {}
    ~ScopeExit() {
        if (armed_) action_();
    }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

    /// The action will not run.
    void Release() noexcept { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

}  // namespace platform
