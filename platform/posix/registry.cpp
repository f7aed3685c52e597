#include "platform/registry.h"

#include <mutex>

#include "platform/posix/faults.h"
#include "platform/posix/registry_store.h"

using platform::KeyPlace;
using platform::KeyRef;
using platform::RegistryStore;
using platform::WideView;

namespace {

// ERROR_SUCCESS, or the error that a test wants of this call.
LSTATUS Injected(const char* call) {
    return platform::InjectFault(call) ? static_cast<LSTATUS>(GetLastError()) : ERROR_SUCCESS;
}

WideView NameOf(LPCWSTR text) { return text ? WideView(text) : WideView(); }

// The arguments that opening and creating share.
LSTATUS CheckPath(LPCWSTR path, PHKEY result) {
    if (!result) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    return path && path[0] == u'\\' ? ERROR_BAD_PATHNAME : ERROR_SUCCESS;
}

bool IsText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

// Readers of texts that were stored without a terminator rely on this where there is room.
void TerminateText(BYTE* data, DWORD size, DWORD room) {
    if (room < sizeof(WCHAR) || size > room - sizeof(WCHAR)) return;
    if (size >= sizeof(WCHAR) && data[size - 1] == 0 && data[size - 2] == 0) return;
    data[size] = 0;
    data[size + 1] = 0;
}

LSTATUS GiveName(WideView found, LPWSTR name, LPDWORD length) {
    if (found.size() >= *length) return ERROR_MORE_DATA;
    found.copy(name, found.size());
    name[found.size()] = 0;
    *length = static_cast<DWORD>(found.size());
    return ERROR_SUCCESS;
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD, REGSAM access, PHKEY result) noexcept {
    if (const LSTATUS status = CheckPath(path, result); status != ERROR_SUCCESS) return status;
    if (const LSTATUS error = Injected("RegOpenKeyExW"); error != ERROR_SUCCESS) return error;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    store.Prepare(access);
    KeyPlace place;
    LSTATUS status = store.Find(key, NameOf(path), place);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(access);
    if (status == ERROR_SUCCESS) *result = store.AddHandle(std::move(place), access);
    return status;
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR, DWORD options,
                        REGSAM access, const SECURITY_ATTRIBUTES*, PHKEY result,
                        LPDWORD disposition) noexcept {
    if (const LSTATUS status = CheckPath(path, result); status != ERROR_SUCCESS) return status;
    if (const LSTATUS error = Injected("RegCreateKeyExW"); error != ERROR_SUCCESS) return error;
    if (reserved != 0 || options != REG_OPTION_NON_VOLATILE) return ERROR_INVALID_PARAMETER;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyPlace place;
    KeyRef base;
    bool created = false;
    store.Prepare(access);
    // Nothing needs to stand below the classes for a key to be made there.
    LSTATUS status = key == HKEY_CLASSES_ROOT ? ERROR_SUCCESS : store.Resolve(key, 0, base);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(access);
    if (status == ERROR_SUCCESS) status = store.Create(key, NameOf(path), place, created);
    if (status != ERROR_SUCCESS) return status;
    *result = store.AddHandle(std::move(place), access);
    if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD size) noexcept {
    if (const LSTATUS error = Injected("RegQueryValueExW"); error != ERROR_SUCCESS) return error;
    if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef found;
    LSTATUS status = store.Resolve(key, KEY_QUERY_VALUE, found);
    if (status != ERROR_SUCCESS) return status;
    const DWORD room = data ? *size : 0;
    DWORD valueType = 0;
    DWORD valueSize = room;
    status = found.tree->ReadValue(found.key, NameOf(name), valueType, data, valueSize);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return status;
    if (type) *type = valueType;
    if (size) *size = valueSize;
    if (status == ERROR_SUCCESS && data && IsText(valueType)) TerminateText(data, valueSize, room);
    return status;
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD, DWORD type, const BYTE* data,
                       DWORD size) noexcept {
    if (const LSTATUS error = Injected("RegSetValueExW"); error != ERROR_SUCCESS) return error;
    if (!data && size) return ERROR_NOACCESS;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef found;
    LSTATUS status = store.AwaitTurn(key);
    if (status == ERROR_SUCCESS) status = store.Resolve(key, KEY_SET_VALUE, found);
    return status == ERROR_SUCCESS
               ? found.tree->WriteValue(found.key, NameOf(name), type, data, size)
               : status;
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) noexcept {
    if (const LSTATUS error = Injected("RegDeleteValueW"); error != ERROR_SUCCESS) return error;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef found;
    LSTATUS status = store.AwaitTurn(key);
    if (status == ERROR_SUCCESS) status = store.Resolve(key, KEY_SET_VALUE, found);
    return status == ERROR_SUCCESS ? found.tree->DeleteValue(found.key, NameOf(name)) : status;
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) noexcept {
    if (const LSTATUS error = Injected("RegDeleteTreeW"); error != ERROR_SUCCESS) return error;
    if (path && path[0] == u'\\') return ERROR_BAD_PATHNAME;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    const bool keepKey = NameOf(path).empty();
    KeyPlace place;
    LSTATUS status = store.AwaitTurn(key);
    if (status == ERROR_SUCCESS) status = store.Find(key, NameOf(path), place);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(KEY_ALL_ACCESS);
    return status == ERROR_SUCCESS ? store.TreeOf(place).DeleteTree(place.key, keepKey) : status;
}

LSTATUS RegDeleteKeyW(HKEY key, LPCWSTR path) noexcept {
    if (const LSTATUS error = Injected("RegDeleteKeyW"); error != ERROR_SUCCESS) return error;
    if (!path || !*path) return ERROR_INVALID_PARAMETER;
    if (path[0] == u'\\') return ERROR_BAD_PATHNAME;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyPlace place;
    LSTATUS status = store.AwaitTurn(key);
    if (status == ERROR_SUCCESS) status = store.Find(key, path, place);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(KEY_ALL_ACCESS);
    return status == ERROR_SUCCESS ? store.TreeOf(place).DeleteEmptyKey(place.key) : status;
}

LSTATUS RegDeleteKeyExW(HKEY key, LPCWSTR path, REGSAM view, DWORD reserved) noexcept {
    return view || reserved ? ERROR_INVALID_PARAMETER : RegDeleteKeyW(key, path);
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                      LPWSTR keyClass, LPDWORD classLength, FILETIME* lastWritten) noexcept {
    if (const LSTATUS error = Injected("RegEnumKeyExW"); error != ERROR_SUCCESS) return error;
    if (!name || !length || reserved) return ERROR_INVALID_PARAMETER;
    if (keyClass || classLength || lastWritten) return ERROR_NOT_SUPPORTED;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef parent;
    platform::WideString found;
    LSTATUS status = store.Resolve(key, KEY_ENUMERATE_SUB_KEYS, parent);
    if (status == ERROR_SUCCESS) status = parent.tree->ReadChildName(parent.key, index, found);
    return status == ERROR_SUCCESS ? GiveName(found, name, length) : status;
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                      LPDWORD type, LPBYTE data, LPDWORD size) noexcept {
    if (const LSTATUS error = Injected("RegEnumValueW"); error != ERROR_SUCCESS) return error;
    if (!name || !length || reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef parent;
    LSTATUS status = store.Resolve(key, KEY_QUERY_VALUE, parent);
    if (status != ERROR_SUCCESS) return status;
    const DWORD room = data ? *size : 0;
    DWORD valueSize = room;
    platform::FoundValue found;
    status = parent.tree->ReadValueAt(parent.key, index, found, data, valueSize);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return status;
    if (type) *type = found.type;
    if (size) *size = valueSize;
    if (status != ERROR_SUCCESS) return status;
    if (data && IsText(found.type)) TerminateText(data, valueSize, room);
    return GiveName(found.name, name, length);
}

LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                         LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass,
                         LPDWORD values, LPDWORD longestName, LPDWORD longestData,
                         LPDWORD securityLength, FILETIME* lastWritten) noexcept {
    if (const LSTATUS error = Injected("RegQueryInfoKeyW"); error != ERROR_SUCCESS) return error;
    if (reserved) return ERROR_INVALID_PARAMETER;
    if (keyClass || classLength || longestSubkey || longestClass || securityLength) {
        return ERROR_NOT_SUPPORTED;
    }
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyRef found;
    LSTATUS status = store.Resolve(key, KEY_QUERY_VALUE, found);
    if (status != ERROR_SUCCESS) return status;
    platform::KeyInfo info;
    // The time alone is asked for often, and of keys with many values.
    const bool isTimeOnly = !subkeys && !values && !longestName && !longestData;
    status = isTimeOnly ? found.tree->ReadTime(found.key, info.written)
                        : found.tree->ReadInfo(found.key, info);
    if (status != ERROR_SUCCESS) return status;
    if (subkeys) *subkeys = info.subkeys;
    if (values) *values = info.values;
    if (longestName) *longestName = info.longestName;
    if (longestData) *longestData = info.longestData;
    if (lastWritten) {
        lastWritten->dwLowDateTime = static_cast<DWORD>(info.written);
        lastWritten->dwHighDateTime = static_cast<DWORD>(info.written >> 32);
    }
    return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY key) noexcept {
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    return store.CloseHandle(key);
}
