#pragma once

#include <cstddef>

#include "foundation/wstring_view.h"

/// The searches that a rewriter spends its time in. Each looks from `from` up to, not including,
/// `end`, and reads nothing outside of that.

/// A place in markup where a rewriter may have work.
struct TagPlace {
    const WCHAR* open = nullptr;   ///< The '<'; null when there is no such place.
    const WCHAR* close = nullptr;  ///< The tag's '>'; null for a comment.
};

/// A text of small letters and signs, found whatever the case of its letters. The search looks for
/// two of its characters; they should be rare.
struct SearchText {
    AUX::WStringView text;
    std::size_t first;
    std::size_t second;  ///< Behind `first`.
};

inline constexpr SearchText kCommentEnd = {TEXT("-->"), 0, 2};
inline constexpr SearchText kScriptEnd = {TEXT("</script>"), 0, 1};
inline constexpr SearchText kStyleEnd = {TEXT("</style>"), 0, 1};
inline constexpr SearchText kStyleUrl = {TEXT("url("), 0, 3};

/// Finds the next comment, or the next tag that begins with "a ", "im", "lin" or "sc" or holds
/// "yl", so that it may have a `style`: all tags that have work, and few others. A '<' without a
/// '>' behind it ends the search.
[[nodiscard]] TagPlace FindTag(const WCHAR* from, const WCHAR* end) noexcept;

/// Finds a text. \return its first character, or null.
[[nodiscard]] const WCHAR* FindText(const SearchText& sought, const WCHAR* from,
                                    const WCHAR* end) noexcept;
