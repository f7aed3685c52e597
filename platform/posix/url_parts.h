#pragma once

#include "platform/text.h"

namespace platform {

/// The five components of an address (RFC 3986, section 3). A component that is absent and one that
/// is empty differ: "a?" has a query, "a" has none.
struct UrlParts {
    WideString scheme;  // in small letters, without ':'; empty if there is none
    WideString authority;
    WideString path;
    WideString query;
    WideString fragment;
    bool hasAuthority = false;
    bool hasQuery = false;
    bool hasFragment = false;

    /// The address (RFC 3986, section 5.3).
    [[nodiscard]] WideString Text() const;
};

/// What the part behind a scheme is: a path with '\' for '/' too, a path, or no path at all.
enum class UrlForm { Web, Generic, Opaque };
UrlForm FormOf(WideView scheme);

/// Takes an address, or a local or network path, apart. Blanks at its ends and line breaks do not
/// count. \param form  How to read a text without a scheme of its own.
UrlParts SplitUrl(WideView text, UrlForm form);

/// Whether a path of a file address begins with a drive: "/C:" and a slash or nothing.
bool BeginsWithDrive(WideView path);

/// RFC 3986, section 5.2.4.
WideString WithoutDotSegments(WideView path);

/// The length of the scheme in front of the first ':', 0 if there is none.
std::size_t SchemeLength(WideView text);

/// Whether a text is a drive's path: a letter, ':', and a separator or nothing.
bool IsDrivePath(WideView text);

/// Hands a text out as the calls on addresses do: the units without the terminator in `size`, or
/// E_POINTER and the units with it if the buffer is null or too small.
HRESULT CopyUrlText(const WideString& text, LPWSTR buffer, LPDWORD size) noexcept;

}  // namespace platform
