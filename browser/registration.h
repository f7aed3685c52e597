#pragma once

#include <span>

#include "browser/script_runner.h"

/// What an installer has the module do. All of it runs alone, on the installer's thread, which has
/// initialised COM. Failures are codes; nothing is shown.

/// Runs a script of the module's resources (type REGISTRY).
/// \param extra  Variables that are found before the module's own: APPID, Module (the module's
///               path, with each single quote doubled) and Module_Raw, the same text.
/// \return 0x8007007A for a path of 260 characters or more, the system's code if there is no such
///         resource, or what ScriptRunner gives.
[[nodiscard]] HRESULT RunScript(UINT resourceId, ScriptRunner::Mode mode,
                                std::span<const ScriptVariable> extra) noexcept;

/// Registers the class, its category and the type library. What was done before a failure stays.
[[nodiscard]] HRESULT RegisterServer() noexcept;

/// Removes what RegisterServer wrote. A failure ends it and is returned.
[[nodiscard]] HRESULT UnregisterServer() noexcept;

/// Registers, and removes all again after a failure; or unregisters.
/// \param commandLine  "user", in any case, has this module's classes registered for the current
///                     user from now on; any other text, or null, changes nothing.
[[nodiscard]] HRESULT InstallServer(bool installs, const WCHAR* commandLine) noexcept;
