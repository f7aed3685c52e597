#include "cab/json_kernels.h"

#include <cstring>
#include <emmintrin.h>

#include "cab/json_block_loops.h"
#include "foundation/system_facts.h"
#include "platform/processor.h"

namespace AUX::CAB {
namespace {

class Sse2Block {
public:
    explicit Sse2Block(const WCHAR* from) noexcept : from_(from) {
        for (int i = 0; i < 4; ++i) bytes_[i] = Narrow(from + i * 16);
    }

    std::uint64_t Equal(char unit) const noexcept {
        const __m128i wanted = _mm_set1_epi8(unit);
        return Gather([&](__m128i bytes) { return _mm_cmpeq_epi8(bytes, wanted); });
    }
    std::uint64_t Above(char unit) const noexcept {
        const __m128i limit = _mm_set1_epi8(unit);
        return ~Gather(
            [&](__m128i bytes) { return _mm_cmpeq_epi8(_mm_min_epu8(bytes, limit), bytes); });
    }
    StripKinds Kinds() const noexcept { return KindsByComparing(*this); }
    JsonMarkBits MarkBits() const noexcept { return MarkBitsByComparing(*this); }
    static std::uint64_t Parity(std::uint64_t bits) noexcept { return ParityByShifts(bits); }
    WCHAR* Pack(WCHAR* out, std::uint64_t keep) const noexcept {
        for (int at = 0; at < kJsonBlock;) {
            at += std::countr_zero(keep >> at);
            if (at >= kJsonBlock) break;
            const int run = std::countr_one(keep >> at);
            std::memmove(out, from_ + at, static_cast<std::size_t>(run) * sizeof(WCHAR));
            out += run;
            at += run;
            if (at >= kJsonBlock || keep >> at == 0) break;
        }
        return out;
    }
    static void Replace(WCHAR* out, const WCHAR* in, WCHAR from, WCHAR to) noexcept {
        const __m128i change = _mm_set1_epi16(static_cast<short>(from ^ to));
        for (int i = 0; i < kJsonBlock; i += 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
            const __m128i found = _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(from)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                             _mm_xor_si128(units, _mm_and_si128(found, change)));
        }
    }

private:
    template <class Compare>
    std::uint64_t Gather(Compare compare) const noexcept {
        std::uint64_t bits = 0;
        for (int i = 3; i >= 0; --i) {
            bits = bits << 16 | static_cast<std::uint32_t>(_mm_movemask_epi8(compare(bytes_[i])));
        }
        return bits;
    }
    static __m128i Narrow(const WCHAR* from) noexcept {
        return _mm_packus_epi16(Cut(from), Cut(from + 8));
    }
    // The smaller of each unit and 0xFF.
    static __m128i Cut(const WCHAR* from) noexcept {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        return _mm_sub_epi16(units, _mm_subs_epu16(units, _mm_set1_epi16(0xFF)));
    }

    const WCHAR* from_;
    __m128i bytes_[4];
};

}  // namespace

constinit const JsonKernels kSse2JsonKernels = kKernelsOf<Sse2Block>;

constinit std::atomic<const JsonKernels*> chosenJsonKernels = nullptr;

const JsonKernels& ChooseJsonKernels() noexcept {
    const JsonKernels& chosen = platform::HasAvx512Compress() ? kAvx512JsonKernels
                                : Facts().hasAvx2             ? kAvx2JsonKernels
                                                              : kSse2JsonKernels;
    chosenJsonKernels.store(&chosen, std::memory_order_relaxed);
    return chosen;
}

}  // namespace AUX::CAB
