#include "platform/posix/typeinfo/registered.h"

#include <cstdio>

namespace platform::types {

LSTATUS OpenClasses(Owner owner, REGSAM access, RegistryKey& key) {
    const HKEY root = owner == Owner::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    return RegCreateKeyExW(root, TEXT("Software\\Classes"), 0, nullptr, REG_OPTION_NON_VOLATILE,
                           access, nullptr, key.Put(), nullptr);
}

WideString IdText(const GUID& id) {
    char text[40];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1,
                  id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3],
                  id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return FromUtf8(text);
}

WideString VersionText(WORD major, WORD minor) {
    char text[16];
    std::snprintf(text, sizeof text, "%x.%x", unsigned{major}, unsigned{minor});
    return FromUtf8(text);
}

WideString LanguageText(LCID language) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", language);
    return FromUtf8(text);
}

bool ReadText(HKEY key, const WideString& path, WideString& text) {
    RegistryKey opened;
    if (RegOpenKeyExW(key, path.c_str(), 0, KEY_READ, opened.Put()) != ERROR_SUCCESS) return false;
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(opened.Get(), nullptr, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        type != REG_SZ) {
        return false;
    }
    // One more for the terminator that may be missing.
    text.assign(size / sizeof(WCHAR) + 1, 0);
    size = static_cast<DWORD>(text.size() * sizeof(WCHAR));
    if (RegQueryValueExW(opened.Get(), nullptr, nullptr, nullptr,
                         reinterpret_cast<BYTE*>(text.data()), &size) != ERROR_SUCCESS) {
        return false;
    }
    text.resize(WideView(text.c_str()).size());
    return true;
}

}  // namespace platform::types
