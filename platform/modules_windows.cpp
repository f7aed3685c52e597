#include "platform/handles.h"
#include "platform/modules.h"

namespace platform {

namespace {

DWORD WINAPI FreeAndExit(void* module) {
    FreeLibraryAndExitThread(static_cast<HMODULE>(module), 0);
}

}  // namespace

void FreeLibraryOnThread(HMODULE module) noexcept {
    // Without a thread the module stays, which the end of the process mends.
    HANDLE const thread = CreateThread(nullptr, 0, FreeAndExit, module, 0, nullptr);
    if (thread) CloseHandle(thread);
}

}  // namespace platform
