#include <nmmintrin.h>

#include "foundation/bit_kernels.h"
#include "foundation/bit_words.h"
#include "foundation/sse2_registers.h"

namespace AUX {
namespace {

std::uint64_t CountOne(std::uint64_t word) noexcept {
    return static_cast<std::uint64_t>(_mm_popcnt_u64(word));
}

// Four sums, so that no addition waits for the one before.
std::uint64_t Count(const std::uint64_t* words, std::size_t count) noexcept {
    std::uint64_t sums[4] = {};
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        sums[0] += CountOne(words[i]);
        sums[1] += CountOne(words[i + 1]);
        sums[2] += CountOne(words[i + 2]);
        sums[3] += CountOne(words[i + 3]);
    }
    for (; i < count; ++i) sums[0] += CountOne(words[i]);
    return sums[0] + sums[1] + sums[2] + sums[3];
}

}  // namespace

constinit const BitKernels kPopcntBitKernels = {Count, CombineWords<Sse2Registers, AndStep>,
                                                CombineWords<Sse2Registers, AndNotStep>,
                                                CombineWords<Sse2Registers, OrStep>};

}  // namespace AUX
