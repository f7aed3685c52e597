#include <immintrin.h>

#include "foundation/bit_kernels.h"
#include "foundation/bit_words.h"

namespace AUX {
namespace {

struct Avx2Registers {
    using Value = __m256i;
    static Value Load(const std::uint64_t* from) noexcept {
        return _mm256_loadu_si256(reinterpret_cast<const Value*>(from));
    }
    static void Store(std::uint64_t* to, Value value) noexcept {
        _mm256_storeu_si256(reinterpret_cast<Value*>(to), value);
    }
    static Value And(Value to, Value from) noexcept { return _mm256_and_si256(to, from); }
    static Value AndNot(Value to, Value from) noexcept { return _mm256_andnot_si256(from, to); }
    static Value Or(Value to, Value from) noexcept { return _mm256_or_si256(to, from); }
};

// The bits of each byte, by looking its halves up in a table of 16.
__m256i CountBytes(__m256i value) noexcept {
    const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4, 0, 1, 1,
                                           2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
    const __m256i half = _mm256_set1_epi8(0x0F);
    const __m256i low = _mm256_and_si256(value, half);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(value, 4), half);
    return _mm256_add_epi8(_mm256_shuffle_epi8(table, low), _mm256_shuffle_epi8(table, high));
}

// Adds three words of single bits: `low` becomes the sum's low bits, the result its high bits.
__m256i AddBits(__m256i& low, __m256i a, __m256i b) noexcept {
    const __m256i half = _mm256_xor_si256(low, a);
    const __m256i high = _mm256_or_si256(_mm256_and_si256(low, a), _mm256_and_si256(half, b));
    low = _mm256_xor_si256(half, b);
    return high;
}

__m256i SumOfBytes(__m256i bytes) noexcept {
    return _mm256_sad_epu8(bytes, _mm256_setzero_si256());
}

// Eight registers are first added bit by bit, so that only one of them in the end is looked up.
std::uint64_t Count(const std::uint64_t* words, std::size_t count) noexcept {
    constexpr std::size_t kStep = 32;
    __m256i eights = _mm256_setzero_si256();
    __m256i ones = _mm256_setzero_si256();
    __m256i twos = _mm256_setzero_si256();
    __m256i fours = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        const auto at = [&](std::size_t k) { return Avx2Registers::Load(words + i + 4 * k); };
        const __m256i twosA = AddBits(ones, at(0), at(1));
        const __m256i twosB = AddBits(ones, at(2), at(3));
        const __m256i foursA = AddBits(twos, twosA, twosB);
        const __m256i twosC = AddBits(ones, at(4), at(5));
        const __m256i twosD = AddBits(ones, at(6), at(7));
        const __m256i foursB = AddBits(twos, twosC, twosD);
        const __m256i high = AddBits(fours, foursA, foursB);
        eights = _mm256_add_epi64(eights, SumOfBytes(CountBytes(high)));
    }
    __m256i sums = _mm256_slli_epi64(eights, 3);
    sums = _mm256_add_epi64(sums, _mm256_slli_epi64(SumOfBytes(CountBytes(fours)), 2));
    sums = _mm256_add_epi64(sums, _mm256_slli_epi64(SumOfBytes(CountBytes(twos)), 1));
    sums = _mm256_add_epi64(sums, SumOfBytes(CountBytes(ones)));
    std::uint64_t parts[4];
    Avx2Registers::Store(parts, sums);
    std::uint64_t sum = parts[0] + parts[1] + parts[2] + parts[3];
    for (; i < count; ++i) sum += static_cast<std::uint64_t>(_mm_popcnt_u64(words[i]));
    return sum;
}

}  // namespace

constinit const BitKernels kAvx2BitKernels = {Count, CombineWords<Avx2Registers, AndStep>,
                                              CombineWords<Avx2Registers, AndNotStep>,
                                              CombineWords<Avx2Registers, OrStep>};

}  // namespace AUX
