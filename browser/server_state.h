#pragma once

#include "platform/com_library.h"

/// What the module is as a server: how many hold it, and for whom it is registered. The counts may
/// be changed from any thread; the scope belongs to the installer's.

/// The class that browsers make, and what belongs to it.
inline constexpr CLSID kAddinClassId = {
    0x5E1D7B20, 0x6C43, 0x4A9E, {0x9D, 0x17, 0x3B, 0x8C, 0x2F, 0x60, 0xA1, 0xD4}};
inline constexpr GUID kTypeLibraryId = {
    0xC17A04E2, 0x2B9D, 0x4F03, {0x8E, 0x6A, 0x71, 0xD0, 0x5C, 0x3E, 0x9B, 0x18}};
inline constexpr WCHAR kAddinClassText[] = TEXT("{5E1D7B20-6C43-4A9E-9D17-3B8C2F60A1D4}");
inline constexpr WCHAR kApplicationIdText[] = TEXT("{98F3E6B1-44C7-4D2A-B05E-1E7A6D2C4F30}");

/// Makes the lock that guards the factory. Called once, when the module is loaded.
[[nodiscard]] bool StartServer() noexcept;
/// Gives the factory back. Called when the module is unloaded.
void EndServer() noexcept;

/// Keeps the module loaded, until as many calls of UnlockModule.
void LockModule() noexcept;
void UnlockModule() noexcept;
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
