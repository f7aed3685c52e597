#include <cstdlib>
#include <cstring>

#include "platform/com.h"

namespace {
// The length field takes 8 bytes so that the characters stay aligned for any access.
constexpr std::size_t kPrefixBytes = 8;
constexpr UINT kMaxUnits = 0x7FFFFFF0 / sizeof(WCHAR);

char* BlockOf(BSTR text) noexcept { return reinterpret_cast<char*>(text) - kPrefixBytes; }
}  // namespace

BSTR SysAllocStringLen(const WCHAR* text, UINT length) noexcept {
    if (length > kMaxUnits) return nullptr;
    const auto bytes = static_cast<DWORD>(length * sizeof(WCHAR));
    char* block = static_cast<char*>(std::malloc(kPrefixBytes + bytes + sizeof(WCHAR)));
    if (!block) return nullptr;
    std::memcpy(block + kPrefixBytes - sizeof(DWORD), &bytes, sizeof(DWORD));
    auto* characters = reinterpret_cast<WCHAR*>(block + kPrefixBytes);
    if (text) {
        std::memcpy(characters, text, bytes);
    } else {
        characters[0] = 0;
    }
    characters[length] = 0;
    return characters;
}

BSTR SysAllocString(const WCHAR* text) noexcept {
    if (!text) return nullptr;
    UINT length = 0;
    while (text[length]) {
        if (++length > kMaxUnits) return nullptr;
    }
    return SysAllocStringLen(text, length);
}

void SysFreeString(BSTR text) noexcept {
    if (text) std::free(BlockOf(text));
}

UINT SysStringLen(BSTR text) noexcept {
    if (!text) return 0;
    DWORD bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<char*>(text) - sizeof(DWORD), sizeof(DWORD));
    return bytes / sizeof(WCHAR);
}
