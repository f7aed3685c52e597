#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/posix/com_calls.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace {

constexpr int kIdUnits = 38;  // "{...}" without the terminator

}  // namespace

int StringFromGUID2(REFGUID id, LPOLESTR text, int size) noexcept {
    if (size <= kIdUnits) return 0;
    char digits[kIdUnits + 1];
    const BYTE* const d = id.Data4;
    std::snprintf(digits, sizeof digits, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  id.Data1, id.Data2, id.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    for (int i = 0; i <= kIdUnits; ++i) text[i] = static_cast<WCHAR>(digits[i]);
    return kIdUnits + 1;
}

HRESULT StringFromCLSID(REFCLSID id, LPOLESTR* text) noexcept {
    if (!text) return E_INVALIDARG;
    *text = static_cast<LPOLESTR>(std::malloc((kIdUnits + 1) * sizeof(WCHAR)));
    if (!*text) return E_OUTOFMEMORY;
    StringFromGUID2(id, *text, kIdUnits + 1);
    return S_OK;
}

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* id) noexcept {
    if (!id) return E_INVALIDARG;
    *id = {};
    if (!text) return S_OK;
    char digits[kIdUnits + 1] = {};
    for (int i = 0; i <= kIdUnits; ++i) {
        if (text[i] > 0x7F || (text[i] == 0) != (i == kIdUnits)) return CO_E_CLASSSTRING;
        digits[i] = static_cast<char>(text[i]);
    }
    unsigned part[11];
    int end = 0;
    const int read = std::sscanf(digits, "{%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x}%n", &part[0],
                                 &part[1], &part[2], &part[3], &part[4], &part[5], &part[6],
                                 &part[7], &part[8], &part[9], &part[10], &end);
    if (read != 11 || end != kIdUnits) return CO_E_CLASSSTRING;
    *id = {part[0], static_cast<WORD>(part[1]), static_cast<WORD>(part[2]), {}};
    for (int i = 0; i < 8; ++i) id->Data4[i] = static_cast<BYTE>(part[3 + i]);
    // Blanks and signs pass the reading, but not this.
    WCHAR again[kIdUnits + 1];
    StringFromGUID2(*id, again, kIdUnits + 1);
    for (int i = 0; i < kIdUnits; ++i) {
        const char unit = digits[i] >= 'a' && digits[i] <= 'f' ? digits[i] & 0x5F : digits[i];
        if (again[i] != static_cast<WCHAR>(unit)) {
            *id = {};
            return CO_E_CLASSSTRING;
        }
    }
    return S_OK;
}

HRESULT CLSIDFromProgID(LPCOLESTR name, CLSID* classId) noexcept {
    if (!name || !classId) return E_INVALIDARG;
    *classId = {};
    platform::RegistryKey key;
    const platform::WideString path = platform::WideString(name) + TEXT("\\CLSID");
    WCHAR text[kIdUnits + 2] = {};
    DWORD size = (kIdUnits + 1) * sizeof(WCHAR);
    DWORD type = 0;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS ||
        RegQueryValueExW(key.Get(), nullptr, nullptr, &type, reinterpret_cast<BYTE*>(text),
                         &size) != ERROR_SUCCESS ||
        type != REG_SZ) {
        return CO_E_CLASSSTRING;
    }
    return CLSIDFromString(text, classId);
}
