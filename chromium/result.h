#pragma once

#include <optional>
#include <string>
#include <utility>

namespace chromium {

/// Why something failed: whole sentences for the person in front of the program, UTF-8.
struct Error {
    std::string text;
};

/// A value or the reason why there is none.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Error error) : error_(std::move(error)) {}

    explicit operator bool() const noexcept { return value_.has_value(); }

    /// Only when there is a value.
    T& operator*() noexcept { return *value_; }
    const T& operator*() const noexcept { return *value_; }
    T* operator->() noexcept { return &*value_; }
    const T* operator->() const noexcept { return &*value_; }

    /// Empty when there is a value.
    const Error& GetError() const noexcept { return error_; }

private:
    std::optional<T> value_;
    Error error_;
};

struct Done {};
using Outcome = Result<Done>;

}  // namespace chromium
