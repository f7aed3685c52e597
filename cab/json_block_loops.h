#pragma once

#include <bit>
#include <cstdint>

#include "cab/json_kernels.h"
#include "cab/json_quotes.h"

/// The loops of json_kernels.h over a `Block`: 64 units, each cut to 8 bits where larger ones count
/// as 0xFF. It has
/// - Equal(unit) and Above(unit), which give one bit a unit;
/// - Kinds() and MarkBits(), which ask for several such bits at once;
/// - Parity(bits): for each bit, whether the number of set bits up to it is odd;
/// - Pack(out, keep), which writes the kept units side by side, and maybe others behind them up to
///   64 in all, and gives the end of those kept;
/// - Replace(out, from, to), a static copy of a block with one unit for another.
/// Each form has its own copy, so that no instruction of one gets into another.
namespace {

using AUX::CAB::JsonBlockBits;
using AUX::CAB::JsonMarkBits;
using AUX::CAB::JsonNesting;
using AUX::CAB::JsonStrip;
using AUX::CAB::kHiddenQuote;
using AUX::CAB::kJsonBlock;

/// What the strip pass asks of each unit.
struct StripKinds {
    std::uint64_t quote;
    std::uint64_t backslash;
    std::uint64_t blank;
    std::uint64_t stop;  ///< Outside of strings it ends the loop.
};

/// Kinds and MarkBits of a block that can only compare.
template <class Block>
StripKinds KindsByComparing(const Block& block) noexcept {
    const std::uint64_t backslash = block.Equal('\\');
    const std::uint64_t blank =
        block.Equal(' ') | block.Equal('\n') | block.Equal('\r') | block.Equal('\t');
    const std::uint64_t plain = block.Above(' ') & ~block.Above('~');
    const std::uint64_t special = block.Equal('#') | block.Equal('/') | backslash;
    return {block.Equal('"'), backslash, blank, ~(plain | blank) | special};
}
template <class Block>
JsonMarkBits MarkBitsByComparing(const Block& block) noexcept {
    return {Block::Parity(block.Equal('"')), block.Equal(0),
            block.Equal(',') | block.Equal(':') | block.Equal('[') | block.Equal(']') |
                block.Equal('{') | block.Equal('}'),
            block.Equal('\\') | block.Equal(kHiddenQuote)};
}

/// Parity of bits where nothing but shifts serve.
inline std::uint64_t ParityByShifts(std::uint64_t bits) noexcept {
    for (int shift = 1; shift < 64; shift *= 2) bits ^= bits << shift;
    return bits;
}

/// The units behind an odd number of backslashes of one run. \param carry  Whether the first unit
/// is; then whether the one behind the block is.
inline std::uint64_t EscapedBits(std::uint64_t backslash, bool& carry) noexcept {
    std::uint64_t escaped = 0;
    std::uint64_t first = carry ? 1 : 0;
    backslash &= ~first;
    escaped |= first;
    carry = false;
    while (backslash) {
        const int at = std::countr_zero(backslash);
        if (at == 63) {
            carry = true;
            break;
        }
        escaped |= std::uint64_t{2} << at;
        backslash &= ~(std::uint64_t{3} << at);
    }
    return escaped;
}

template <class Block>
void StripBlocks(JsonStrip& state) noexcept {
    const WCHAR* in = state.in;
    WCHAR* out = state.out;
    std::uint64_t inside = state.inString ? ~std::uint64_t{0} : 0;
    bool isEscaped = state.isEscaped;
    for (; state.end - in >= kJsonBlock; in += kJsonBlock) {
        const Block block(in);
        const StripKinds kinds = block.Kinds();
        bool carry = isEscaped;
        const std::uint64_t escaped =
            kinds.backslash != 0 || isEscaped ? EscapedBits(kinds.backslash, carry) : 0;
        const std::uint64_t strings = Block::Parity(kinds.quote & ~escaped) ^ inside;
        if ((kinds.stop & ~strings) != 0) break;
        const std::uint64_t keep = ~(kinds.blank & ~strings);
        WCHAR* const start = out;
        out = block.Pack(out, keep);
        std::uint64_t escapedQuotes = kinds.quote & escaped;
        if (escapedQuotes) state.sawEscapedQuote = true;
        for (; escapedQuotes; escapedQuotes &= escapedQuotes - 1) {
            const std::uint64_t below = (escapedQuotes & -escapedQuotes) - 1;
            start[std::popcount(keep & below)] = kHiddenQuote;
        }
        inside = static_cast<std::uint64_t>(static_cast<std::int64_t>(strings) >> 63);
        isEscaped = carry;
    }
    state.in = in;
    state.out = out;
    state.inString = inside != 0;
    state.isEscaped = isEscaped;
}

template <class Block>
void Classify(const WCHAR* from, JsonBlockBits& bits) noexcept {
    const Block block(from);
    bits.strings = Block::Parity(block.Equal('"'));
    bits.zero = block.Equal(0);
    bits.comma = block.Equal(',');
    bits.colon = block.Equal(':');
    bits.openSquare = block.Equal('[');
    bits.closeSquare = block.Equal(']');
    bits.openCurly = block.Equal('{');
    bits.closeCurly = block.Equal('}');
}

template <class Block>
void ClassifyMarks(const WCHAR* from, JsonMarkBits& bits) noexcept {
    bits = Block(from).MarkBits();
}

template <class Block>
std::size_t PassNested(const WCHAR* text, std::size_t units, bool isSquare,
                       JsonNesting& nesting) noexcept {
    const char open = isSquare ? '[' : '{';
    const char close = isSquare ? ']' : '}';
    auto [depth, inside] = nesting;
    std::size_t at = 0;
    for (; units - at >= kJsonBlock; at += kJsonBlock) {
        const Block block(text + at);
        const std::uint64_t strings = Block::Parity(block.Equal('"')) ^ inside;
        const auto closings = std::popcount(block.Equal(close) & ~strings);
        if (static_cast<std::uint64_t>(closings) >= depth || block.Equal(0) != 0) break;
        depth += static_cast<std::uint64_t>(std::popcount(block.Equal(open) & ~strings));
        depth -= static_cast<std::uint64_t>(closings);
        inside = static_cast<std::uint64_t>(static_cast<std::int64_t>(strings) >> 63);
    }
    nesting = {depth, inside};
    return at;
}

template <class Block>
std::size_t RestoreQuotes(const WCHAR* text, std::size_t units, WCHAR* out) noexcept {
    const std::size_t whole = units - units % kJsonBlock;
    for (std::size_t at = 0; at < whole; at += kJsonBlock) {
        Block::Replace(out + at, text + at, kHiddenQuote, '"');
    }
    return whole;
}

template <class Block>
constexpr AUX::CAB::JsonKernels kKernelsOf = {StripBlocks<Block>, Classify<Block>,
                                              ClassifyMarks<Block>, PassNested<Block>,
                                              RestoreQuotes<Block>};

}  // namespace
