#pragma once

/// Modules for systems whose modules are ELF files. A module that exports `DllMain` has it called
/// with DLL_PROCESS_ATTACH after loading and DLL_PROCESS_DETACH before unloading, or at the end of
/// the process, on the thread that does so. There are no thread notifications.

#include "platform/base.h"

inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;

/// Loads a module, or counts one more use of a loaded one.
/// \param name  A path, or a base name: that of a loaded module or of a built-in one
/// ("shell32.dll"),
///              else a file in the program's own folder. Base names match without regard to the
///              case of A to Z. A name without extension gets ".dll"; one dot at the end prevents
///              that.
/// \return null with ERROR_MOD_NOT_FOUND, ERROR_BAD_EXE_FORMAT (no module of this machine) or
///         ERROR_DLL_INIT_FAILED (its DllMain gave FALSE).
HMODULE LoadLibraryW(LPCWSTR name) noexcept;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 2;
/// With LOAD_LIBRARY_AS_DATAFILE gives a module of which only the resources can be read: its code
/// is not run, it has no exports, and no name finds it. Without flags the same as LoadLibraryW.
/// \param file  Null.
/// \return null with LoadLibraryW's error codes, ERROR_INVALID_PARAMETER for other flags.
HMODULE LoadLibraryExW(LPCWSTR name, HANDLE file, DWORD flags) noexcept;
/// ERROR_MOD_NOT_FOUND if `module` is not loaded.
BOOL FreeLibrary(HMODULE module) noexcept;
/// There are no notifications of threads to be without.
inline BOOL DisableThreadLibraryCalls(HMODULE) noexcept { return TRUE; }
/// Null with ERROR_PROC_NOT_FOUND. Exports of the modules that it depends on do not count.
FARPROC GetProcAddress(HMODULE module, LPCSTR name) noexcept;
/// The module with this base name or path, not counted; null is the program.
HMODULE GetModuleHandleW(LPCWSTR name) noexcept;
HMODULE GetModuleHandleA(LPCSTR name) noexcept;
/// The path of a module, null being the program. \return the length; `size` with
/// ERROR_INSUFFICIENT_BUFFER if the path was cut to fit; 0 on failure.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) noexcept;
