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

/// A sign of ASCII that counts only where another character stands at a distance from it. That one
/// is a sign or a small letter, and is found in both cases: its bit 0x20 is not looked at.
struct SoughtSign {
    char sign;
    char other;
    std::ptrdiff_t distance;  ///< From the sign; negative for a character before it.
};

struct SearchKernels {
    /// Finds the next comment, or the next tag that begins with "a ", "im", "link" or "sc" or has
    /// "yl" in it, so that it may have a `style`: all tags that have work, and few others. A '<'
    /// without a '>' behind it ends the search.
    TagPlace (*findTag)(const WCHAR* from, const WCHAR* end) noexcept;

    /// Finds a sign, or `end`. The text goes on at least by the distance before `from`, or behind
    /// `end`: there the other character may stand.
    const WCHAR* (*findSign)(const WCHAR* from, const WCHAR* end,
                             const SoughtSign& sought) noexcept;

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
