#include "browser/type_library.h"

#include "browser/registry_tree.h"
#include "browser/server_state.h"
#include "foundation/module_folder.h"
#include "platform/modules.h"
#include "platform/registry.h"

namespace {

constexpr WCHAR kAutomation[] = TEXT("OLEAUT32.DLL");

using RegisterFunction = HRESULT STDMETHODCALLTYPE(ITypeLib*, LPOLESTR, LPOLESTR);
using UnregisterFunction = HRESULT STDMETHODCALLTYPE(REFGUID, WORD, WORD, LCID, SYSKIND);

// Loads the library and tells the path that it was found under.
HRESULT Load(AUX::WString& path, platform::ComPtr<ITypeLib>& library) noexcept {
    WCHAR module[MAX_PATH];
    const DWORD length = GetModuleFileNameW(ModuleInstance(), module, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return ResultOf(ERROR_INSUFFICIENT_BUFFER);
    if (!path.Assign(module, length)) return E_OUTOFMEMORY;
    HRESULT result = LoadTypeLib(path.Text(), library.Put());
    if (SUCCEEDED(result)) return result;
    const std::size_t dot = AUX::WStringView(path).rfind(TEXT('.'));
    if (dot != AUX::WStringView::npos && !path.SetLength(static_cast<std::uint32_t>(dot))) {
        return E_OUTOFMEMORY;
    }
    if (!path.Append(TEXT(".tlb"))) return E_OUTOFMEMORY;
    return LoadTypeLib(path.Text(), library.Put());
}

// The user's form of a call, where it is wanted and there.
template <class Function>
Function* ForUser(ScriptScope scope, const char* name) noexcept {
    if (scope != ScriptScope::User) return nullptr;
    return platform::ProcedureOf<Function>(GetModuleHandleW(kAutomation), name);
}

// Of the calls that remove one, some systems' say that access was refused when there is none.
bool IsRegistered(REFGUID id) noexcept {
    WCHAR path[48] = TEXT("TypeLib\\");
    constexpr int kNameAt = 8;
    platform::RegistryKey key;
    return StringFromGUID2(id, path + kNameAt, 48 - kNameAt) != 0 &&
           RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, key.Put()) == ERROR_SUCCESS;
}

}  // namespace

HRESULT LoadAddinTypeLibrary(platform::ComPtr<ITypeLib>& library) noexcept {
    AUX::WString path;
    return Load(path, library);
}

HRESULT RegisterAddinTypeLibrary(ScriptScope scope) noexcept {
    AUX::WString path;
    platform::ComPtr<ITypeLib> library;
    const HRESULT result = Load(path, library);
    if (FAILED(result)) return result;
    auto* const forUser = ForUser<RegisterFunction>(scope, "RegisterTypeLibForUser");
    return (forUser ? forUser : RegisterTypeLib)(library.Get(), path.Data(), nullptr);
}

HRESULT UnregisterAddinTypeLibrary(ScriptScope scope) noexcept {
    platform::ComPtr<ITypeLib> library;
    HRESULT result = LoadAddinTypeLibrary(library);
    if (FAILED(result)) return result;
    if (!IsRegistered(kTypeLibraryId)) return S_OK;
    TLIBATTR* attributes = nullptr;
    result = library->GetLibAttr(&attributes);
    if (FAILED(result)) return result;
    auto* const forUser = ForUser<UnregisterFunction>(scope, "UnRegisterTypeLibForUser");
    result = (forUser ? forUser : UnRegisterTypeLib)(attributes->guid, attributes->wMajorVerNum,
                                                     attributes->wMinorVerNum, attributes->lcid,
                                                     attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    return result;
}
