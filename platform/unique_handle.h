#pragma once

#include "platform/base.h"

namespace platform {

/// Owns one value that has to be given back: a handle, a key, a view. Movable, not copyable.
/// `Traits` names the type `Value`, the value `Invalid()` that stands for nothing, and
/// `Close(value)`. Closing keeps the thread's error code as it was.
template <class Traits>
class UniqueHandle {
public:
    using Value = typename Traits::Value;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Value value) noexcept : value_(value) {}
    UniqueHandle(UniqueHandle&& other) noexcept : value_(other.Detach()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) Reset(other.Detach());
        return *this;
    }
    ~UniqueHandle() { Reset(); }

    [[nodiscard]] Value Get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return value_ != Traits::Invalid(); }

    /// Closes what is held and gives the place where a call may put a new value.
    [[nodiscard]] Value* Put() noexcept {
        Reset();
        return &value_;
    }

    /// Gives the value away; the caller closes it.
    [[nodiscard]] Value Detach() noexcept {
        const Value value = value_;
        value_ = Traits::Invalid();
        return value;
    }

    /// Closes what is held and holds `value` instead.
    void Reset(Value value = Traits::Invalid()) noexcept {
        if (value_ != Traits::Invalid()) {
            const DWORD error = GetLastError();
            Traits::Close(value_);
            SetLastError(error);
        }
        value_ = value;
    }

private:
    Value value_ = Traits::Invalid();
};

}  // namespace platform
