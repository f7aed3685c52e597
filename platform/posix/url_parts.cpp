#include "platform/posix/url_parts.h"

#include <algorithm>

namespace platform {
namespace {

bool IsSeparator(WCHAR unit) { return unit == '/' || unit == '\\'; }
bool IsLetter(WCHAR unit) { return (unit | 0x20) >= 'a' && (unit | 0x20) <= 'z' && unit < 0x80; }
bool IsSchemeUnit(WCHAR unit) {
    return IsLetter(unit) || (unit >= '0' && unit <= '9') || unit == '+' || unit == '-' ||
           unit == '.';
}
bool IsLineUnit(WCHAR unit) { return unit == '\t' || unit == '\n' || unit == '\r'; }

WideString Trimmed(WideView text) {
    while (!text.empty() && text.front() <= ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() <= ' ') text.remove_suffix(1);
    WideString trimmed(text);
    trimmed.erase(std::remove_if(trimmed.begin(), trimmed.end(), IsLineUnit), trimmed.end());
    return trimmed;
}

/// "C:\a b" as "file:///C:/a%20b"; "\\server\a" as "file://server/a".
WideString UrlOfPath(WideView path) {
    WideString url = IsDrivePath(path) ? TEXT("file:///") : TEXT("file:");
    for (const WCHAR unit : path) {
        if (unit == ' ') {
            url += TEXT("%20");
        } else if (unit == '#') {
            url += TEXT("%23");
        } else {
            url += unit == '\\' ? WCHAR{'/'} : unit;
        }
    }
    return url;
}

bool IsNetworkPath(WideView text) {
    return text.size() > 2 && text[0] == '\\' && text[1] == '\\' && !IsSeparator(text[2]) &&
           text[2] != '?';
}

/// "C:" or "C|", alone or in front of a slash.
bool BeginsWithDriveName(WideView text) {
    return text.size() >= 2 && IsLetter(text[0]) && (text[1] == ':' || text[1] == '|') &&
           (text.size() == 2 || text[2] == '/');
}

/// Brings the many ways to write a file address to one: drives stand in the path, behind an empty
/// authority; the servers of network paths are the authority.
void SettleFileParts(UrlParts& parts) {
    const bool isNetwork = parts.hasAuthority && parts.authority.empty() &&
                           WideView(parts.path).substr(0, 2) == TEXT("//");
    if (isNetwork) {
        const std::size_t start = std::min(parts.path.find_first_not_of('/'), parts.path.size());
        const std::size_t end = std::min(parts.path.find('/', start), parts.path.size());
        parts.authority = parts.path.substr(start, end - start);
        parts.path.erase(0, end);
    }
    if (BeginsWithDriveName(parts.authority)) {
        parts.path.insert(0, TEXT("/") + parts.authority);
        parts.authority.clear();
    }
    if (BeginsWithDriveName(parts.path)) parts.path.insert(0, TEXT("/"));
    if (BeginsWithDrive(parts.path)) parts.hasAuthority = true;
}

}  // namespace

std::size_t SchemeLength(WideView text) {
    std::size_t length = 0;
    while (length < text.size() && IsSchemeUnit(text[length])) ++length;
    const bool isScheme =
        length > 0 && length < text.size() && text[length] == ':' && IsLetter(text[0]);
    return isScheme ? length : 0;
}

bool IsDrivePath(WideView text) {
    return text.size() >= 2 && IsLetter(text[0]) && text[1] == ':' &&
           (text.size() == 2 || IsSeparator(text[2]));
}

bool BeginsWithDrive(WideView path) {
    return !path.empty() && path[0] == '/' && BeginsWithDriveName(path.substr(1));
}

UrlForm FormOf(WideView scheme) {
    static constexpr WideView kWeb[] = {TEXT("file"),  TEXT("ftp"), TEXT("http"),
                                        TEXT("https"), TEXT("ws"),  TEXT("wss")};
    static constexpr WideView kOpaque[] = {
        TEXT("about"),   TEXT("blob"),   TEXT("cid"), TEXT("data"),     TEXT("javascript"),
        TEXT("jscript"), TEXT("mailto"), TEXT("mid"), TEXT("mk"),       TEXT("ms-its"),
        TEXT("news"),    TEXT("tel"),    TEXT("urn"), TEXT("vbscript"), TEXT("view-source")};
    if (std::find(std::begin(kWeb), std::end(kWeb), scheme) != std::end(kWeb)) return UrlForm::Web;
    const bool isOpaque =
        std::find(std::begin(kOpaque), std::end(kOpaque), scheme) != std::end(kOpaque);
    return isOpaque ? UrlForm::Opaque : UrlForm::Generic;
}

UrlParts SplitUrl(WideView text, UrlForm form) {
    WideString whole = Trimmed(text);
    if (IsDrivePath(whole) || IsNetworkPath(whole)) whole = UrlOfPath(whole);
    UrlParts parts;
    WideView rest = whole;
    if (const std::size_t length = SchemeLength(rest)) {
        parts.scheme = rest.substr(0, length);
        for (WCHAR& unit : parts.scheme) {
            if (IsLetter(unit)) unit = static_cast<WCHAR>(unit | 0x20);
        }
        rest.remove_prefix(length + 1);
        form = FormOf(parts.scheme);
    }
    if (form == UrlForm::Opaque && !parts.scheme.empty()) {
        parts.path = rest;
        return parts;
    }
    if (const std::size_t at = rest.find('#'); at != WideView::npos) {
        parts.hasFragment = true;
        parts.fragment = rest.substr(at + 1);
        rest = rest.substr(0, at);
    }
    if (const std::size_t at = rest.find('?'); at != WideView::npos) {
        parts.hasQuery = true;
        parts.query = rest.substr(at + 1);
        rest = rest.substr(0, at);
    }
    parts.path = rest;
    if (form == UrlForm::Web) std::replace(parts.path.begin(), parts.path.end(), '\\', '/');
    if (WideView(parts.path).substr(0, 2) == TEXT("//")) {
        const std::size_t end = std::min(parts.path.find('/', 2), parts.path.size());
        parts.hasAuthority = true;
        parts.authority = parts.path.substr(2, end - 2);
        parts.path.erase(0, end);
    }
    if (parts.scheme == TEXT("file")) SettleFileParts(parts);
    return parts;
}

WideString WithoutDotSegments(WideView path) {
    WideString kept;
    kept.reserve(path.size());
    const auto dropLast = [&] {
        const std::size_t slash = kept.rfind('/');
        kept.erase(slash == WideString::npos ? 0 : slash);
    };
    while (!path.empty()) {
        if (path.substr(0, 3) == TEXT("../")) {
            path.remove_prefix(3);
        } else if (path.substr(0, 2) == TEXT("./")) {
            path.remove_prefix(2);
        } else if (path.substr(0, 3) == TEXT("/./")) {
            path.remove_prefix(2);
        } else if (path == TEXT("/.")) {
            path = TEXT("/");
        } else if (path.substr(0, 4) == TEXT("/../")) {
            path.remove_prefix(3);
            dropLast();
        } else if (path == TEXT("/..")) {
            path = TEXT("/");
            dropLast();
        } else if (path == TEXT(".") || path == TEXT("..")) {
            path = {};
        } else {
            const std::size_t end = std::min(path.find('/', 1), path.size());
            kept += path.substr(0, end);
            path.remove_prefix(end);
        }
    }
    return kept;
}

HRESULT CopyUrlText(const WideString& text, LPWSTR buffer, LPDWORD size) noexcept {
    const auto length = static_cast<DWORD>(text.size());
    if (!buffer || *size <= length) {
        *size = length + 1;
        return E_POINTER;
    }
    std::copy_n(text.c_str(), length + 1, buffer);
    *size = length;
    return S_OK;
}

WideString UrlParts::Text() const {
    WideString text;
    text.reserve(scheme.size() + authority.size() + path.size() + query.size() + fragment.size() +
                 5);
    if (!scheme.empty()) text.append(scheme).append(TEXT(":"));
    if (hasAuthority) text.append(TEXT("//")).append(authority);
    // Else the path would pass for a host, or in a file address for a server.
    const bool isPath = FormOf(scheme) != UrlForm::Opaque && path.starts_with(TEXT("//"));
    const bool isExposed = !hasAuthority || (scheme == TEXT("file") && authority.empty());
    if (!scheme.empty() && isPath && isExposed) text += TEXT("/.");
    text += path;
    if (hasQuery) text.append(TEXT("?")).append(query);
    if (hasFragment) text.append(TEXT("#")).append(fragment);
    return text;
}

}  // namespace platform
