#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/base.h"

/// The inner loops of the text layer, in forms that give the same: with the registers of 128 bits
/// that each 64-bit processor has, and with newer instructions.
namespace AUX::CAB {

/// The units that a loop takes in one step; one bit of a word stands for each.
inline constexpr std::ptrdiff_t kJsonBlock = 64;

/// Where the units with a part in the structure are in a block, for going over one level of it.
struct JsonBlockBits {
    /// The units in strings, with the opening quote and without the closing one, of a block that
    /// begins outside of strings. One that begins inside has the opposite.
    std::uint64_t strings;
    std::uint64_t zero;
    std::uint64_t comma;
    std::uint64_t colon;
    std::uint64_t openSquare;
    std::uint64_t closeSquare;
    std::uint64_t openCurly;
    std::uint64_t closeCurly;

    [[nodiscard]] std::uint64_t Structure() const noexcept {
        return comma | colon | openSquare | closeSquare | openCurly | closeCurly;
    }
};

/// What the marks of a text are made from, likewise.
struct JsonMarkBits {
    std::uint64_t strings;
    std::uint64_t zero;
    std::uint64_t structure;  ///< Commas, colons and brackets.
    std::uint64_t special;    ///< Backslashes, and what stands for quotes behind them.
};

/// How far a walk to the end of brackets is.
struct JsonNesting {
    std::uint64_t depth;   ///< Closing brackets until the end, at least 1.
    std::uint64_t inside;  ///< All bits set in a string, else 0.
};

/// How far the strip pass is.
struct JsonStrip {
    const WCHAR* in;
    const WCHAR* end;
    WCHAR* out;  ///< As much room as from `in` to `end`, at least.
    bool inString;
    bool isEscaped;  ///< A backslash in a string stands right before `in`.
    bool sawEscapedQuote;
};

struct JsonKernels {
    /// Strips whole blocks, up to one with something outside of strings that is neither printable
    /// ASCII nor white space, or may begin a comment, or is a backslash.
    void (*strip)(JsonStrip& state) noexcept;

    void (*classify)(const WCHAR* block, JsonBlockBits& bits) noexcept;
    void (*classifyMarks)(const WCHAR* block, JsonMarkBits& bits) noexcept;

    /// Passes whole blocks, up to one that may end the nesting of square or curly brackets, or has
    /// a zero unit. \return the units passed.
    std::size_t (*passNested)(const WCHAR* text, std::size_t units, bool isSquare,
                              JsonNesting& nesting) noexcept;

    /// Copies whole blocks, as many as there are, with quotes for kHiddenQuote. \return the
    /// units copied.
    std::size_t (*restoreQuotes)(const WCHAR* text, std::size_t units, WCHAR* out) noexcept;
};

extern const JsonKernels kSse2JsonKernels;
/// Needs AVX2, and POPCNT, which each processor with AVX2 has.
extern const JsonKernels kAvx2JsonKernels;
/// Needs what platform::HasAvx512Compress asks for.
extern const JsonKernels kAvx512JsonKernels;

/// What FastestJsonKernels has chosen; null before its first call.
extern constinit std::atomic<const JsonKernels*> chosenJsonKernels;

/// Asks the processor and sets `chosenJsonKernels`.
const JsonKernels& ChooseJsonKernels() noexcept;

/// The fastest form that this processor runs.
[[nodiscard]] inline const JsonKernels& FastestJsonKernels() noexcept {
    const JsonKernels* const chosen = chosenJsonKernels.load(std::memory_order_relaxed);
    return chosen ? *chosen : ChooseJsonKernels();
}

}  // namespace AUX::CAB
