#pragma once

#include "foundation/allocated.h"
#include "platform/com_object.h"
#include "platform/typed_dispatch.h"
#include "resources/generated/addin.h"

/// What all objects of the family share. Unless told otherwise an object is not thread-safe, its
/// reference count apart. Every operation looks at its places for results first (E_POINTER), sets
/// them to null or zero, then at its other arguments (E_INVALIDARG); E_OUTOFMEMORY leaves the
/// object as it was.
namespace AUX {

/// Gives the type library that describes the family.
using TypeLibraryLoader = HRESULT (*)(ITypeLib** library) noexcept;

/// Says where type information comes from; null gives back what is held. Belongs to the start and
/// the end of the module. Without it the objects answer calls by name with TYPE_E_ELEMENTNOTFOUND.
void SetTypeLibraryLoader(TypeLibraryLoader loader) noexcept;

/// The description of an interface; the library is loaded when it is first asked for. Any thread.
[[nodiscard]] HRESULT FindTypeInfo(REFIID id, ITypeInfo** info) noexcept;

/// The calls by name of a dual interface, answered from its description.
template <class Interface>
class DualBase : public Interface {
public:
    using Implements = Interface;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return Dispatch().GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        return Dispatch().GetTypeInfo(index, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        return Dispatch().GetIDsOfNames(reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return Dispatch().Invoke(static_cast<Interface*>(this), member, reserved, flags, parameters,
                                 result, exception, argumentError);
    }

private:
    // Made for each call, so that threads share nothing but the library.
    static platform::TypedDispatch Dispatch() noexcept {
        return platform::TypedDispatch([](ITypeInfo** info) noexcept {
            return FindTypeInfo(platform::InterfaceId<Interface>(), info);
        });
    }
};

/// An object with one interface, in a block of the library's allocator.
template <class Interface>
class PlainObject : public platform::ComObject<Interface>, public Allocated {};

/// An object with one dual interface, and those that it is reached by from inside.
template <class Interface, class... Inner>
class DualObject : public platform::ComObject<DualBase<Interface>, Inner...>, public Allocated {};

/// Makes an object into an out pointer.
template <class Class, class Interface, class... Arguments>
[[nodiscard]] HRESULT MakeInto(Interface** result, Arguments&&... arguments) noexcept {
    if (!result) return E_POINTER;
    *result = platform::MakeObject<Class>(static_cast<Arguments&&>(arguments)...).Detach();
    return *result ? S_OK : E_OUTOFMEMORY;
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
