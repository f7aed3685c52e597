#pragma once

#include "platform/automation.h"

namespace platform {

/// Owns a VARIANT with what it holds; empty at first.
class UniqueVariant {
public:
    UniqueVariant() noexcept { VariantInit(&value_); }
    /// A number, VT_I4.
    explicit UniqueVariant(LONG number) noexcept : UniqueVariant() {
        value_.vt = VT_I4;
        value_.lVal = number;
    }
    ~UniqueVariant() { (void)VariantClear(&value_); }
    UniqueVariant(const UniqueVariant&) = delete;
    UniqueVariant& operator=(const UniqueVariant&) = delete;

    [[nodiscard]] const VARIANT& Get() const noexcept { return value_; }
    /// The value itself, for calls that read or change it.
    [[nodiscard]] VARIANT* Change() noexcept { return &value_; }
    /// Clears it and gives the place where a call puts another.
    [[nodiscard]] VARIANT* Put() noexcept {
        (void)VariantClear(&value_);
        return &value_;
    }

private:
    VARIANT value_;
};

}  // namespace platform
