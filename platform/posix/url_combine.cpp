#include <algorithm>

#include "platform/posix/faults.h"
#include "platform/posix/url_parts.h"
#include "platform/urls.h"

namespace platform {
namespace {

constexpr std::size_t kDriveUnits = 3;  // "/C:"

/// The drive of a file address stays whatever the dots behind it say.
void DropDotSegments(UrlParts& parts) {
    const bool hasDrive = parts.scheme == TEXT("file") && BeginsWithDrive(parts.path);
    const std::size_t start = hasDrive ? kDriveUnits : 0;
    parts.path =
        parts.path.substr(0, start) + WithoutDotSegments(WideView(parts.path).substr(start));
    // A drive that has come to the front stands behind an empty authority, as it does elsewhere.
    if (parts.scheme == TEXT("file") && BeginsWithDrive(parts.path)) parts.hasAuthority = true;
}

/// RFC 3986, section 5.2.3.
WideString Merged(const UrlParts& base, const WideString& path) {
    if (base.hasAuthority && base.path.empty()) return TEXT("/") + path;
    const bool isDriveAlone = base.scheme == TEXT("file") && BeginsWithDrive(base.path) &&
                              base.path.size() == kDriveUnits;
    if (isDriveAlone) return base.path + TEXT("/") + path;
    return base.path.substr(0, base.path.rfind('/') + 1) + path;
}

/// RFC 3986, section 5.2.2, for a reference without a scheme.
UrlParts Resolved(const UrlParts& base, UrlParts relative) {
    relative.scheme = base.scheme;
    if (relative.hasAuthority) {
        DropDotSegments(relative);
        return relative;
    }
    relative.hasAuthority = base.hasAuthority;
    relative.authority = base.authority;
    if (relative.path.empty()) {
        relative.path = base.path;
        if (!relative.hasQuery) {
            relative.hasQuery = base.hasQuery;
            relative.query = base.query;
        }
        return relative;
    }
    if (relative.path[0] != '/') {
        relative.path = Merged(base, relative.path);
    } else if (base.scheme == TEXT("file") && BeginsWithDrive(base.path) &&
               !BeginsWithDrive(relative.path)) {
        relative.path.insert(0, base.path, 0, kDriveUnits);
    }
    DropDotSegments(relative);
    return relative;
}

WideString Combined(WideView baseText, WideView relativeText) {
    const UrlParts base = SplitUrl(baseText, UrlForm::Generic);
    UrlParts relative = SplitUrl(relativeText, FormOf(base.scheme));
    const bool isOfSameScheme =
        relative.scheme == base.scheme && base.hasAuthority && !relative.hasAuthority;
    if (!relative.scheme.empty() && !isOfSameScheme) {
        if (FormOf(relative.scheme) != UrlForm::Opaque) DropDotSegments(relative);
        return relative.Text();
    }
    if (!base.scheme.empty()) return Resolved(base, std::move(relative)).Text();
    const WideString text = relative.Text();
    return text.empty() ? base.Text() : text;
}

}  // namespace

}  // namespace platform

HRESULT UrlCombineW(LPCWSTR base, LPCWSTR relative, LPWSTR combined, LPDWORD size,
                    DWORD flags) noexcept {
    using namespace platform;
    if (InjectFault("UrlCombineW")) return E_FAIL;
    if (!base || !relative || !size || flags != 0) return E_INVALIDARG;
    return CopyUrlText(Combined(base, relative), combined, size);
}
