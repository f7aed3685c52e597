#pragma once

#include "foundation/allocated.h"
#include "objects/type_holders.h"
#include "platform/com_object.h"
#include "resources/generated/addin.h"

/// What all objects of the family share. Unless told otherwise an object is not thread-safe, its
/// reference count apart. Every operation looks at its places for results first (E_POINTER), sets
/// them to null or zero, then at its other arguments (E_INVALIDARG); E_OUTOFMEMORY leaves the
/// object as it was.
namespace AUX {

/// How many objects of the family are alive, the module's own among them.
[[nodiscard]] LONG LiveObjects() noexcept;

/// A base of each object that counts.
class LiveObject {
protected:
    LiveObject() noexcept;
    ~LiveObject();
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
};

/// Turns an integer of 64 bits, which script engines refuse, into one of 32 bits or a double if
/// that is the same number.
void SimplifyNumber(VARIANT& number) noexcept;

/// The calls by name of a dual interface, answered from its description.
template <class Interface>
class DualBase : public Interface {
public:
    using Implements = Interface;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        TypeInfoHolder* const types = TypesOf<Interface>();
        return types ? types->GetTypeInfoCount(count) : kNoTypes;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        TypeInfoHolder* const types = TypesOf<Interface>();
        return types ? types->GetTypeInfo(index, info) : kNoTypes;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        TypeInfoHolder* const types = TypesOf<Interface>();
        return types ? types->GetIDsOfNames(reserved, names, count, ids) : kNoTypes;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        TypeInfoHolder* const types = TypesOf<Interface>();
        if (!types) return kNoTypes;
        const HRESULT status = types->Invoke(static_cast<Interface*>(this), member, reserved, flags,
                                             parameters, result, exception, argumentError);
        if (SUCCEEDED(status) && result) SimplifyNumber(*result);
        return status;
    }
};

/// An object with one interface, in a block of the library's allocator.
template <class Interface>
class PlainObject : public platform::ComObject<Interface>, public Allocated, LiveObject {};

/// An object with one dual interface, and those that it is reached by from inside.
template <class Interface, class... Inner>
class DualObject : public platform::ComObject<DualBase<Interface>, Inner...>,
                   public Allocated,
                   LiveObject {};

/// Makes an object into an out pointer.
template <class Class, class Interface, class... Arguments>
[[nodiscard]] HRESULT MakeInto(Interface** result, Arguments&&... arguments) noexcept {
    if (!result) return E_POINTER;
    *result = platform::MakeObject<Class>(static_cast<Arguments&&>(arguments)...).Detach();
    return *result ? S_OK : E_OUTOFMEMORY;
}

/// Whether an object has more references than `own` at this moment.
template <class Object>
[[nodiscard]] bool IsHeldBeside(Object& object, ULONG own) noexcept {
    object.AddRef();
    return object.Release() > own;
}

/// The Boolean of the interfaces.
constexpr VARIANT_BOOL ToVariantBool(bool value) noexcept {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

/// Gives a value through a place that may be missing.
template <class T, class Value>
HRESULT Give(T* place, Value value) noexcept {
    if (!place) return E_POINTER;
    *place = static_cast<T>(value);
    return S_OK;
}

/// Gives a copy of a text, an empty one as an empty BSTR.
HRESULT GiveText(BSTR* place, const WCHAR* text, UINT length) noexcept;

}  // namespace AUX
