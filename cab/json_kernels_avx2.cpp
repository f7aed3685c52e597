#include <immintrin.h>

#include "cab/json_block_loops.h"

namespace AUX::CAB {
namespace {

class Avx2Block {
public:
    explicit Avx2Block(const WCHAR* from) noexcept
        : from_(from), low_(Narrow(from)), high_(Narrow(from + 32)) {}

    std::uint64_t Equal(char unit) const noexcept {
        const __m256i wanted = _mm256_set1_epi8(unit);
        return Join(_mm256_cmpeq_epi8(low_, wanted), _mm256_cmpeq_epi8(high_, wanted));
    }
    std::uint64_t Above(char unit) const noexcept {
        const __m256i limit = _mm256_set1_epi8(unit);
        return ~Join(_mm256_cmpeq_epi8(_mm256_min_epu8(low_, limit), low_),
                     _mm256_cmpeq_epi8(_mm256_min_epu8(high_, limit), high_));
    }
    StripKinds Kinds() const noexcept { return KindsByComparing(*this); }
    JsonMarkBits MarkBits() const noexcept { return MarkBitsByComparing(*this); }
    static std::uint64_t Parity(std::uint64_t bits) noexcept { return ParityByShifts(bits); }
    WCHAR* Pack(WCHAR* out, std::uint64_t keep) const noexcept {
        if (keep == ~std::uint64_t{0}) {
            for (int i = 0; i < kJsonBlock; i += 16) Copy(out + i, from_ + i);
            return out + kJsonBlock;
        }
        while (keep) {
            const int at = std::countr_zero(keep);
            const int run = std::countr_one(keep >> at);
            // Whole registers while they stay in the block: what is too much is written over.
            int done = 0;
            for (; done < run && at + done + 16 <= kJsonBlock; done += 16) {
                Copy(out + done, from_ + at + done);
            }
            for (; done < run; ++done) out[done] = from_[at + done];
            out += run;
            keep = at + run >= kJsonBlock ? 0 : keep >> (at + run) << (at + run);
        }
        return out;
    }
    static void Replace(WCHAR* out, const WCHAR* in, WCHAR from, WCHAR to) noexcept {
        const __m256i change = _mm256_set1_epi16(static_cast<short>(from ^ to));
        for (int i = 0; i < kJsonBlock; i += 16) {
            const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
            const __m256i found =
                _mm256_cmpeq_epi16(units, _mm256_set1_epi16(static_cast<short>(from)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                                _mm256_xor_si256(units, _mm256_and_si256(found, change)));
        }
    }

private:
    static void Copy(WCHAR* to, const WCHAR* from) noexcept {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    }
    static std::uint64_t Join(__m256i low, __m256i high) noexcept {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(low)) |
               std::uint64_t{static_cast<std::uint32_t>(_mm256_movemask_epi8(high))} << 32;
    }
    static __m256i Narrow(const WCHAR* from) noexcept {
        // The two halves of registers are packed by themselves, and put in order afterwards.
        return _mm256_permute4x64_epi64(_mm256_packus_epi16(Cut(from), Cut(from + 16)), 0xD8);
    }
    static __m256i Cut(const WCHAR* from) noexcept {
        return _mm256_min_epu16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)),
                                _mm256_set1_epi16(0xFF));
    }

    const WCHAR* from_;
    __m256i low_;
    __m256i high_;
};

}  // namespace

constinit const JsonKernels kAvx2JsonKernels = kKernelsOf<Avx2Block>;

}  // namespace AUX::CAB
