#include "settings/registry_values.h"

#include "settings/password_text.h"

namespace {

/// Asks for a value's type and its size in bytes.
bool QueryValue(HKEY key, const WCHAR* name, DWORD& type, DWORD& size) noexcept {
    size = 0;
    return RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) == ERROR_SUCCESS;
}

/// Reads a value that may have changed since its size was asked for. `size` goes in as the room in
/// bytes and comes back as the bytes read. \return ERROR_MORE_DATA when the value has grown.
LSTATUS ReadValue(HKEY key, const WCHAR* name, DWORD& type, void* data, DWORD& size) noexcept {
    return RegQueryValueExW(key, name, nullptr, &type, static_cast<BYTE*>(data), &size);
}

bool IsText(DWORD type) noexcept { return type == REG_SZ || type == REG_EXPAND_SZ; }

}  // namespace

bool ReadDwordValue(HKEY key, const WCHAR* name, std::uint32_t& value) noexcept {
    DWORD type = 0;
    DWORD read = 0;
    DWORD size = sizeof(read);
    if (ReadValue(key, name, type, &read, size) != ERROR_SUCCESS) return false;
    if (type != REG_DWORD || size != sizeof(read)) return false;
    value = read;
    return true;
}

void WriteDwordValue(HKEY key, const WCHAR* name, std::uint32_t value) noexcept {
    const DWORD data = value;
    (void)RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                         sizeof(data));
}

bool ReadStringValue(HKEY key, const WCHAR* name, AUX::WString& string) noexcept {
    DWORD type = 0;
    DWORD size = 0;
    if (!QueryValue(key, name, type, size) || !IsText(type)) return true;
    if (size == 0) {
        string.Clear();
        return true;
    }
    if (!string.SetLength(size / 2)) return false;

    size = size / 2 * 2;  // An odd size does not fit any more, and so ends as a failed read.
    WCHAR nothing = 0;
    WCHAR* const data = string.Data() ? string.Data() : &nothing;
    const bool read = ReadValue(key, name, type, data, size) == ERROR_SUCCESS && IsText(type);
    if (!read || size % 2 != 0 || size == 0 || data[size / 2 - 1] != 0) {
        string.Clear();
        return true;
    }
    const AUX::WStringView text(data);                                // Terminated, as just seen.
    (void)string.SetLength(static_cast<std::uint32_t>(text.size()));  // Shorter, so it fits.
    return true;
}

void WriteStringValue(HKEY key, const WCHAR* name, const AUX::WString& string) noexcept {
    constexpr std::uint32_t kMaxUnits = 0x7FFFFFFE;  // The terminated text's bytes fit 32 bits.
    if (string.Length() > kMaxUnits) return;
    (void)RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(string.Text()),
                         (string.Length() + 1) * 2);
}

bool ReadPasswordValue(HKEY key, const WCHAR* name, AUX::WString& string) noexcept {
    WipeText(string);
    DWORD type = 0;
    DWORD size = 0;
    if (!QueryValue(key, name, type, size) || type != REG_BINARY || size == 0) return true;
    AUX::AString text;
    if (!text.SetLength(size)) return false;
    AUX::Status status = AUX::kStatusOk;
    if (ReadValue(key, name, type, text.Data(), size) == ERROR_SUCCESS && type == REG_BINARY) {
        status = DecodePasswordText({text.Data(), size}, string);
    }
    WipeText(text);
    return status != AUX::kStatusInsufficientMemory;
}

void WritePasswordValue(HKEY key, const WCHAR* name, const AUX::WString& string) noexcept {
    AUX::AString text;
    if (!EncodePasswordText(string, text)) return;
    (void)RegSetValueExW(key, name, 0, REG_BINARY, reinterpret_cast<const BYTE*>(text.Text()),
                         text.Length());
    WipeText(text);
}
