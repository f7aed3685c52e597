#pragma once

#include <atomic>
#include <new>
#include <type_traits>
#include <utility>

#include "platform/com_ptr.h"

namespace platform {

/// The interface that a base class of an object stands for: itself, or what it says it implements.
template <class Base>
struct InterfaceOf {
    using Type = Base;
};
template <class Base>
requires requires { typename Base::Implements; }
struct InterfaceOf<Base> {
    using Type = typename Base::Implements;
};

/// Base of an object that implements interfaces: an atomic reference count that starts at 1, and a
/// QueryInterface that answers `Primary` (also for IUnknown and, where it is derived from that,
/// IDispatch), the other `Interfaces`, and each id that `AnswersAlso` names, such as the base of an
/// implemented interface. The interfaces may be given through classes that implement part of them.
/// Derived classes have a virtual destructor through this one and are made by MakeObject.
template <class Primary, class... Interfaces>
class ComObject : public Primary, public Interfaces... {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (IsEqualIID(id, InterfaceId<IUnknown>()) || IsOwnDispatch(id)) {
            *object = static_cast<typename InterfaceOf<Primary>::Type*>(this);
        } else if (!(Answer<Primary>(id, object) || ... || Answer<Interfaces>(id, object))) {
            *object = AnswersAlso(id);
        }
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        return references_.fetch_add(1, std::memory_order_relaxed) + 1;
    }

    ULONG STDMETHODCALLTYPE Release() noexcept override {
        // Acquire and release: the last holder must see what all others wrote.
        const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }

protected:
    ComObject() noexcept = default;
    virtual ~ComObject() = default;

    /// Gives the pointer for a further id, not counted, or null.
    virtual void* AnswersAlso(REFIID) noexcept { return nullptr; }

private:
    static bool IsOwnDispatch(REFIID id) noexcept {
        if constexpr (std::is_base_of_v<IDispatch, Primary>) {
            return IsEqualIID(id, InterfaceId<IDispatch>());
        } else {
            return false;
        }
    }

    template <class T>
    bool Answer(REFIID id, void** object) noexcept {
        using Interface = typename InterfaceOf<T>::Type;
        if (!IsEqualIID(id, InterfaceId<Interface>())) return false;
        *object = static_cast<Interface*>(this);
        return true;
    }

    std::atomic<ULONG> references_{1};
};

/// Makes an object and gives its first reference; null when memory runs out.
template <class T, class... Arguments>
[[nodiscard]] ComPtr<T> MakeObject(Arguments&&... arguments) {
    ComPtr<T> object;
    object.Attach(new (std::nothrow) T(std::forward<Arguments>(arguments)...));
    return object;
}

}  // namespace platform
