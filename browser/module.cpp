#include "browser/server_state.h"
#include "browser/toolbar_state.h"
#include "browser/type_library.h"
#include "browser/window_classes.h"
#include "foundation/library.h"
#include "foundation/module_folder.h"
#include "objects/root_object.h"
#include "platform/modules.h"

namespace {

// Windows tells of the end also when the start has failed.
constinit bool hasStarted = false;

HRESULT LoadTypes(ITypeLib** library) noexcept {
    platform::ComPtr<ITypeLib> loaded;
    const HRESULT result = LoadAddinTypeLibrary(loaded);
    *library = loaded.Detach();
    return result;
}

enum class Ends { Module, Process };

// At the end of the process the modules that hosts' sinks live in may have ended before: what the
// objects hold goes with the process then.
void End(Ends what) noexcept {
    UnregisterWindowClasses();
    SharedToolbarState().Store();
    if (what == Ends::Module) AUX::EndObjects();
    AUX::EndLibrary();
    EndServer();
    DetachModule();
}

// In this order; the library's memory has started before. Whatever a later step needs stands by
// then. What can wait is done at its first use: the system holds its lock on modules meanwhile.
bool Start(HINSTANCE module) noexcept {
    DisableThreadLibraryCalls(module);
    if (!AttachModule(module)) return false;
    if (!StartServer()) {
        DetachModule();
        return false;
    }
    if (!SharedToolbarState().Load()) {
        EndServer();
        DetachModule();
        return false;
    }
    AUX::StartLibrary();
    if (AUX::StartObjects(LoadTypes)) return true;
    End(Ends::Module);
    return false;
}

}  // namespace

/// The module's start and end, in one place.
/// \return FALSE, so that the module is not loaded, when its own folder cannot be read, one of its
///         locks cannot be made, or memory runs out.
extern "C" QVD_EXPORT BOOL WINAPI DllMain(HINSTANCE module, DWORD reason,
                                          LPVOID processEnds) noexcept {
    if (reason == DLL_PROCESS_ATTACH) {
        hasStarted = Start(module);
        return hasStarted ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH && hasStarted) {
        End(processEnds ? Ends::Process : Ends::Module);
    }
    return TRUE;
}
