#include "browser/window_classes.h"
#include "driver/module_folder.h"
#include "foundation/library.h"
#include "platform/modules.h"

/// The module's start and end, in one place.
/// \return FALSE, so that the module is not loaded, when its own folder cannot be read.
extern "C" QVD_EXPORT BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) noexcept {
    if (reason == DLL_PROCESS_ATTACH) {
        if (!AttachModule(module)) return FALSE;
        AUX::StartLibrary();
    } else if (reason == DLL_PROCESS_DETACH) {
        UnregisterWindowClasses();
        AUX::EndLibrary();
        DetachModule();
    }
    return TRUE;
}
