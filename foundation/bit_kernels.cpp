#include "foundation/bit_kernels.h"

#include <emmintrin.h>

#include "foundation/bit_words.h"
#include "foundation/sse2_registers.h"
#include "foundation/system_facts.h"

namespace AUX {
namespace {

__m128i Pattern(int bits) noexcept { return _mm_set1_epi32(bits); }

// One step of the parallel sum: neighbouring fields of `shift` bits are added.
template <int shift>
__m128i AddFields(__m128i value, __m128i mask) noexcept {
    return _mm_add_epi32(_mm_and_si128(value, mask),
                         _mm_and_si128(_mm_srli_epi64(value, shift), mask));
}

__m128i CountPair(__m128i value) noexcept {
    value = AddFields<1>(value, Pattern(0x55555555));
    value = AddFields<2>(value, Pattern(0x33333333));
    value = AddFields<4>(value, Pattern(0x0F0F0F0F));
    // The sums of bytes, without the steps between: at most 64 fits a byte.
    return _mm_sad_epu8(value, _mm_setzero_si128());
}

std::uint64_t Count(const std::uint64_t* words, std::size_t count) noexcept {
    __m128i sums = _mm_setzero_si128();
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i first = CountPair(Sse2Registers::Load(words + i));
        const __m128i second = CountPair(Sse2Registers::Load(words + i + 2));
        sums = _mm_add_epi64(sums, _mm_add_epi64(first, second));
    }
    alignas(16) std::uint64_t halves[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(halves), sums);
    std::uint64_t sum = halves[0] + halves[1];
    for (; i < count; ++i) sum += CountWord(words[i]);
    return sum;
}

}  // namespace

constinit const BitKernels kPlainBitKernels = {Count, CombineWords<Sse2Registers, AndStep>,
                                               CombineWords<Sse2Registers, AndNotStep>,
                                               CombineWords<Sse2Registers, OrStep>};

constinit const BitKernels* kernels = &kPlainBitKernels;

void memory::ChooseBitKernels() noexcept {
    const SystemFacts& facts = Facts();
    if (facts.hasWideBitCount) {
        kernels = &kAvx512BitKernels;
    } else if (facts.hasAvx2) {
        kernels = &kAvx2BitKernels;
    } else if (facts.hasPopcnt) {
        kernels = &kPopcntBitKernels;
    }
}

}  // namespace AUX
