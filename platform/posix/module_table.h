#pragma once

/// The loaded modules of the process. Callers hold `ModuleLock()` over the use of an entry; the
/// lock may be taken again by the thread that holds it, as a DllMain may load modules of its own.

#include <mutex>
#include <string>

#include "platform/modules.h"
#include "platform/posix/module_image.h"
#include "platform/text.h"

namespace platform {

/// One module; its address is its HMODULE.
struct Module {
    void* library = nullptr;  // from dlopen; null for the program and for built-in modules
    WideString path;          // whole, Windows' form
    unsigned uses = 0;
    bool isAttached = false;  // its DllMain has been told of the start and not yet of the end
    bool isData = false;      // its code was not loaded: it has resources only
    ModuleImage image;        // mapped when the first resource is asked for
};

std::recursive_mutex& ModuleLock() noexcept;

/// The entry of a handle; null with ERROR_MOD_NOT_FOUND.
Module* FindModule(HMODULE handle) noexcept;

/// Whether the layer provides a module of this base name. Case does not count.
[[nodiscard]] bool IsBuiltIn(WideView baseName) noexcept;
/// A function of a built-in module; null if it has none of this name.
[[nodiscard]] FARPROC BuiltInFunction(WideView baseName, const char* name) noexcept;

/// What follows the last separator.
[[nodiscard]] WideView BaseNameOf(WideView path) noexcept;
/// Whether two names are equal but for the case of A to Z.
[[nodiscard]] bool IsSameName(WideView a, WideView b) noexcept;

}  // namespace platform
