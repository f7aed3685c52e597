#pragma once

#include "browser/script_text.h"
#include "platform/com_ptr.h"
#include "platform/typeinfo.h"

/// The module's type library: the resource TYPELIB 1, or a ".tlb" beside the module.

/// Loads it. \return LoadTypeLib's code.
[[nodiscard]] HRESULT LoadAddinTypeLibrary(platform::ComPtr<ITypeLib>& library) noexcept;

/// Registers and removes it, for the current user where the system can. To remove one that is not
/// registered is no failure: what an installation left that failed before it can be removed.
[[nodiscard]] HRESULT RegisterAddinTypeLibrary(ScriptScope scope) noexcept;
[[nodiscard]] HRESULT UnregisterAddinTypeLibrary(ScriptScope scope) noexcept;
