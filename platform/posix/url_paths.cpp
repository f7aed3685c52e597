#include "platform/posix/faults.h"
#include "platform/posix/url_parts.h"
#include "platform/urls.h"

namespace platform {
namespace {

constexpr WideView kFilePrefix = TEXT("file:");
constexpr WideView kVerbatim = TEXT("\\\\?\\");
constexpr WideView kVerbatimNetwork = TEXT("\\\\?\\UNC\\");

bool IsFileUrl(WideView text) {
    if (text.size() < kFilePrefix.size()) return false;
    for (std::size_t i = 0; i < kFilePrefix.size(); ++i) {
        if ((text[i] | (kFilePrefix[i] == ':' ? 0 : 0x20)) != kFilePrefix[i]) return false;
    }
    return true;
}

void AppendEscaped(WideView path, WideString& url) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    static constexpr std::string_view kEscaped = "\"#%&<>[]^`{|}";
    for (const char unit : ToUtf8(path)) {
        const auto byte = static_cast<unsigned char>(unit);
        if (unit == '\\') {
            url += '/';
        } else if (byte <= ' ' || byte >= 0x7F || kEscaped.find(unit) != std::string_view::npos) {
            url += {'%', static_cast<WCHAR>(kDigits[byte >> 4]),
                    static_cast<WCHAR>(kDigits[byte & 15])};
        } else {
            url += static_cast<WCHAR>(byte);
        }
    }
}

WideString UrlOfPath(WideView path) {
    WideString network;
    if (path.substr(0, kVerbatimNetwork.size()) == kVerbatimNetwork) {
        network = TEXT("\\\\");
        path = network.append(path.substr(kVerbatimNetwork.size()));
    } else if (path.substr(0, kVerbatim.size()) == kVerbatim) {
        path.remove_prefix(kVerbatim.size());
    }
    WideString url(kFilePrefix);
    if (IsDrivePath(path)) {
        url += TEXT("//");
        if ((path[0] | 0x20) == 'z') {
            path.remove_prefix(2);
        } else {
            url += '/';
        }
        if (path.empty()) url += '/';
    } else if (path.substr(0, 1) == TEXT("\\") && path.substr(0, 2) != TEXT("\\\\")) {
        url += TEXT("//");
    }
    AppendEscaped(path, url);
    return url;
}

int HexDigit(WCHAR unit) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    const auto lower = static_cast<WCHAR>(unit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The byte of "%XX" at the start of a text, or -1.
int EscapedByte(WideView text) {
    if (text.size() < 3 || text[0] != '%') return -1;
    const int high = HexDigit(text[1]);
    const int low = HexDigit(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// A row of escaped bytes is UTF-8, or else Latin-1. \return false for an escaped zero.
bool AppendUnescaped(WideView text, WideString& path) {
    while (!text.empty()) {
        std::string bytes;
        for (int byte; (byte = EscapedByte(text)) >= 0; text.remove_prefix(3)) {
            if (byte == 0) return false;
            bytes += static_cast<char>(byte);
        }
        if (!bytes.empty()) {
            const WideString decoded = FromUtf8(bytes);
            if (ToUtf8(decoded) == bytes) {
                path += decoded;
            } else {
                for (const char byte : bytes) path += static_cast<unsigned char>(byte);
            }
        } else {
            path += text[0] == '/' ? WCHAR{'\\'} : text[0];
            text.remove_prefix(1);
        }
    }
    return true;
}

/// \return false if no path can be told.
bool PathOfUrl(WideView url, WideString& path) {
    UrlParts parts = SplitUrl(url, UrlForm::Generic);
    if (parts.hasQuery) parts.path.append(TEXT("?")).append(parts.query);
    if (parts.hasFragment) parts.path.append(TEXT("#")).append(parts.fragment);
    WideView rest = parts.path;
    if (parts.authority == TEXT("localhost")) parts.authority.clear();
    if (!parts.authority.empty()) {
        path.append(TEXT("\\\\")).append(parts.authority);
    } else if (BeginsWithDrive(parts.path)) {
        path.append(1, parts.path[1]).append(TEXT(":"));
        rest.remove_prefix(3);
    } else if (!rest.empty() && rest[0] == '/') {
        path += TEXT("Z:");
    }
    return AppendUnescaped(rest, path);
}

}  // namespace
}  // namespace platform

BOOL UrlIsW(LPCWSTR text, URLIS kind) noexcept {
    return text && kind == URLIS_FILEURL && platform::IsFileUrl(text) ? TRUE : FALSE;
}

HRESULT UrlCreateFromPathW(LPCWSTR path, LPWSTR url, LPDWORD size, DWORD flags) noexcept {
    using namespace platform;
    if (InjectFault("UrlCreateFromPathW")) return E_FAIL;
    if (!path || !url || !size || flags != 0) return E_INVALIDARG;
    if (SchemeLength(path) > 1) {
        const HRESULT result = CopyUrlText(path, url, size);
        return result == S_OK ? S_FALSE : result;
    }
    return CopyUrlText(UrlOfPath(path), url, size);
}

HRESULT PathCreateFromUrlW(LPCWSTR url, LPWSTR path, LPDWORD size, DWORD flags) noexcept {
    using namespace platform;
    if (InjectFault("PathCreateFromUrlW")) return E_FAIL;
    if (!url || !path || !size || *size == 0 || flags != 0) return E_INVALIDARG;
    WideString text;
    if (!IsFileUrl(url) || !PathOfUrl(url, text)) return E_INVALIDARG;
    return CopyUrlText(text, path, size);
}
