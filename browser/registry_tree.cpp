#include "browser/registry_tree.h"

#include "platform/modules.h"
#include "platform/registry.h"

namespace {

constexpr DWORD kNameUnits = 256;    // With the terminator.
constexpr unsigned kMaxDepth = 512;  // The system's own limit; deeper trees stay.

LSTATUS DeleteTree(HKEY parent, const WCHAR* name, unsigned depth) noexcept {
    if (depth > kMaxDepth) return ERROR_ACCESS_DENIED;
    platform::RegistryKey key;
    LSTATUS status = RegOpenKeyExW(parent, name, 0, KEY_READ | KEY_WRITE, key.Put());
    while (status == ERROR_SUCCESS) {
        WCHAR child[kNameUnits];
        DWORD length = kNameUnits;
        status = RegEnumKeyExW(key.Get(), 0, child, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_SUCCESS) status = DeleteTree(key.Get(), child, depth + 1);
    }
    if (status != ERROR_NO_MORE_ITEMS) return status;
    key.Reset();
    return DeleteRegistryKey(parent, name);
}

}  // namespace

LSTATUS DeleteRegistryKey(HKEY parent, const WCHAR* name) noexcept {
    using DeleteKeyEx = LSTATUS WINAPI(HKEY, LPCWSTR, REGSAM, DWORD);
    auto* const deleteKeyEx = platform::ProcedureOf<DeleteKeyEx>(
        GetModuleHandleW(TEXT("advapi32.dll")), "RegDeleteKeyExW");
    return deleteKeyEx ? deleteKeyEx(parent, name, 0, 0) : RegDeleteKeyW(parent, name);
}

LSTATUS DeleteRegistryTree(HKEY parent, const WCHAR* name) noexcept {
    return DeleteTree(parent, name, 1);
}

HRESULT CountSubkeys(HKEY key, DWORD& count) noexcept {
    return ResultOf(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr));
}
