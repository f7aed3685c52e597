#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/base.h"

/// The inner loops of the searches, in four forms that find the same: plain, and with the vector
/// instructions that each 64-bit processor has (SSE2) or newer ones (AVX2, AVX-512 with BW). Each
/// looks from `from` up to, not including, `end`, and reads nothing outside of that.

/// A place in markup where a rewriter may have work.
struct TagPlace {
    const WCHAR* open = nullptr;   ///< The '<'; null when there is no such place.
    const WCHAR* close = nullptr;  ///< The tag's '>'; null for a comment.
};

/// Two printable ASCII characters at a distance. A fold of 0x20 finds a small letter in both cases,
/// one of 0 a character as it is.
struct CharacterPair {
    char first;
    char firstFold;
    char second;
    char secondFold;
    std::size_t distance;
};

struct SearchKernels {
    /// Finds the next comment, or the next tag that begins with "a ", "im", "link" or "sc" or has
    /// "yl" in it, so that it may have a `style`: all tags that have work, and few others. A '<'
    /// without a '>' behind it ends the search.
    TagPlace (*findTag)(const WCHAR* from, const WCHAR* end) noexcept;

    /// Finds the first character of a pair that lies before `end` whole, or null.
    const WCHAR* (*findPair)(const WCHAR* from, const WCHAR* end,
                             const CharacterPair& pair) noexcept;

    /// Finds the first of ")", quotes and backslash, or `end`.
    const WCHAR* (*findValueEnd)(const WCHAR* from, const WCHAR* end) noexcept;

    /// Finds the first place of a character, or `end`.
    const WCHAR* (*findUnit)(const WCHAR* from, const WCHAR* end, WCHAR unit) noexcept;

    /// Finds the first character that EncodeEntities changes, or `end`.
    const WCHAR* (*findSpecial)(const WCHAR* from, const WCHAR* end) noexcept;
};

extern const SearchKernels kPlainKernels;
extern const SearchKernels kSse2Kernels;
extern const SearchKernels kAvx2Kernels;
extern const SearchKernels kAvx512Kernels;

/// Tells whether this processor runs a form.
[[nodiscard]] bool CanRun(const SearchKernels& kernels) noexcept;

/// What FastestKernels has chosen; null before its first call.
extern constinit std::atomic<const SearchKernels*> chosenKernels;

/// Asks the processor and sets `chosenKernels`.
const SearchKernels& ChooseKernels() noexcept;

/// The fastest form that this processor runs.
[[nodiscard]] inline const SearchKernels& FastestKernels() noexcept {
    const SearchKernels* const chosen = chosenKernels.load(std::memory_order_relaxed);
    return chosen ? *chosen : ChooseKernels();
}
