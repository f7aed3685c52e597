#pragma once

#include <atomic>

#include "platform/com_object.h"
#include "platform/modules.h"
#include "platform/typeinfo.h"

namespace platform {

/// Answers the operations of IDispatch for the classes of one dual interface by its type
/// information, which is loaded from the library of a module on first use and kept until Forget.
/// One constant object an interface; any thread may use it.
class DualDispatch {
public:
    /// \param interfaceId  The interface's, as &InterfaceId<Interface>.
    /// \param module       Gives the module whose resource TYPELIB 1 describes the interface.
    constexpr DualDispatch(const IID& (*interfaceId)() noexcept,
                           HMODULE (*module)() noexcept) noexcept
        : interfaceId_(interfaceId), module_(module) {}
    DualDispatch(const DualDispatch&) = delete;
    DualDispatch& operator=(const DualDispatch&) = delete;

    /// \return E_POINTER.
    HRESULT GetTypeInfoCount(UINT* count) noexcept;
    /// \return E_POINTER, DISP_E_BADINDEX for another index than 0, LoadTypeLib's codes.
    HRESULT GetTypeInfo(UINT index, ITypeInfo** info) noexcept;
    /// \param reserved  IID_NULL, else DISP_E_UNKNOWNINTERFACE.
    HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
    /// \param instance  The object as the dual interface.
    HRESULT Invoke(IDispatch* instance, DISPID member, REFIID reserved, WORD flags,
                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                   UINT* argumentError) noexcept;

    /// Releases what was loaded; at the module's end, when no object is left.
    void Forget() noexcept;

private:
    /// The information, not counted; null with the reason in `result`.
    ITypeInfo* Load(HRESULT& result) noexcept;

    const IID& (*const interfaceId_)() noexcept;
    HMODULE (*const module_)() noexcept;
    std::atomic<ITypeInfo*> info_{nullptr};
};

/// The dual interface `Interface` with IDispatch answered by `Dispatch`, for ComObject.
template <class Interface, DualDispatch& Dispatch>
class DualInterface : public Interface {
public:
    using Implements = Interface;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return Dispatch.GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        return Dispatch.GetTypeInfo(index, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        return Dispatch.GetIDsOfNames(reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return Dispatch.Invoke(static_cast<Interface*>(this), member, reserved, flags, parameters,
                               result, exception, argumentError);
    }
};

}  // namespace platform
