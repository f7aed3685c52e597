#include "platform/typed_dispatch.h"

namespace platform {

HRESULT TypedDispatch::Load() noexcept { return info_ ? S_OK : load_(info_.Put()); }

HRESULT TypedDispatch::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT TypedDispatch::GetTypeInfo(UINT index, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT result = Load();
    if (SUCCEEDED(result)) *info = ComPtr<ITypeInfo>(info_).Detach();
    return result;
}

HRESULT TypedDispatch::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                     DISPID* ids) noexcept {
    if (!names || !ids) return E_POINTER;
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    const HRESULT result = Load();
    return FAILED(result) ? result : info_->GetIDsOfNames(names, count, ids);
}

HRESULT TypedDispatch::Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                              DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                              UINT* argumentError) noexcept {
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    const HRESULT loaded = Load();
    if (FAILED(loaded)) return loaded;
    return info_->Invoke(instance, member, flags, parameters, result, exception, argumentError);
}

}  // namespace platform
