#include "browser/event_sink.h"

#include "browser/browser_helper_object.h"
#include "platform/com_ptr.h"

namespace {

HRESULT LoadEventTypes(ITypeInfo** info) noexcept {
    platform::ComPtr<ITypeLib> library;
    const WORD(&version)[2] = QVDIEaddinBHO::EventLibraryVersion;
    const HRESULT result =
        LoadRegTypeLib(QVDIEaddinBHO::EventSourceLibrary, version[0], version[1], 0, library.Put());
    return FAILED(result) ? result
                          : library->GetTypeInfoOfGuid(QVDIEaddinBHO::EventInterface, info);
}

}  // namespace

EventSink::EventSink(QVDIEaddinBHO& owner) noexcept : owner_(owner), types_(LoadEventTypes) {}

HRESULT STDMETHODCALLTYPE EventSink::QueryInterface(REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(id, platform::InterfaceId<IUnknown>()) &&
        !IsEqualIID(id, platform::InterfaceId<IDispatch>()) &&
        !IsEqualIID(id, QVDIEaddinBHO::EventInterface)) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE EventSink::AddRef() noexcept { return owner_.AddRef(); }

ULONG STDMETHODCALLTYPE EventSink::Release() noexcept { return owner_.Release(); }

HRESULT STDMETHODCALLTYPE EventSink::GetTypeInfoCount(UINT* count) noexcept {
    return types_.GetTypeInfoCount(count);
}

HRESULT STDMETHODCALLTYPE EventSink::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept {
    return types_.GetTypeInfo(index, info);
}

HRESULT STDMETHODCALLTYPE EventSink::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                                   LCID, DISPID* ids) noexcept {
    return types_.GetIDsOfNames(reserved, names, count, ids);
}

HRESULT STDMETHODCALLTYPE EventSink::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*,
                                            VARIANT*, EXCEPINFO*, UINT*) noexcept {
    if (member == DISPID_WINDOWSTATECHANGED) {
        // What is shown or hidden meanwhile may give up the browser's last reference.
        const platform::ComPtr<QVDIEaddinBHO> owner(&owner_);
        owner->OnWindowStateChanged();
    }
    return S_OK;
}
