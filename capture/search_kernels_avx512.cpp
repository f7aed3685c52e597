#include <immintrin.h>

#include "capture/vector_search.h"

namespace {

using Units = __m512i;  // Thirty-two characters, or sixty-four as bytes.

constexpr int kUnits = 32;

Units Load(const WCHAR* text) noexcept { return _mm512_loadu_si512(text); }
Units All(int unit) noexcept { return _mm512_set1_epi16(static_cast<short>(unit)); }
Units AllBytes(char byte) noexcept { return _mm512_set1_epi8(byte); }

// For each low half of a byte, the one byte with it that is sought.
Units Table(__m128i bytes) noexcept { return _mm512_broadcast_i32x4(bytes); }

Mask IsOneOf(Units table, Units bytes) noexcept {
    return _mm512_cmpeq_epi8_mask(_mm512_shuffle_epi8(table, bytes), bytes);
}

struct Avx512 {
    static TagMasks ReadTags(const WCHAR* block) noexcept {
        // Packing works on quarters. What is no ASCII becomes 0 or 255.
        const Units bytes =
            _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                     _mm512_packus_epi16(Load(block), Load(block + kUnits)));
        const Units folded = _mm512_or_si512(bytes, AllBytes(0x20));
        // '!' is 'a', '-' is 'm', ' ' is '`'.
        const Units names = _mm512_or_si512(bytes, AllBytes(0x60));
        const Units first =
            Table(_mm_setr_epi8(0, 'a', 0, 's', 0, 0, 0, 0, 0, 'i', 0, 0, 'l', 0, 0, 0));
        const Units second =
            Table(_mm_setr_epi8('`', 0, 0, 'c', 0, 0, 0, 0, 0, 'i', 0, 0, 0, 'm', 0, 0));
        return {_mm512_cmpeq_epi8_mask(bytes, AllBytes('<')),
                _mm512_cmpeq_epi8_mask(bytes, AllBytes('>')),
                IsOneOf(first, names),
                IsOneOf(second, names),
                _mm512_cmpeq_epi8_mask(folded, AllBytes('y')),
                _mm512_cmpeq_epi8_mask(folded, AllBytes('l'))};
    }

    static Mask ReadSign(const WCHAR* block, char sign) noexcept {
        const __mmask32 low = _mm512_cmpeq_epi16_mask(Load(block), All(sign));
        const __mmask32 high = _mm512_cmpeq_epi16_mask(Load(block + kUnits), All(sign));
        return Mask{low} | Mask{high} << kUnits;
    }
};

// Gives the first place of which `find` tells, or `end`. It gets characters and the mask of those
// that lie before `end`; the others read as 0.
template <class Find>
const WCHAR* FindFirst(const WCHAR* from, const WCHAR* end, Find find) noexcept {
    for (; end - from > kUnits; from += kUnits) {
        if (const __mmask32 found = find(Load(from), ~__mmask32{0})) {
            return from + std::countr_zero(found);
        }
    }
    // The shift is one of a wider number, which may lose all of its bits.
    const __mmask32 inside = static_cast<__mmask32>((Mask{1} << (end - from)) - 1);
    const __mmask32 found = find(_mm512_maskz_loadu_epi16(inside, from), inside);
    return found ? from + std::countr_zero(found) : end;
}

struct MaskedSearch {
    static const WCHAR* FindValueEnd(const WCHAR* from, const WCHAR* end) noexcept {
        return FindFirst(from, end, [](Units units, __mmask32 inside) {
            return _mm512_mask_cmpeq_epi16_mask(inside, units, All(')')) |
                   _mm512_mask_cmpeq_epi16_mask(inside, units, All('\\')) |
                   _mm512_mask_cmpeq_epi16_mask(inside, units, All('"')) |
                   _mm512_mask_cmpeq_epi16_mask(inside, units, All('\''));
        });
    }

    static const WCHAR* FindUnit(const WCHAR* from, const WCHAR* end, WCHAR unit) noexcept {
        const Units sought = All(unit);
        return FindFirst(from, end, [sought](Units units, __mmask32 inside) {
            return _mm512_mask_cmpeq_epi16_mask(inside, units, sought);
        });
    }

    static const WCHAR* FindSpecial(const WCHAR* from, const WCHAR* end) noexcept {
        return FindFirst(from, end, [](Units units, __mmask32 inside) {
            // '&' and '\'' differ in bit 0, '<' and '>' in bit 1. One subtraction asks for both
            // ends of the range from 32 to 127.
            return _mm512_mask_cmpgt_epu16_mask(inside, _mm512_sub_epi16(units, All(32)), All(95)) |
                   _mm512_mask_cmpeq_epi16_mask(inside, units, All('"')) |
                   _mm512_mask_cmpeq_epi16_mask(inside, _mm512_or_si512(units, All(1)), All('\'')) |
                   _mm512_mask_cmpeq_epi16_mask(inside, _mm512_or_si512(units, All(2)), All('>'));
        });
    }
};

}  // namespace

const SearchKernels kAvx512Kernels = VectorSearch<Avx512, MaskedSearch>::kKernels;
