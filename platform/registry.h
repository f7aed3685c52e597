#pragma once

/// The registry. Natively it is a store on disk, `registry.db` in the profile folder, that all
/// processes of the user share; every call is atomic. It differs from Windows in this:
/// - The roots are HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE, both in the one file, and
///   HKEY_CLASSES_ROOT, which shows parts of both.
/// - RegSetValueExW keeps exactly the bytes given; Windows may add a terminator that it finds
///   behind a text.
/// - A file that is no registry gives ERROR_BADDB, a damaged one ERROR_REGISTRY_CORRUPT; it is
///   never replaced. ERROR_DISK_FULL leaves the old content. CheckProfile (platform/profile.h)
///   says in words what is wrong.

#include "platform/handles.h"
#ifdef _WIN32
#include <ktmw32.h>
#else
#include "platform/posix/registry_types.h"
#endif
#include "platform/unique_handle.h"

namespace platform {

struct RegistryKeyTraits {
    using Value = HKEY;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { RegCloseKey(value); }
};

/// An open registry key.
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

/// A transaction over the registry, undone at the end unless committed; INVALID_HANDLE_VALUE is
/// none.
using TransactionHandle = UniqueHandle<FileHandleTraits>;

}  // namespace platform
