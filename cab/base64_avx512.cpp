#include <immintrin.h>

#include "cab/base64_kernels.h"

namespace AUX::CAB {
namespace {

constexpr std::size_t kLetters = 64;  // In a register,
constexpr std::size_t kBytes = 48;    // and the bytes that they stand for.

struct Order {
    alignas(64) std::uint8_t of[kLetters];
};

// The bytes of each group as its four letters need them.
constexpr Order kSpread = [] {
    Order order{};
    for (std::uint8_t i = 0; i < kLetters; ++i) {
        constexpr std::uint8_t kOfLetter[] = {1, 0, 2, 1};
        order.of[i] = static_cast<std::uint8_t>(i / 4 * 3 + kOfLetter[i % 4]);
    }
    return order;
}();

// The three bytes of each group, which stand the other way round in four.
constexpr Order kGather = [] {
    Order order{};
    for (std::uint8_t i = 0; i < kBytes; ++i) {
        order.of[i] = static_cast<std::uint8_t>(i / 3 * 4 + 2 - i % 3);
    }
    return order;
}();

__m512i Load(const void* from) noexcept { return _mm512_loadu_si512(from); }

}  // namespace

std::size_t EncodeBase64Avx512(const std::uint8_t* bytes, std::size_t size, WCHAR* out) noexcept {
    const __m512i spread = Load(kSpread.of);
    const __m512i alphabet = Load(kBase64Alphabet);
    const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
    std::size_t at = 0;
    for (; size - at >= kLetters; at += kBytes, out += kLetters) {
        const __m512i groups = _mm512_permutexvar_epi8(spread, Load(bytes + at));
        // Only the low six bits of a number count in the table.
        const __m512i numbers = _mm512_multishift_epi64_epi8(shifts, groups);
        const __m512i letters = _mm512_permutexvar_epi8(numbers, alphabet);
        _mm512_storeu_si512(out, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(letters)));
        _mm512_storeu_si512(out + kLetters / 2,
                            _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(letters, 1)));
    }
    return at;
}

std::size_t DecodeBase64Avx512(const WCHAR* text, std::size_t length, std::uint8_t* out) noexcept {
    const __m512i gather = Load(kGather.of);
    const __m512i low = Load(kBase64Numbers.of);
    const __m512i high = Load(kBase64Numbers.of + kLetters);
    constexpr __mmask64 kWritten = (__mmask64{1} << kBytes) - 1;
    std::size_t at = 0;
    for (; length - at >= kLetters; at += kLetters, out += kBytes) {
        const __m256i first = _mm512_cvtusepi16_epi8(Load(text + at));
        const __m256i second = _mm512_cvtusepi16_epi8(Load(text + at + kLetters / 2));
        const __m512i letters = _mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1);
        const __m512i numbers = _mm512_permutex2var_epi8(low, letters, high);
        // What is not in the alphabet has the top bit, in the table or of itself.
        if (_mm512_movepi8_mask(_mm512_or_si512(letters, numbers)) != 0) break;
        const __m512i pairs = _mm512_maddubs_epi16(numbers, _mm512_set1_epi32(0x01400140));
        const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
        _mm512_mask_storeu_epi8(out, kWritten, _mm512_permutexvar_epi8(gather, groups));
    }
    return at;
}

}  // namespace AUX::CAB
