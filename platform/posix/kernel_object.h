#pragma once

/// What stands behind a HANDLE: counted objects and the table that knows them. A handle is checked
/// at each use, so a stale or made-up value is an error code and never a crash.

#include <atomic>
#include <utility>

#include "platform/base.h"

namespace platform {

enum class KernelObjectKind { File, Find, Mapping, Waitable, Process, Token, Transaction };

/// Base of everything that a handle can name. Starts with one reference, which the maker holds.
/// A derived class names its kind as `kKind`.
class KernelObject {
public:
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    [[nodiscard]] KernelObjectKind Kind() const noexcept { return kind_; }
    void AddRef() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

protected:
    explicit KernelObject(KernelObjectKind kind) noexcept : kind_(kind) {}
    virtual ~KernelObject() = default;

private:
    std::atomic<int> references_{1};
    const KernelObjectKind kind_;
};

/// Owns one reference to a kernel object.
template <class T>
class ObjectRef {
public:
    ObjectRef() noexcept = default;
    /// Takes over a reference that the caller holds, such as that of a new object.
    explicit ObjectRef(T* taken) noexcept : object_(taken) {}
    ObjectRef(ObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ObjectRef& operator=(ObjectRef&& other) noexcept {
        ObjectRef old(std::exchange(object_, std::exchange(other.object_, nullptr)));
        return *this;
    }
    ~ObjectRef() {
        if (object_) object_->Release();
    }

    [[nodiscard]] T* Get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    [[nodiscard]] T* Detach() noexcept { return std::exchange(object_, nullptr); }

private:
    T* object_ = nullptr;
};

/// Puts the object into the table and gives its handle. Null with ERROR_NOT_ENOUGH_MEMORY if
/// `object` is null or the table cannot grow; the object is released then.
HANDLE OpenHandle(KernelObject* object) noexcept;
template <class T>
HANDLE OpenHandle(ObjectRef<T> object) noexcept {
    return OpenHandle(static_cast<KernelObject*>(object.Detach()));
}

/// The object behind a handle, with a reference of its own; null with ERROR_INVALID_HANDLE if the
/// handle is not open or names another kind.
KernelObject* ReferenceObject(HANDLE handle, KernelObjectKind kind) noexcept;
template <class T>
[[nodiscard]] ObjectRef<T> FindObject(HANDLE handle) noexcept {
    return ObjectRef<T>(static_cast<T*>(ReferenceObject(handle, T::kKind)));
}

/// Takes the handle of an object of this kind out of the table. FALSE with ERROR_INVALID_HANDLE.
BOOL CloseHandleOfKind(HANDLE handle, KernelObjectKind kind) noexcept;

}  // namespace platform
