#include "objects/frame.h"

#include <atomic>

namespace AUX {

namespace {

constinit std::atomic<TypeLibraryLoader> loadLibrary = nullptr;
constinit std::atomic<ITypeLib*> heldLibrary = nullptr;

HRESULT Library(ITypeLib*& library) noexcept {
    library = heldLibrary.load(std::memory_order_acquire);
    if (library) return S_OK;
    const TypeLibraryLoader load = loadLibrary.load();
    if (!load) return TYPE_E_ELEMENTNOTFOUND;
    platform::ComPtr<ITypeLib> loaded;
    const HRESULT result = load(loaded.Put());
    if (FAILED(result)) return result;
    // Of two threads that load it at once one keeps it.
    if (heldLibrary.compare_exchange_strong(library, loaded.Get())) library = loaded.Detach();
    return S_OK;
}

}  // namespace

void SetTypeLibraryLoader(TypeLibraryLoader loader) noexcept {
    loadLibrary = loader;
    platform::ComPtr<ITypeLib> dropped;
    dropped.Attach(heldLibrary.exchange(nullptr));
}

HRESULT FindTypeInfo(REFIID id, ITypeInfo** info) noexcept {
    ITypeLib* library = nullptr;
    const HRESULT result = Library(library);
    return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, info);
}

HRESULT GiveText(BSTR* place, const WCHAR* text, UINT length) noexcept {
    if (!place) return E_POINTER;
    *place = SysAllocStringLen(length ? text : TEXT(""), length);
    return *place ? S_OK : E_OUTOFMEMORY;
}

}  // namespace AUX
