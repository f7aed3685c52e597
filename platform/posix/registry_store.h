#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/posix/registry_database.h"
#include "platform/registry.h"

namespace platform {

using KeyId = std::int64_t;

/// A key that was found or made by its path.
struct KeyPlace {
    KeyId key = 0;
    std::optional<WideString> classPath;  // below HKEY_CLASSES_ROOT, if it was reached through that
};

/// The registry of this process: the connection to the profile's file and the open handles. One
/// connection, guarded by `lock`, since a handle may be used from any thread and a call takes
/// microseconds; the caller holds `lock` over each operation. It opens at the first use, and anew
/// when the file was replaced.
class RegistryStore {
public:
    static RegistryStore& Instance();

    std::mutex lock;

    /// What a handle stands for, checked: it is open, its key is in the present file, and it was
    /// opened with all of `access`. Roots have every access.
    LSTATUS Resolve(HKEY handle, REGSAM access, KeyId& key);

    /// Before a key is opened for writing: if only reading was possible so far, the next call
    /// opens the file anew.
    void Prepare(REGSAM access);

    /// Whether keys may be opened with `access`: ERROR_ACCESS_DENIED for writing where only
    /// reading is possible.
    LSTATUS CheckAccess(REGSAM access);

    HKEY AddHandle(KeyPlace place, REGSAM access);
    LSTATUS CloseHandle(HKEY handle);

    /// The key at a path below an open one; an empty path is that key itself.
    LSTATUS Find(HKEY base, WideView path, KeyPlace& place);
    /// The same, and makes what is missing of the path.
    LSTATUS Create(HKEY base, WideView path, KeyPlace& place, bool& created);
    LSTATUS DeleteTree(KeyId key, bool keepKey);
    /// ERROR_ACCESS_DENIED if the key has subkeys.
    LSTATUS DeleteEmptyKey(KeyId key);
    /// The name of a subkey by its place in the alphabet, or ERROR_NO_MORE_ITEMS.
    LSTATUS ReadChildName(KeyId key, DWORD index, WideString& name);
    LSTATUS ReadKeyInfo(KeyId key, std::int64_t& written, DWORD& subkeys, DWORD& values);

    /// `data` and `size` as RegQueryValueExW has them; a null `data` reads only type and size.
    LSTATUS ReadValue(KeyId key, WideView name, DWORD& type, BYTE* data, DWORD& size);
    LSTATUS WriteValue(KeyId key, WideView name, DWORD type, const BYTE* data, DWORD size);
    LSTATUS DeleteValue(KeyId key, WideView name);

    /// Closes the file and all handles; the next call opens the profile that is then current.
    /// Takes the lock itself.
    void Reset();

private:
    struct Handle {
        KeyPlace place;
        REGSAM access;
        std::uint32_t generation;
    };

    LSTATUS EnsureOpen();
    std::optional<WideString> ClassPath(HKEY base, WideView path) const;
    LSTATUS FindPath(KeyId start, WideView path, KeyId& key);
    LSTATUS CreatePath(KeyId start, WideView path, KeyId& key, bool& created);
    LSTATUS FindChild(KeyId parent, WideView name, KeyId& key);
    LSTATUS AddChild(KeyId parent, WideView name, KeyId& key);
    LSTATUS Touch(KeyId key);
    LSTATUS TouchParent(KeyId key);
    LSTATUS MissingOrDeleted(KeyId key);

    RegistryDatabase database_;
    std::unordered_map<std::uintptr_t, Handle> handles_;
    std::uintptr_t nextHandle_ = 0x100;
    FileIdentity identity_;
    std::uint32_t generation_ = 0;
};

}  // namespace platform
