#include <immintrin.h>

#include "cab/json_block_loops.h"

namespace AUX::CAB {
namespace {

// What a unit below 0x80 may be, one bit each.
enum UnitKind : std::uint8_t {
    kQuote = 1,
    kBackslash = 2,
    kBlank = 4,
    kStop = 8,
    kZero = 16,
    kStructure = 32,
    kSpecial = 64,
};

struct UnitKinds {
    alignas(64) std::uint8_t of[0x80];
};
constexpr UnitKinds kUnitKinds = [] {
    UnitKinds kinds{};
    for (int unit = 0; unit < 0x80; ++unit) {
        if (unit < ' ' || unit > '~') kinds.of[unit] = kStop;
    }
    const auto add = [&](int unit, int kind) { kinds.of[unit] |= static_cast<std::uint8_t>(kind); };
    for (const char blank : {' ', '\n', '\r', '\t'}) kinds.of[int{blank}] = kBlank;
    for (const char mark : {',', ':', '[', ']', '{', '}'}) add(mark, kStructure);
    for (const char comment : {'#', '/'}) add(comment, kStop);
    add(0, kZero);
    add('"', kQuote);
    add('\\', kBackslash | kStop | kSpecial);
    add(kHiddenQuote, kSpecial);
    return kinds;
}();

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
    StripKinds Kinds() const noexcept {
        const __m512i kinds = Look();
        return {Has(kinds, kQuote), Has(kinds, kBackslash), Has(kinds, kBlank),
                Has(kinds, kStop) | _mm512_movepi8_mask(bytes_)};
    }
    JsonMarkBits MarkBits() const noexcept {
        const __m512i kinds = Look();
        return {Parity(Has(kinds, kQuote)), Has(kinds, kZero), Has(kinds, kStructure),
                Has(kinds, kSpecial)};
    }
    static std::uint64_t Parity(std::uint64_t bits) noexcept {
        const __m128i word = _mm_cvtsi64_si128(static_cast<std::int64_t>(bits));
        const __m128i product = _mm_clmulepi64_si128(word, _mm_set1_epi8(-1), 0);
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(product));
    }
    WCHAR* Pack(WCHAR* out, std::uint64_t keep) const noexcept {
        const auto low = static_cast<__mmask32>(keep);
        const auto high = static_cast<__mmask32>(keep >> 32);
        _mm512_storeu_si512(out, _mm512_maskz_compress_epi16(low, low_));
        out += std::popcount(static_cast<std::uint32_t>(low));
        _mm512_storeu_si512(out, _mm512_maskz_compress_epi16(high, high_));
        return out + std::popcount(static_cast<std::uint32_t>(high));
    }
    static void Replace(WCHAR* out, const WCHAR* in, WCHAR from, WCHAR to) noexcept {
        for (int i = 0; i < kJsonBlock; i += 32) {
            const __m512i units = _mm512_loadu_si512(in + i);
            const __m512i wanted = _mm512_set1_epi16(static_cast<short>(from));
            const __m512i other = _mm512_set1_epi16(static_cast<short>(to));
            const __mmask32 found = _mm512_cmpeq_epi16_mask(units, wanted);
            _mm512_storeu_si512(out + i, _mm512_mask_blend_epi16(found, units, other));
        }
    }

private:
    // The kinds of all units below 0x80; those from it on count as others.
    __m512i Look() const noexcept {
        const __m512i low = _mm512_load_si512(kUnitKinds.of);
        const __m512i high = _mm512_load_si512(kUnitKinds.of + 64);
        const __mmask64 isBelow = ~_mm512_movepi8_mask(bytes_);
        return _mm512_maskz_permutex2var_epi8(isBelow, low, bytes_, high);
    }
    static std::uint64_t Has(__m512i kinds, UnitKind kind) noexcept {
        return _mm512_test_epi8_mask(kinds, _mm512_set1_epi8(static_cast<char>(kind)));
    }

    __m512i low_;
    __m512i high_;
    __m512i bytes_;
};

}  // namespace

constinit const JsonKernels kAvx512JsonKernels = kKernelsOf<Avx512Block>;

}  // namespace AUX::CAB
