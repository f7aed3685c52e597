#include <immintrin.h>

#include "foundation/bit_kernels.h"
#include "foundation/bit_words.h"

namespace AUX {
namespace {

struct Avx512Registers {
    using Value = __m512i;
    static Value Load(const std::uint64_t* from) noexcept { return _mm512_loadu_si512(from); }
    static void Store(std::uint64_t* to, Value value) noexcept { _mm512_storeu_si512(to, value); }
    static Value And(Value to, Value from) noexcept { return _mm512_and_si512(to, from); }
    // The form with a mask: the plain one reads an undefined register, and the compiler says so.
    static Value AndNot(Value to, Value from) noexcept {
        return _mm512_maskz_andnot_epi64(0xFF, from, to);
    }
    static Value Or(Value to, Value from) noexcept { return _mm512_or_si512(to, from); }
};

__m512i CountAt(const std::uint64_t* words) noexcept {
    return _mm512_popcnt_epi64(Avx512Registers::Load(words));
}

// Four sums, so that no addition waits for the one before.
std::uint64_t Count(const std::uint64_t* words, std::size_t count) noexcept {
    __m512i a = _mm512_setzero_si512();
    __m512i b = a;
    __m512i c = a;
    __m512i d = a;
    std::size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        a = _mm512_add_epi64(a, CountAt(words + i));
        b = _mm512_add_epi64(b, CountAt(words + i + 8));
        c = _mm512_add_epi64(c, CountAt(words + i + 16));
        d = _mm512_add_epi64(d, CountAt(words + i + 24));
    }
    std::uint64_t parts[8];
    Avx512Registers::Store(parts, _mm512_add_epi64(_mm512_add_epi64(a, b), _mm512_add_epi64(c, d)));
    std::uint64_t sum = 0;
    for (const std::uint64_t part : parts) sum += part;
    for (; i < count; ++i) sum += static_cast<std::uint64_t>(_mm_popcnt_u64(words[i]));
    return sum;
}

}  // namespace

constinit const BitKernels kAvx512BitKernels = {Count, CombineWords<Avx512Registers, AndStep>,
                                                CombineWords<Avx512Registers, AndNotStep>,
                                                CombineWords<Avx512Registers, OrStep>};

}  // namespace AUX
