#pragma once

#include "platform/com_ptr.h"
#include "platform/typeinfo.h"

namespace platform {

/// Answers the operations of an IDispatch from its type information, which is loaded when it is
/// first asked for. Belongs to the thread of its object.
class TypedDispatch {
public:
    /// Gives a reference to the type information, or the code of a failure; then it is asked again.
    using Loader = HRESULT (*)(ITypeInfo** info) noexcept;

    explicit TypedDispatch(Loader loader) noexcept : load_(loader) {}

    /// The operations of IDispatch; the language makes no difference.
    HRESULT GetTypeInfoCount(UINT* count) noexcept;
    HRESULT GetTypeInfo(UINT index, ITypeInfo** info) noexcept;
    HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
    /// \param instance  The object's pointer to the interface that is described.
    HRESULT Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                   UINT* argumentError) noexcept;

private:
    [[nodiscard]] HRESULT Load() noexcept;

    Loader load_;
    ComPtr<ITypeInfo> info_;
};

}  // namespace platform
