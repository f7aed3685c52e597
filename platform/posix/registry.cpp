#include "platform/registry.h"

#include <mutex>

#include "platform/posix/faults.h"
#include "platform/posix/registry_store.h"

using platform::KeyId;
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

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD, REGSAM access, PHKEY result) noexcept {
    if (const LSTATUS status = CheckPath(path, result); status != ERROR_SUCCESS) return status;
    if (const LSTATUS error = Injected("RegOpenKeyExW"); error != ERROR_SUCCESS) return error;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    store.Prepare(access);
    KeyId id = 0;
    LSTATUS status = store.Resolve(key, 0, id);
    if (status == ERROR_SUCCESS) status = store.FindPath(id, NameOf(path), id);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(access);
    if (status == ERROR_SUCCESS) *result = store.AddHandle(id, access);
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
    KeyId id = 0;
    bool created = false;
    store.Prepare(access);
    LSTATUS status = store.Resolve(key, 0, id);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(access);
    if (status == ERROR_SUCCESS) status = store.CreatePath(id, NameOf(path), id, created);
    if (status != ERROR_SUCCESS) return status;
    *result = store.AddHandle(id, access);
    if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD size) noexcept {
    if (const LSTATUS error = Injected("RegQueryValueExW"); error != ERROR_SUCCESS) return error;
    if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyId id = 0;
    LSTATUS status = store.Resolve(key, KEY_QUERY_VALUE, id);
    if (status != ERROR_SUCCESS) return status;
    const DWORD room = data ? *size : 0;
    DWORD valueType = 0;
    DWORD valueSize = room;
    status = store.ReadValue(id, NameOf(name), valueType, data, valueSize);
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
    KeyId id = 0;
    const LSTATUS status = store.Resolve(key, KEY_SET_VALUE, id);
    return status == ERROR_SUCCESS ? store.WriteValue(id, NameOf(name), type, data, size) : status;
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) noexcept {
    if (const LSTATUS error = Injected("RegDeleteValueW"); error != ERROR_SUCCESS) return error;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyId id = 0;
    const LSTATUS status = store.Resolve(key, KEY_SET_VALUE, id);
    return status == ERROR_SUCCESS ? store.DeleteValue(id, NameOf(name)) : status;
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) noexcept {
    if (path && path[0] == u'\\') return ERROR_BAD_PATHNAME;
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    const bool keepKey = NameOf(path).empty();
    KeyId id = 0;
    LSTATUS status = store.Resolve(key, 0, id);
    if (status == ERROR_SUCCESS) status = store.FindPath(id, NameOf(path), id);
    if (status == ERROR_SUCCESS) status = store.CheckAccess(KEY_ALL_ACCESS);
    return status == ERROR_SUCCESS ? store.DeleteTree(id, keepKey) : status;
}

LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                         LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass,
                         LPDWORD values, LPDWORD longestName, LPDWORD longestData,
                         LPDWORD securityLength, FILETIME* lastWritten) noexcept {
    if (reserved) return ERROR_INVALID_PARAMETER;
    if (keyClass || classLength || longestSubkey || longestClass || longestName || longestData ||
        securityLength) {
        return ERROR_NOT_SUPPORTED;
    }
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    KeyId id = 0;
    LSTATUS status = store.Resolve(key, KEY_QUERY_VALUE, id);
    if (status != ERROR_SUCCESS) return status;
    std::int64_t written = 0;
    DWORD subkeyCount = 0;
    DWORD valueCount = 0;
    status = store.ReadKeyInfo(id, written, subkeyCount, valueCount);
    if (status != ERROR_SUCCESS) return status;
    if (subkeys) *subkeys = subkeyCount;
    if (values) *values = valueCount;
    if (lastWritten) {
        lastWritten->dwLowDateTime = static_cast<DWORD>(written);
        lastWritten->dwHighDateTime = static_cast<DWORD>(written >> 32);
    }
    return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY key) noexcept {
    RegistryStore& store = RegistryStore::Instance();
    const std::lock_guard guard(store.lock);
    return store.CloseHandle(key);
}
