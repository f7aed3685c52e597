#include <emmintrin.h>

#include "capture/vector_search.h"

namespace {

using Units = __m128i;  // Eight characters, or sixteen as bytes.

Units Load(const WCHAR* text) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const Units*>(text));
}
Units All(int unit) noexcept { return _mm_set1_epi16(static_cast<short>(unit)); }
Units AllBytes(char byte) noexcept { return _mm_set1_epi8(byte); }

struct Sse2 {
    static TagMasks ReadTags(const WCHAR* block) noexcept {
        TagMasks masks = {};
        for (int at = 0; at < kBlock; at += 16) {
            // What is no ASCII becomes 0 or 255.
            const Units bytes = _mm_packus_epi16(Load(block + at), Load(block + at + 8));
            const Units folded = _mm_or_si128(bytes, AllBytes(0x20));
            const Units names = _mm_or_si128(bytes, AllBytes(0x60));  // '!' is 'a', '-' is 'm'.
            const auto add = [at](Mask& mask, Units found) {
                mask |= Mask{static_cast<unsigned>(_mm_movemask_epi8(found))} << at;
            };
            const auto isOneOf = [names](char a, char b, char c, char d) {
                return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(names, AllBytes(a)),
                                                 _mm_cmpeq_epi8(names, AllBytes(b))),
                                    _mm_or_si128(_mm_cmpeq_epi8(names, AllBytes(c)),
                                                 _mm_cmpeq_epi8(names, AllBytes(d))));
            };
            add(masks.open, _mm_cmpeq_epi8(bytes, AllBytes('<')));
            add(masks.close, _mm_cmpeq_epi8(bytes, AllBytes('>')));
            add(masks.first, isOneOf('a', 'i', 'l', 's'));
            add(masks.second, isOneOf('`', 'm', 'i', 'c'));  // '`' is ' '.
            add(masks.y, _mm_cmpeq_epi8(folded, AllBytes('y')));
            add(masks.l, _mm_cmpeq_epi8(folded, AllBytes('l')));
        }
        return masks;
    }

    static Mask ReadSign(const WCHAR* block, char sign) noexcept {
        Mask mask = 0;
        for (int at = 0; at < kBlock; at += 16) {
            const Units bytes = _mm_packus_epi16(Load(block + at), Load(block + at + 8));
            const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, AllBytes(sign)));
            mask |= Mask{static_cast<unsigned>(found)} << at;
        }
        return mask;
    }

    static unsigned ReadUnit(const WCHAR* first, const WCHAR* second, WCHAR unit) noexcept {
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(
            _mm_cmpeq_epi16(Load(first), All(unit)), _mm_cmpeq_epi16(Load(second), All(unit)))));
    }

    static unsigned ReadValueEnd(const WCHAR* first, const WCHAR* second) noexcept {
        const Units bytes = _mm_packus_epi16(Load(first), Load(second));
        return static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, AllBytes(')')),
                                                        _mm_cmpeq_epi8(bytes, AllBytes('\\'))),
                                           _mm_or_si128(_mm_cmpeq_epi8(bytes, AllBytes('"')),
                                                        _mm_cmpeq_epi8(bytes, AllBytes('\''))))));
    }

    static unsigned ReadSpecial(const WCHAR* first, const WCHAR* second) noexcept {
        const Units bytes = _mm_packus_epi16(Load(first), Load(second));
        // Signed: what is no ASCII is negative or 0.
        const Units isAscii = _mm_cmpgt_epi8(bytes, AllBytes(31));
        // '&' and '\'' differ in bit 0, '<' and '>' in bit 1.
        const Units isNamed = _mm_or_si128(
            _mm_cmpeq_epi8(bytes, AllBytes('"')),
            _mm_or_si128(_mm_cmpeq_epi8(_mm_or_si128(bytes, AllBytes(1)), AllBytes('\'')),
                         _mm_cmpeq_epi8(_mm_or_si128(bytes, AllBytes(2)), AllBytes('>'))));
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(isNamed, isAscii))) ^
               0xFFFF;
    }
};

}  // namespace

const SearchKernels kSse2Kernels = VectorSearch<Sse2, HalvesSearch<Sse2>>::kKernels;
