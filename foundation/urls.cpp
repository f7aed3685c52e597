#include "foundation/urls.h"

#include <cstring>
#include <limits>
#include <utility>

#include "foundation/astring.h"
#include "foundation/path_characters.h"
#include "foundation/paths.h"
#include "foundation/utf8.h"
#include "platform/messages.h"
#include "platform/urls.h"
#include "platform/user.h"

namespace AUX {
namespace {

constexpr DWORD kNoFlags = 0;
constexpr std::uint64_t kEscapedRoom = 128;  // units beside three for each of the address

const WCHAR* OrEmpty(const WCHAR* text) noexcept { return text ? text : TEXT(""); }

bool Combine(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept {
    DWORD size = 0;
    if (UrlCombineW(base, relative, nullptr, &size, kNoFlags) != E_POINTER || size <= 1) {
        return false;
    }
    if (!combined.SetLength(size - 1)) return false;
    if (FAILED(UrlCombineW(base, relative, combined.Data(), &size, kNoFlags))) return false;
    return combined.SetLength(size);
}

// CharUpperW takes a single character in place of a pointer.
WCHAR Upper(WCHAR character) noexcept {
    const auto text = reinterpret_cast<LPWSTR>(UINT_PTR{character});
    return static_cast<WCHAR>(reinterpret_cast<UINT_PTR>(CharUpperW(text)));
}

bool IsAbsolutePath(WStringView text) noexcept {
    if (text.starts_with(TEXT("\\\\"))) return text.size() > 2;
    if (text.size() < 2 || text[1] != TEXT(':')) return false;
    if (text.size() > 2 && !IsPathSeparator(text[2])) return false;
    const WCHAR drive = Upper(text[0]);
    return drive >= TEXT('A') && drive <= TEXT('Z');
}

struct PathBuffer {
    WCHAR text[MAX_PATH];
};

// The local path of a text: the text itself, or what `buffer` gets; null if it has none.
const WCHAR* LocalPathOf(const WCHAR* text, PathBuffer& buffer, bool& exists,
                         WIN32_FIND_DATAW& found, CheckExists check) noexcept {
    const auto isFound = [&](const WCHAR* path) {
        exists = check == CheckExists::Yes && PathExists(path, &found);
        return exists;
    };
    if (isFound(text)) return text;
    DWORD size = MAX_PATH;
    if (UrlIsW(text, URLIS_FILEURL) &&
        SUCCEEDED(PathCreateFromUrlW(text, buffer.text, &size, kNoFlags))) {
        text = buffer.text;
        if (isFound(text)) return text;
    }
    return IsAbsolutePath(text) ? text : nullptr;
}

bool IsUnsafe(unsigned char byte, std::uint32_t flags) noexcept {
    if (flags & kEscapeSpacesOnly) return byte == ' ';
    if (byte == '%') return (flags & kEscapePercent) != 0;
    constexpr char kUnsafe[] = " \"#$&+,;<=>?@[\\]^`{|}";
    return byte < 0x20 || byte > 0x7E || std::memchr(kUnsafe, byte, sizeof kUnsafe - 1) != nullptr;
}

bool EncodeWhole(const WCHAR* text, std::int64_t length, AString& bytes) noexcept {
    const std::size_t size = EncodeUtf8(text, length, nullptr, 0, false);
    if (size > static_cast<std::size_t>(std::numeric_limits<INT>::max())) return false;
    if (!bytes.SetLength(static_cast<std::uint32_t>(size))) return false;
    EncodeUtf8(text, length, bytes.Data(), size, false);
    return true;
}

bool EscapeBytes(AStringView bytes, std::uint32_t flags, AString& escaped) noexcept {
    constexpr char kDigits[] = "0123456789abcdef";
    while (!bytes.empty()) {
        const char unit = bytes[0];
        if ((flags & kEscapeBrowserMode) && (unit == '?' || unit == '#')) {
            return escaped.Append(bytes);
        }
        const auto byte = static_cast<unsigned char>(unit);
        const char escape[] = {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        const bool isAdded = IsUnsafe(byte, flags) ? escaped.Append(escape, sizeof escape)
                                                   : escaped.Append(&unit, 1);
        if (!isAdded) return false;
        bytes = bytes.substr(1);
    }
    return true;
}

bool Escape(WStringView url, std::uint32_t flags, WString& wide) noexcept {
    AString bytes;
    AString escaped;
    const std::uint64_t room = url.size() * 3 + kEscapedRoom;
    constexpr std::uint64_t kMost = std::numeric_limits<INT>::max();
    if (room > kMost || !wide.Reserve(static_cast<std::uint32_t>(room)) ||
        !EncodeWhole(url.data(), static_cast<std::int64_t>(url.size()), bytes) ||
        !EscapeBytes(bytes, flags, escaped) || escaped.Length() > kMost) {
        return false;
    }
    const INT length =
        MultiByteToWideChar(CP_THREAD_ACP, 0, escaped.Text(), static_cast<INT>(escaped.Length()),
                            wide.Data(), static_cast<INT>(room));
    return length > 0 && wide.SetLength(static_cast<std::uint32_t>(length));
}

}  // namespace

bool CombineUrl(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept {
    WString joined;  // The texts may be those of `combined`.
    const bool isJoined = Combine(OrEmpty(base), OrEmpty(relative), joined);
    if (!isJoined) joined.Free();
    combined = std::move(joined);
    return isJoined;
}

bool LocalPathFromText(const WCHAR* text, WString* path, bool* exists, WIN32_FIND_DATAW* found,
                       CheckExists check) noexcept {
    PathBuffer buffer;
    bool isThere = false;
    WIN32_FIND_DATAW record = {};
    const WCHAR* const local =
        text && *text ? LocalPathOf(text, buffer, isThere, record, check) : nullptr;
    bool isLocal = local != nullptr;
    if (path) {
        WString copy;  // The text may be that of `path`.
        isLocal = copy.Assign(local) && isLocal;
        *path = std::move(copy);
    }
    if (exists) *exists = isLocal && isThere;
    if (found) *found = isLocal ? record : WIN32_FIND_DATAW{};
    return isLocal;
}

bool EscapeUrl(const WCHAR* url, WString& escaped, std::uint32_t flags) noexcept {
    const WStringView text(url);
    WString wide;
    const bool isEscaped = text.empty() || Escape(text, flags, wide);
    if (!isEscaped && !wide.Assign(text)) wide.Free();
    escaped = std::move(wide);
    return isEscaped;
}

}  // namespace AUX
