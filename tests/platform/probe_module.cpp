#include <cstdlib>

#include "platform/modules.h"

/// A module that tests load: it counts its starts, tells a caller of its end, and refuses to start
/// where the environment variable QUVADA_TEST_REFUSE is set.

namespace {
HINSTANCE ownInstance = nullptr;
int attached = 0;
int* detachCounter = nullptr;
}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        ownInstance = instance;
        ++attached;
        return std::getenv("QUVADA_TEST_REFUSE") == nullptr;
    }
    if (reason == DLL_PROCESS_DETACH && detachCounter) ++*detachCounter;
    return TRUE;
}

extern "C" HINSTANCE ProbeInstance() { return ownInstance; }
extern "C" int ProbeAttached() { return attached; }
extern "C" void ProbeCountDetach(int* counter) { detachCounter = counter; }
