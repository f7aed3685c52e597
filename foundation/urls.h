#pragma once

#include <cstdint>

#include "foundation/wstring.h"
#include "platform/files.h"

/// Addresses as texts. A null text and an empty one are the same. An output may be the same object
/// as the string whose text is an input. Every failure, of memory too, is false. Any thread may
/// call these.
namespace AUX {

/// Joins a base address and an address relative to it (RFC 3986, section 5; UrlCombineW with no
/// flags). \param combined  Empty after a failure; nothing to join is one.
[[nodiscard]] bool CombineUrl(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept;

enum class CheckExists { No, Yes };

/// Turns what names a local location into its path: "C:", "C:\a", "\\server" and what lies below
/// them, and file: addresses of these whose path has less than 260 characters.
/// \param path    May be null. Gets the path; nothing if the result is false.
/// \param exists  May be null. Gets whether the path was found; only looked at with `check`.
/// \param found   May be null. Zeroed, then as PathExists fills it; only with `check`.
/// \param check   Yes also takes every text that PathExists finds, relative ones too.
[[nodiscard]] bool LocalPathFromText(const WCHAR* text, WString* path = nullptr,
                                     bool* exists = nullptr, WIN32_FIND_DATAW* found = nullptr,
                                     CheckExists check = CheckExists::No) noexcept;

/// Flags of EscapeUrl.
enum EscapeUrlFlags : std::uint32_t {
    kEscapeBrowserMode = 1,  ///< the first '?' or '#' and all behind it stays
    kEscapeSpacesOnly = 2,
    kEscapePercent = 4,  ///< '%' too; it stays otherwise
};

/// Writes the UTF-8 bytes of an address that are no printable ASCII, or one of the blank and
/// `"#$%&+,;<=>?@[\]^{|}` and the grave accent, as '%' and two small hexadecimal digits.
/// \param flags    A set of EscapeUrlFlags.
/// \param escaped  Gets the address unchanged when the result is false: when memory runs out (then
///                 it is empty if a copy finds none either), or when the escaped form has more than
///                 3 n + 128 characters for an address of n.
[[nodiscard]] bool EscapeUrl(const WCHAR* url, WString& escaped, std::uint32_t flags = 0) noexcept;

}  // namespace AUX
