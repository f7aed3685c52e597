#pragma once

/// Loaded modules and their exports.

#include "platform/unique_handle.h"

#ifndef _WIN32
#include "platform/posix/module_calls.h"
#endif

namespace platform {

struct ModuleHandleTraits {
    using Value = HMODULE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { FreeLibrary(value); }
};
/// Owns one use of a loaded module.
using ModuleHandle = UniqueHandle<ModuleHandleTraits>;

/// Gives up one use of a module on a thread of its own, for callers that may be called by the
/// loader of modules. Natively at once: nothing is held there meanwhile.
void FreeLibraryOnThread(HMODULE module) noexcept;

/// Looks up an export under its function type; null if there is none.
template <class Function>
[[nodiscard]] Function* ProcedureOf(HMODULE module, const char* name) noexcept {
    // By way of void*: the exports' common type says nothing about the real one.
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace platform
