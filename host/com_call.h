#pragma once

#include <new>

#include "platform/com_ptr.h"
#include "platform/text.h"

namespace host {

/// Runs the body of an operation of COM, which may throw. \return what it gives; E_OUTOFMEMORY.
template <class Body>
HRESULT ComCall(Body body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

/// A text for a caller who frees it. \return E_POINTER, E_OUTOFMEMORY.
HRESULT GiveText(const platform::WideString& text, BSTR* result) noexcept;

/// A new object for a caller who releases it. \return E_POINTER, E_OUTOFMEMORY.
template <class Interface, class Object>
HRESULT GiveObject(platform::ComPtr<Object> object, Interface** result) noexcept {
    *result = object.Detach();
    return *result ? S_OK : E_OUTOFMEMORY;
}

}  // namespace host
