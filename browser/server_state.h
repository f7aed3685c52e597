#pragma once

#include "browser/addin_class.h"
#include "platform/com_library.h"

/// What the module is as a server: how many hold it, and for whom it is registered. The counts may
/// be changed from any thread; the scope belongs to the installer's.

/// Makes the lock that guards the factory. Called once, when the module is loaded.
[[nodiscard]] bool StartServer() noexcept;
/// Gives the factory back. Called when the module is unloaded.
void EndServer() noexcept;

/// Keeps the module loaded, until as many calls of UnlockModule.
void LockModule() noexcept;
void UnlockModule() noexcept;
/// Whether it is kept so, or a host holds an object of the library's family.
[[nodiscard]] bool IsModuleLocked() noexcept;

/// The factory of one of the module's classes, made at the first use and kept until the module
/// ends.
/// \return E_POINTER, E_UNEXPECTED before StartServer, CLASS_E_CLASSNOTAVAILABLE, E_OUTOFMEMORY, or
///         what the factory's QueryInterface gives.
[[nodiscard]] HRESULT GetClassFactory(REFCLSID classId, REFIID id, void** factory) noexcept;

/// Keeps the module loaded as long as it lives: a member of each object that others may hold.
class ModuleUse {
public:
    ModuleUse() noexcept { LockModule(); }
    ~ModuleUse() { UnlockModule(); }
    ModuleUse(const ModuleUse&) = delete;
    ModuleUse& operator=(const ModuleUse&) = delete;
};
