#pragma once

#include <new>
#include <utility>

/// Owns one reference to a SharedRecord, or none. Copies count, moves hand over.
template <class T>
class SharedRef {
public:
    SharedRef() noexcept = default;
    SharedRef(const SharedRef& other) noexcept : record_(other.record_) {
        if (record_) record_->AddRef();
    }
    SharedRef(SharedRef&& other) noexcept : record_(std::exchange(other.record_, nullptr)) {}
    SharedRef& operator=(SharedRef other) noexcept {
        std::swap(record_, other.record_);
        return *this;
    }
    ~SharedRef() { Reset(); }

    /// A fresh record; holds nothing when memory runs out.
    [[nodiscard]] static SharedRef Make() noexcept {
        SharedRef made;
        made.record_ = new (std::nothrow) T();
        return made;
    }

    void Reset() noexcept {
        if (T* record = std::exchange(record_, nullptr)) record->Release();
    }

    [[nodiscard]] T* Get() const noexcept { return record_; }
    T* operator->() const noexcept { return record_; }
    T& operator*() const noexcept { return *record_; }
    explicit operator bool() const noexcept { return record_ != nullptr; }

private:
    T* record_ = nullptr;
};
