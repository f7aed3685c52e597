#include <immintrin.h>

#include "cab/json_block_strip.h"

namespace AUX::CAB {
namespace {

class Avx512Block {
public:
    explicit Avx512Block(const WCHAR* from) noexcept
        : low_(_mm512_loadu_si512(from)),
          high_(_mm512_loadu_si512(from + 32)),
          bytes_(_mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtusepi16_epi8(low_)),
                                    _mm512_cvtusepi16_epi8(high_), 1)) {}

    std::uint64_t Equal(char unit) const noexcept {
        return _mm512_cmpeq_epi8_mask(bytes_, _mm512_set1_epi8(unit));
    }
    std::uint64_t Above(char unit) const noexcept {
        return _mm512_cmpgt_epu8_mask(bytes_, _mm512_set1_epi8(unit));
    }
    WCHAR* Pack(WCHAR* out, std::uint64_t keep) const noexcept {
        const auto low = static_cast<__mmask32>(keep);
        const auto high = static_cast<__mmask32>(keep >> 32);
        _mm512_storeu_si512(out, _mm512_maskz_compress_epi16(low, low_));
        out += std::popcount(static_cast<std::uint32_t>(low));
        _mm512_storeu_si512(out, _mm512_maskz_compress_epi16(high, high_));
        return out + std::popcount(static_cast<std::uint32_t>(high));
    }

private:
    __m512i low_;
    __m512i high_;
    __m512i bytes_;
};

}  // namespace

constinit const JsonKernels kAvx512JsonKernels = {StripBlocks<Avx512Block>, Classify<Avx512Block>};

}  // namespace AUX::CAB
