#pragma once

#include <bit>
#include <cstdint>

#include "cab/json_kernels.h"

/// The loops of json_kernels.h over a `Block`: 64 units, each cut to 8 bits where larger ones count
/// as 0xFF. It has Equal(unit) and Above(unit), which give one bit a unit, and Pack(out, keep),
/// which writes the kept units side by side, and maybe others behind them up to 64 in all, and
/// gives the end of those kept. Each form has its own copy, so that no instruction of one gets
/// into another.
namespace {

using AUX::CAB::JsonBlockBits;
using AUX::CAB::JsonStrip;
using AUX::CAB::kJsonBlock;

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
        const std::uint64_t backslash = block.Equal('\\');
        const std::uint64_t allQuotes = block.Equal('"');
        bool carry = isEscaped;
        const std::uint64_t escaped =
            backslash != 0 || isEscaped ? EscapedBits(backslash, carry) : 0;
        const std::uint64_t quote = allQuotes & ~escaped;
        const std::uint64_t strings = AUX::CAB::ParityBits(quote) ^ inside;
        const std::uint64_t blank =
            block.Equal(' ') | block.Equal('\n') | block.Equal('\r') | block.Equal('\t');
        const std::uint64_t plain = block.Above(' ') & ~block.Above('~');
        const std::uint64_t special = block.Equal('#') | block.Equal('/') | backslash;
        if (((~(plain | blank) | special) & ~strings) != 0) break;
        const std::uint64_t keep = ~(blank & ~strings);
        WCHAR* const start = out;
        out = block.Pack(out, keep);
        std::uint64_t escapedQuotes = allQuotes & escaped;
        if (escapedQuotes) state.sawEscapedQuote = true;
        for (; escapedQuotes; escapedQuotes &= escapedQuotes - 1) {
            const std::uint64_t below = (escapedQuotes & -escapedQuotes) - 1;
            start[std::popcount(keep & below)] = 1;
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
    bits.quote = block.Equal('"');
    bits.zero = block.Equal(0);
    bits.comma = block.Equal(',');
    bits.colon = block.Equal(':');
    bits.openSquare = block.Equal('[');
    bits.closeSquare = block.Equal(']');
    bits.openCurly = block.Equal('{');
    bits.closeCurly = block.Equal('}');
}

}  // namespace
