#pragma once

#include "platform/com.h"

namespace platform {

/// Owns one reference to an interface. Copies count, moves hand over.
template <class T>
class ComPtr {
public:
    ComPtr() noexcept = default;
    /// Takes a reference of its own.
    explicit ComPtr(T* borrowed) noexcept : pointer_(borrowed) {
        if (pointer_) pointer_->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.pointer_) {}
    ComPtr(ComPtr&& other) noexcept : pointer_(other.Detach()) {}
    ComPtr& operator=(const ComPtr& other) noexcept {
        ComPtr copy(other);
        Swap(copy);
        return *this;
    }
    ComPtr& operator=(ComPtr&& other) noexcept {
        ComPtr taken(static_cast<ComPtr&&>(other));
        Swap(taken);
        return *this;
    }
    ~ComPtr() { Reset(); }

    [[nodiscard]] T* Get() const noexcept { return pointer_; }
    T* operator->() const noexcept { return pointer_; }
    T& operator*() const noexcept { return *pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    /// Releases what is held and gives the place where a call puts a counted reference.
    [[nodiscard]] T** Put() noexcept {
        Reset();
        return &pointer_;
    }

    /// Gives the reference away; the caller releases it.
    [[nodiscard]] T* Detach() noexcept {
        T* pointer = pointer_;
        pointer_ = nullptr;
        return pointer;
    }

    /// Takes over a reference that the caller already counted.
    void Attach(T* counted) noexcept {
        Reset();
        pointer_ = counted;
    }

    void Reset() noexcept {
        T* pointer = pointer_;
        pointer_ = nullptr;
        if (pointer) pointer->Release();
    }

    /// Asks the object for another interface; null when it has none or nothing is held.
    template <class Other>
    [[nodiscard]] ComPtr<Other> As() const noexcept {
        ComPtr<Other> other;
        if (pointer_) (void)QueryFor(pointer_, other);  // A refusal leaves `other` null.
        return other;
    }

private:
    void Swap(ComPtr& other) noexcept {
        T* pointer = pointer_;
        pointer_ = other.pointer_;
        other.pointer_ = pointer;
    }

    T* pointer_ = nullptr;
};

/// QueryInterface with the interface's own id. \return what the object answers.
template <class T, class From>
HRESULT QueryFor(From* object, ComPtr<T>& result) noexcept {
    void* found = nullptr;
    const HRESULT hr = object->QueryInterface(InterfaceId<T>(), &found);
    if (SUCCEEDED(hr)) {
        result.Attach(static_cast<T*>(found));
    } else {
        result.Reset();
    }
    return hr;
}

}  // namespace platform
