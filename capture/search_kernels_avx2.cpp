#include <immintrin.h>

#include "capture/vector_search.h"

namespace {

using Units = __m256i;  // Sixteen characters, or thirty-two as bytes.

Units Load(const WCHAR* text) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const Units*>(text));
}
__m128i LoadHalf(const WCHAR* text) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}
Units AllBytes(char byte) noexcept { return _mm256_set1_epi8(byte); }

// Packing works on halves; the permutation brings the quarters back into order.
Units InOrder(Units packed) noexcept { return _mm256_permute4x64_epi64(packed, 0xD8); }

Mask MaskOf(Units low, Units high) noexcept {
    return Mask{static_cast<unsigned>(_mm256_movemask_epi8(low))} |
           Mask{static_cast<unsigned>(_mm256_movemask_epi8(high))} << 32;
}

// For each low half of a byte, the one byte with it that is sought.
Units Table(__m128i bytes) noexcept { return _mm256_broadcastsi128_si256(bytes); }

struct Avx2 {
    static TagMasks ReadTags(const WCHAR* block) noexcept {
        // What is no ASCII becomes 0 or 255.
        const Units low = InOrder(_mm256_packus_epi16(Load(block), Load(block + 16)));
        const Units high = InOrder(_mm256_packus_epi16(Load(block + 32), Load(block + 48)));
        const auto find = [](Units a, Units b, char byte) {
            return MaskOf(_mm256_cmpeq_epi8(a, AllBytes(byte)),
                          _mm256_cmpeq_epi8(b, AllBytes(byte)));
        };
        const Units lowFolded = _mm256_or_si256(low, AllBytes(0x20));
        const Units highFolded = _mm256_or_si256(high, AllBytes(0x20));
        // '!' is 'a', '-' is 'm', ' ' is '`'.
        const Units lowNames = _mm256_or_si256(low, AllBytes(0x60));
        const Units highNames = _mm256_or_si256(high, AllBytes(0x60));
        const auto findOneOf = [&](Units table) {
            return MaskOf(_mm256_cmpeq_epi8(_mm256_shuffle_epi8(table, lowNames), lowNames),
                          _mm256_cmpeq_epi8(_mm256_shuffle_epi8(table, highNames), highNames));
        };
        const Units first =
            Table(_mm_setr_epi8(0, 'a', 0, 's', 0, 0, 0, 0, 0, 'i', 0, 0, 'l', 0, 0, 0));
        const Units second =
            Table(_mm_setr_epi8('`', 0, 0, 'c', 0, 0, 0, 0, 0, 'i', 0, 0, 0, 'm', 0, 0));
        return {find(low, high, '<'),
                find(low, high, '>'),
                findOneOf(first),
                findOneOf(second),
                find(lowFolded, highFolded, 'y'),
                find(lowFolded, highFolded, 'l')};
    }

    static Mask ReadSign(const WCHAR* block, char sign) noexcept {
        // Of 32 characters, in the order of packing. What is no ASCII becomes 0 or 255.
        const auto compare = [sign](const WCHAR* text) {
            return _mm256_cmpeq_epi8(_mm256_packus_epi16(Load(text), Load(text + 16)),
                                     AllBytes(sign));
        };
        const Units low = compare(block);
        const Units high = compare(block + 32);
        const Units any = _mm256_or_si256(low, high);
        return _mm256_testz_si256(any, any) ? 0 : MaskOf(InOrder(low), InOrder(high));
    }

    static unsigned ReadUnit(const WCHAR* first, const WCHAR* second, WCHAR unit) noexcept {
        const __m128i sought = _mm_set1_epi16(static_cast<short>(unit));
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(
            _mm_cmpeq_epi16(LoadHalf(first), sought), _mm_cmpeq_epi16(LoadHalf(second), sought))));
    }

    static unsigned ReadValueEnd(const WCHAR* first, const WCHAR* second) noexcept {
        const __m128i bytes = _mm_packus_epi16(LoadHalf(first), LoadHalf(second));
        const __m128i ends =
            _mm_setr_epi8(')', 0, '"', 0, 0, 0, 0, '\'', 0, ')', 0, 0, '\\', 0, 0, 0);
        return static_cast<unsigned>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_shuffle_epi8(ends, bytes), bytes)));
    }

    static unsigned ReadSpecial(const WCHAR* first, const WCHAR* second) noexcept {
        const __m128i bytes = _mm_packus_epi16(LoadHalf(first), LoadHalf(second));
        // Signed: what is no ASCII is negative or 0.
        const __m128i isAscii = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(31));
        const __m128i names =
            _mm_setr_epi8(0, 0, '"', 0, 0, 0, '&', '\'', 0, 0, 0, 0, '<', 0, '>', 0);
        const __m128i isNamed = _mm_cmpeq_epi8(_mm_shuffle_epi8(names, bytes), bytes);
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(isNamed, isAscii))) ^
               0xFFFF;
    }
};

}  // namespace

const SearchKernels kAvx2Kernels = VectorSearch<Avx2, HalvesSearch<Avx2>>::kKernels;
