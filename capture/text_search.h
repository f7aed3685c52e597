#pragma once

#include <cstddef>

#include "capture/search_kernels.h"
#include "foundation/wstring_view.h"

/// A text of small letters and signs, found whatever the case of its letters.
struct SearchText {
    AUX::WStringView text;
    /// The search looks for the first character with the one at this distance; they should seldom
    /// stand so.
    std::size_t distance;
};

inline constexpr SearchText kCommentEnd = {TEXT("-->"), 2};
inline constexpr SearchText kScriptEnd = {TEXT("</script>"), 6};
inline constexpr SearchText kStyleEnd = {TEXT("</style>"), 4};
inline constexpr SearchText kStyleUrl = {TEXT("url("), 3};

/// Tells whether the text from `at` to `end` begins with a prefix of small letters and signs,
/// whatever the case of the text.
[[nodiscard]] bool StartsIgnoringCase(const WCHAR* at, const WCHAR* end,
                                      AUX::WStringView prefix) noexcept;

/// Finds a text that lies between `from` and `end`. \return its first character, or null.
[[nodiscard]] const WCHAR* FindText(const SearchText& sought, const WCHAR* from,
                                    const WCHAR* end) noexcept;
