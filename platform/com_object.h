#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "platform/com_ptr.h"

namespace platform {

/// Base of an object that implements interfaces: an atomic reference count that starts at 1, and a
/// QueryInterface that answers `Primary` (also for IUnknown), the other `Interfaces`, and each
/// id that `AnswersAlso` names, such as the base of an implemented interface.
/// Derived classes have a virtual destructor through this one and are made by MakeObject.
template <class Primary, class... Interfaces>
class ComObject : public Primary, public Interfaces... {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (IsEqualIID(id, InterfaceId<IUnknown>())) {
            *object = static_cast<Primary*>(this);
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
    template <class T>
    bool Answer(REFIID id, void** object) noexcept {
        if (!IsEqualIID(id, InterfaceId<T>())) return false;
        *object = static_cast<T*>(this);
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
