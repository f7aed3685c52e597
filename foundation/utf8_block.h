#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "platform/base.h"

/// UTF-16 units eight at a time, in the vector registers that every x86-64 processor has.
namespace AUX::utf8 {

static_assert(std::endian::native == std::endian::little, "first byte is the lowest one");

inline constexpr std::ptrdiff_t kBlockUnits = 8;
inline constexpr std::ptrdiff_t kRunUnits = 32;

/// What a block's Put may write, in bytes, from `out` on.
inline constexpr std::ptrdiff_t kBlockReach = 26;

inline __m128i LoadUnits(const WCHAR* text) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

/// Writes kRunUnits units if all are ASCII, and tells whether they are.
inline bool PutAsciiRun(const WCHAR* text, char* out) noexcept {
    const __m128i a = LoadUnits(text);
    const __m128i b = LoadUnits(text + kBlockUnits);
    const __m128i c = LoadUnits(text + 2 * kBlockUnits);
    const __m128i d = LoadUnits(text + 3 * kBlockUnits);
    const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    // From 0x80 on the sum has its highest bit set.
    const __m128i sums = _mm_adds_epu16(all, _mm_set1_epi16(0x7F80));
    if (_mm_movemask_epi8(sums) & 0xAAAA) return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(a, b));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + kRunUnits / 2), _mm_packus_epi16(c, d));
    return true;
}

/// kBlockUnits units. Put... writes the bytes of units of that sort and gives their end. It may
/// write more behind that, though no more than the block and as many units behind it make.
class Block {
public:
    explicit Block(const WCHAR* text) noexcept
        : units_(LoadUnits(text)),
          ascii_(_mm_cmpeq_epi16(_mm_srli_epi16(units_, 7), _mm_setzero_si128())) {}

    [[nodiscard]] bool IsAscii() const noexcept { return IsAll(ascii_); }

    /// Units at the block's beginning that are ASCII, and what writes so many of them.
    [[nodiscard]] std::ptrdiff_t AsciiRun() const noexcept { return RunOf(ascii_); }
    char* PutAscii(char* out, std::ptrdiff_t units) const noexcept {
        Store8(out, _mm_packus_epi16(units_, units_));
        return out + units;
    }

    /// Units at the beginning that take three bytes and are no surrogates, and what writes them.
    [[nodiscard]] std::ptrdiff_t ThreeByteRun() const noexcept {
        const __m128i others = _mm_or_si128(Short(), Surrogates());
        return RunOf(_mm_cmpeq_epi16(others, _mm_setzero_si128()));
    }
    char* PutThreeByte(char* out, std::ptrdiff_t units) const noexcept {
        PutFour(_mm_unpacklo_epi16(units_, _mm_setzero_si128()), out);
        if (units > 4) PutFour(_mm_unpackhi_epi16(units_, _mm_setzero_si128()), out + 12);
        return out + 3 * units;
    }

    /// Whether no unit takes more than two bytes, and what writes the whole block then.
    [[nodiscard]] bool IsShort() const noexcept { return IsAll(Short()); }
    char* PutShort(char* out) const noexcept;

    [[nodiscard]] bool HasSurrogate() const noexcept {
        return _mm_movemask_epi8(Surrogates()) != 0;
    }

private:
    friend class Tally;

    // All bits of the units that are below U+0800; of those that are surrogates.
    [[nodiscard]] __m128i Short() const noexcept {
        return _mm_cmpeq_epi16(_mm_srli_epi16(units_, 11), _mm_setzero_si128());
    }
    [[nodiscard]] __m128i Surrogates() const noexcept {
        constexpr short kRange = 0xD800 >> 11;
        return _mm_cmpeq_epi16(_mm_srli_epi16(units_, 11), _mm_set1_epi16(kRange));
    }

    static bool IsAll(__m128i mask) noexcept { return _mm_movemask_epi8(mask) == 0xFFFF; }

    // Units at the beginning whose bits in the mask are set, two in each result of the processor's.
    static std::ptrdiff_t RunOf(__m128i mask) noexcept {
        return std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(mask))) / 2;
    }
    static void Store8(char* out, __m128i bytes) noexcept {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
    }
    static __m128i Select(__m128i mask, __m128i yes, __m128i no) noexcept {
        return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
    }
    static void PutFour(__m128i units, char* out) noexcept;

    __m128i units_;
    __m128i ascii_;  // All bits of the units that are.
};

inline char* Block::PutShort(char* out) const noexcept {
    // The one or two bytes of each unit in its lane of two,
    const __m128i low = _mm_slli_epi16(_mm_and_si128(units_, _mm_set1_epi16(0x3F)), 8);
    const __m128i both = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(units_, 6), low),
                                      _mm_set1_epi16(static_cast<short>(0x80C0)));
    const __m128i one = Select(ascii_, units_, both);
    // of two units together in a lane of four, where the second follows an ASCII one closely,
    const __m128i firstIsAscii = _mm_shufflehi_epi16(_mm_shufflelo_epi16(ascii_, 0xA0), 0xA0);
    const __m128i close =
        _mm_or_si128(_mm_and_si128(one, _mm_set1_epi32(0xFF)), _mm_srli_epi32(one, 8));
    const __m128i two = Select(firstIsAscii, close, one);
    // and of four in a lane of eight: the upper half moves down a byte for each ASCII one below.
    const __m128i below = _mm_shuffle_epi32(ascii_, 0xA0);
    const __m128i swapped = _mm_or_si128(_mm_slli_epi32(below, 16), _mm_srli_epi32(below, 16));
    const __m128i lowerHalf = _mm_set1_epi64x(0xFFFFFFFF);
    const __m128i upper = _mm_andnot_si128(lowerHalf, two);
    const __m128i moved = Select(_mm_or_si128(below, swapped), _mm_srli_epi64(upper, 8), upper);
    const __m128i movedTwice =
        Select(_mm_and_si128(below, swapped), _mm_srli_epi64(upper, 16), moved);
    const __m128i four = _mm_or_si128(_mm_and_si128(lowerHalf, two), movedTwice);
    // How many bytes that makes, by the number of bits in each half of the mask.
    constexpr std::uint64_t kBytes = 0x4556566756676778;
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(ascii_, ascii_)));
    Store8(out, four);
    out += kBytes >> (mask & 0xF) * 4 & 0xF;
    Store8(out, _mm_unpackhi_epi64(four, four));
    return out + (kBytes >> (mask >> 4 & 0xF) * 4 & 0xF);
}

inline void Block::PutFour(__m128i units, char* out) noexcept {
    // The three bytes of each unit in its lane of four,
    const __m128i middle = _mm_and_si128(_mm_slli_epi32(units, 2), _mm_set1_epi32(0x3F00));
    const __m128i last = _mm_and_si128(_mm_slli_epi32(units, 16), _mm_set1_epi32(0x3F0000));
    const __m128i lead = _mm_or_si128(_mm_srli_epi32(units, 12), _mm_set1_epi32(0x8080E0));
    const __m128i one = _mm_or_si128(lead, _mm_or_si128(middle, last));
    // and the six of two units together in a lane of eight.
    const __m128i lower = _mm_set1_epi64x(0xFFFFFF);
    const __m128i two =
        _mm_or_si128(_mm_and_si128(one, lower), _mm_srli_epi64(_mm_andnot_si128(lower, one), 8));
    Store8(out, two);
    Store8(out + 6, _mm_unpackhi_epi64(two, two));
}

/// Adds up what blocks take, in bytes, a surrogate counted as three.
class Tally {
public:
    static constexpr std::ptrdiff_t kMaxBlocks = 4096;  ///< Its sums have 16 bits.

    void Add(const Block& block) noexcept {
        // A mask's bits are the number -1: what is short saves a byte, what is ASCII another.
        saved_ = _mm_sub_epi16(saved_, _mm_add_epi16(block.Short(), block.ascii_));
        ++blocks_;
    }
    [[nodiscard]] std::size_t Bytes() const noexcept {
        std::uint16_t saved[kBlockUnits];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(saved), saved_);
        std::size_t bytes = blocks_ * kBlockUnits * 3;
        for (const std::uint16_t lane : saved) bytes -= lane;
        return bytes;
    }

private:
    __m128i saved_ = _mm_setzero_si128();
    std::size_t blocks_ = 0;
};

}  // namespace AUX::utf8
