#pragma once

#include <algorithm>
#include <cstddef>

#include "capture/characters.h"
#include "capture/search_kernels.h"
#include "foundation/wstring_view.h"

/// A text of small letters and signs, found whatever the case of its letters.
struct SearchText {
    AUX::WStringView text;
    std::size_t signAt;  ///< Where in it a sign stands that is rare in other text.
    SoughtSign sign;
};

inline constexpr SearchText kCommentEnd = {TEXT("-->"), 2, {'>', '-', -2}};
inline constexpr SearchText kScriptEnd = {TEXT("</script>"), 0, {'<', 'p', 6}};
inline constexpr SearchText kStyleEnd = {TEXT("</style>"), 0, {'<', 'y', 4}};
inline constexpr SearchText kStyleUrl = {TEXT("url("), 3, {'(', 'u', -3}};

/// Tells whether the text from `at` to `end` begins with a prefix of small letters and signs,
/// whatever the case of the text.
[[nodiscard]] inline bool StartsIgnoringCase(const WCHAR* at, const WCHAR* end,
                                             AUX::WStringView prefix) noexcept {
    return static_cast<std::size_t>(end - at) >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), at, IsSameIgnoringCase);
}

/// Finds a text that lies between `from` and `end`. \return its first character, or null.
[[nodiscard]] const WCHAR* FindText(const SearchText& sought, const WCHAR* from,
                                    const WCHAR* end) noexcept;
