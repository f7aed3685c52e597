#include "platform/dual_dispatch.h"

namespace platform {

HRESULT DualDispatch::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT DualDispatch::GetTypeInfo(UINT index, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    HRESULT result = S_OK;
    ITypeInfo* const loaded = Load(result);
    *info = ComPtr<ITypeInfo>(loaded).Detach();
    return result;
}

HRESULT DualDispatch::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                    DISPID* ids) noexcept {
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    HRESULT result = S_OK;
    ITypeInfo* const info = Load(result);
    return info ? info->GetIDsOfNames(names, count, ids) : result;
}

HRESULT DualDispatch::Invoke(IDispatch* instance, DISPID member, REFIID reserved, WORD flags,
                             DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                             UINT* argumentError) noexcept {
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    HRESULT status = S_OK;
    ITypeInfo* const info = Load(status);
    if (!info) return status;
    return info->Invoke(instance, member, flags, parameters, result, exception, argumentError);
}

void DualDispatch::Forget() noexcept {
    if (ITypeInfo* const info = info_.exchange(nullptr)) info->Release();
}

ITypeInfo* DualDispatch::Load(HRESULT& result) noexcept {
    if (ITypeInfo* const known = info_.load(std::memory_order_acquire)) return known;
    WCHAR path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module_(), path, MAX_PATH);
    result = TYPE_E_CANTLOADLIBRARY;
    if (length == 0 || length >= MAX_PATH) return nullptr;
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> info;
    result = LoadTypeLib(path, library.Put());
    if (SUCCEEDED(result)) result = library->GetTypeInfoOfGuid(interfaceId_(), info.Put());
    if (FAILED(result)) return nullptr;
    // Two threads may load it at a time; the first one's stays.
    ITypeInfo* known = nullptr;
    if (info_.compare_exchange_strong(known, info.Get(), std::memory_order_acq_rel)) {
        return info.Detach();
    }
    return known;
}

}  // namespace platform
