#include <algorithm>
#include <mutex>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/modules.h"
#include "platform/posix/com_calls.h"
#include "platform/posix/component_categories.h"
#include "platform/posix/faults.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace platform {
namespace {

using GetClassObject = HRESULT(REFCLSID classId, REFIID id, void** object);
using CanUnloadNow = HRESULT();

thread_local unsigned uses = 0;

/// The servers that were loaded for their classes, each once. Never destroyed: objects of theirs
/// may live as long as the process.
struct Servers {
    std::mutex lock;
    std::vector<ModuleHandle> modules;
};
Servers& LoadedServers() {
    static Servers& servers = *new Servers;
    return servers;
}

/// The path in the default value of a class's InprocServer32.
bool ReadServerPath(REFCLSID classId, WideString& path) {
    WCHAR id[39];
    StringFromGUID2(classId, id, 39);
    RegistryKey key;
    const WideString place = TEXT("CLSID\\") + WideString(id) + TEXT("\\InprocServer32");
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, place.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        return false;
    }
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key.Get(), nullptr, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        type != REG_SZ) {
        return false;
    }
    path.resize(size / sizeof(WCHAR) + 1);
    size = static_cast<DWORD>(path.size() * sizeof(WCHAR));
    if (RegQueryValueExW(key.Get(), nullptr, nullptr, &type, reinterpret_cast<BYTE*>(path.data()),
                         &size) != ERROR_SUCCESS) {
        return false;
    }
    path.resize(std::min(path.find(u'\0'), path.size()));
    return true;
}

/// The factory of a registered class. Its module stays loaded until it can go.
HRESULT FindFactory(REFCLSID classId, ComPtr<IClassFactory>& factory) {
    WideString path;
    if (!ReadServerPath(classId, path)) return REGDB_E_CLASSNOTREG;
    ModuleHandle module(LoadLibraryW(path.c_str()));
    if (!module) return CO_E_DLLNOTFOUND;
    auto* const getClassObject = ProcedureOf<GetClassObject>(module.Get(), "DllGetClassObject");
    if (!getClassObject) return CO_E_ERRORINDLL;
    {
        Servers& servers = LoadedServers();
        const std::lock_guard guard(servers.lock);
        const bool isKnown =
            std::any_of(servers.modules.begin(), servers.modules.end(),
                        [&](const auto& known) { return known.Get() == module.Get(); });
        if (!isKnown) servers.modules.push_back(std::move(module));
    }
    void* found = nullptr;
    const HRESULT result = getClassObject(classId, InterfaceId<IClassFactory>(), &found);
    if (SUCCEEDED(result)) factory.Attach(static_cast<IClassFactory*>(found));
    return result;
}

}  // namespace
}  // namespace platform

HRESULT CoInitializeEx(LPVOID reserved, DWORD kind) noexcept {
    if (reserved || kind != COINIT_APARTMENTTHREADED) return E_INVALIDARG;
    return platform::uses++ == 0 ? S_OK : S_FALSE;
}

HRESULT CoInitialize(LPVOID reserved) noexcept {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

void CoUninitialize() noexcept {
    if (platform::uses > 0) --platform::uses;
}

HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void*, REFIID id,
                         void** factory) noexcept {
    using namespace platform;
    if (!factory) return E_POINTER;
    *factory = nullptr;
    if (InjectFault("CoGetClassObject")) return REGDB_E_CLASSNOTREG;
    if (uses == 0) return CO_E_NOTINITIALIZED;
    if (!(context & CLSCTX_INPROC_SERVER)) return REGDB_E_CLASSNOTREG;
    ComPtr<IClassFactory> found;
    const HRESULT result = FindFactory(classId, found);
    return SUCCEEDED(result) ? found->QueryInterface(id, factory) : result;
}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID id,
                         void** object) noexcept {
    using namespace platform;
    if (!object) return E_POINTER;
    *object = nullptr;
    if (InjectFault("CoCreateInstance")) return REGDB_E_CLASSNOTREG;
    if (uses == 0) return CO_E_NOTINITIALIZED;
    if (!(context & CLSCTX_INPROC_SERVER)) return REGDB_E_CLASSNOTREG;
    if (classId == CLSID_StdComponentCategoriesMgr) {
        return outer ? CLASS_E_NOAGGREGATION : MakeComponentCategories(id, object);
    }
    ComPtr<IClassFactory> factory;
    const HRESULT result = FindFactory(classId, factory);
    return SUCCEEDED(result) ? factory->CreateInstance(outer, id, object) : result;
}

void CoFreeUnusedLibraries() noexcept {
    using namespace platform;
    Servers& servers = LoadedServers();
    std::vector<ModuleHandle> unused;
    {
        const std::lock_guard guard(servers.lock);
        const auto isUsed = [](const ModuleHandle& module) {
            auto* const canUnload = ProcedureOf<CanUnloadNow>(module.Get(), "DllCanUnloadNow");
            return !canUnload || canUnload() != S_OK;
        };
        const auto firstUnused =
            std::stable_partition(servers.modules.begin(), servers.modules.end(), isUsed);
        std::move(firstUnused, servers.modules.end(), std::back_inserter(unused));
        servers.modules.erase(firstUnused, servers.modules.end());
    }
    // They end here, outside the lock: a module's end may use other classes.
}
