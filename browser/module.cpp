#include "browser/server_state.h"
#include "browser/toolbar_state.h"
#include "browser/window_classes.h"
#include "foundation/library.h"
#include "foundation/module_folder.h"
#include "platform/modules.h"

namespace {

// Windows tells of the end also when the start has failed.
constinit bool hasStarted = false;

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
    return true;
}

void End() noexcept {
    UnregisterWindowClasses();
    AUX::EndLibrary();
    SharedToolbarState().Store();
    EndServer();
    DetachModule();
}

}  // namespace

/// The module's start and end, in one place.
/// \return FALSE, so that the module is not loaded, when its own folder cannot be read or one of
///         its locks cannot be made.
extern "C" QVD_EXPORT BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) noexcept {
    if (reason == DLL_PROCESS_ATTACH) {
        hasStarted = Start(module);
        return hasStarted ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH && hasStarted) End();
    return TRUE;
}
