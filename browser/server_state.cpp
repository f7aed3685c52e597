#include "browser/server_state.h"

#include <atomic>

#include "browser/browser_helper_object.h"
#include "browser/class_factory.h"
#include "objects/root_object.h"
#include "platform/com_ptr.h"
#include "platform/sync.h"

namespace {

constinit std::atomic<LONG> moduleLocks{0};
constinit CRITICAL_SECTION factoryLock = {};
constinit std::atomic<bool> hasStarted{false};

struct ServedClass {
    CLSID id;
    ObjectMaker maker;
    // One reference, given back by EndServer: at the process's end nobody may run a destructor.
    std::atomic<IClassFactory*> factory;
};

HRESULT GiveRoot(REFIID id, void** object) noexcept {
    return AUX::Root().QueryInterface(id, object);
}

constinit ServedClass servedClasses[] = {{kAddinClassId, MakeBrowserHelperObject, nullptr},
                                         {kRootClassId, GiveRoot, nullptr}};

IClassFactory* FactoryOf(ServedClass& served) noexcept {
    IClassFactory* factory = served.factory.load(std::memory_order_acquire);
    if (factory) return factory;
    EnterCriticalSection(&factoryLock);
    factory = served.factory.load(std::memory_order_relaxed);
    if (!factory) {  // Another thread may have made it meanwhile.
        factory = MakeClassFactory(served.maker).Detach();
        served.factory.store(factory, std::memory_order_release);
    }
    LeaveCriticalSection(&factoryLock);
    return factory;
}

}  // namespace

bool StartServer() noexcept {
    hasStarted = InitializeCriticalSectionAndSpinCount(&factoryLock, 0) != FALSE;
    return hasStarted;
}

void EndServer() noexcept {
    if (!hasStarted.exchange(false)) return;
    for (ServedClass& served : servedClasses) {
        platform::ComPtr<IClassFactory> last;
        last.Attach(served.factory.exchange(nullptr));
    }
    DeleteCriticalSection(&factoryLock);
}

void LockModule() noexcept { moduleLocks.fetch_add(1, std::memory_order_relaxed); }

void UnlockModule() noexcept { moduleLocks.fetch_sub(1, std::memory_order_acq_rel); }

bool IsModuleLocked() noexcept {
    return moduleLocks.load(std::memory_order_acquire) != 0 || AUX::Root().AreObjectsInUse();
}

HRESULT GetClassFactory(REFCLSID classId, REFIID id, void** factory) noexcept {
    if (!factory) return E_POINTER;
    *factory = nullptr;
    if (!hasStarted) return E_UNEXPECTED;
    for (ServedClass& served : servedClasses) {
        if (!IsEqualGUID(served.id, classId)) continue;
        IClassFactory* const found = FactoryOf(served);
        return found ? found->QueryInterface(id, factory) : E_OUTOFMEMORY;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}
