#include <immintrin.h>

#include "cab/base64_kernels.h"

namespace AUX::CAB {
namespace {

__m256i Both(__m128i half) noexcept { return _mm256_broadcastsi128_si256(half); }

// The letters of 32 numbers below 64: a table gives what to add, by the range that a number is in.
__m256i Letters(__m256i numbers) noexcept {
    const __m256i offsets =
        Both(_mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                           '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
    const __m256i isCapital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), numbers);
    const __m256i range = _mm256_or_si256(_mm256_subs_epu8(numbers, _mm256_set1_epi8(51)),
                                          _mm256_and_si256(isCapital, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(_mm256_shuffle_epi8(offsets, range), numbers);
}

// The numbers of 24 bytes, of which each half has 12 in its lower part.
__m256i Numbers(__m256i bytes) noexcept {
    const __m256i order = Both(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i groups = _mm256_shuffle_epi8(bytes, order);
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)),
                                            _mm256_set1_epi32(0x04000040));
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)),
                                           _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(even, odd);
}

__m128i Load(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

__m256i Cut(const WCHAR* from) noexcept {
    return _mm256_min_epu16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)),
                            _mm256_set1_epi16(0xFF));
}

// Turns letters into numbers. \return false if one is not in the alphabet.
bool ReadLetters(__m256i& letters) noexcept {
    // A letter's two halves stand for sets of letters, which meet where it is not in the alphabet.
    const __m256i lowSets = Both(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                               0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const __m256i highSets = Both(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                                                0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    const __m256i offsets =
        Both(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(letters, 4), nibble);
    const __m256i low = _mm256_and_si256(letters, nibble);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(lowSets, low),
                            _mm256_shuffle_epi8(highSets, high))) {
        return false;
    }
    const __m256i isSlash = _mm256_cmpeq_epi8(letters, _mm256_set1_epi8('/'));
    letters =
        _mm256_add_epi8(letters, _mm256_shuffle_epi8(offsets, _mm256_add_epi8(isSlash, high)));
    return true;
}

}  // namespace

std::size_t EncodeBase64Avx2(const std::uint8_t* bytes, std::size_t size, WCHAR* out) noexcept {
    std::size_t at = 0;
    for (; size - at >= 28; at += 24, out += 32) {
        const __m256i group = _mm256_set_m128i(Load(bytes + at + 12), Load(bytes + at));
        const __m256i letters = Letters(Numbers(group));
        const __m256i first = _mm256_cvtepu8_epi16(_mm256_castsi256_si128(letters));
        const __m256i second = _mm256_cvtepu8_epi16(_mm256_extracti128_si256(letters, 1));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), first);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 16), second);
    }
    return at;
}

std::size_t DecodeBase64Avx2(const WCHAR* text, std::size_t length, std::uint8_t* out) noexcept {
    const __m256i order =
        Both(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    std::size_t at = 0;
    for (; length - at >= 32; at += 32, out += 24) {
        const __m256i packed = _mm256_packus_epi16(Cut(text + at), Cut(text + at + 16));
        __m256i letters = _mm256_permute4x64_epi64(packed, 0xD8);
        if (!ReadLetters(letters)) break;
        const __m256i pairs = _mm256_maddubs_epi16(letters, _mm256_set1_epi32(0x01400140));
        const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        const __m256i bytes = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(groups, order), _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(bytes, 1));
    }
    return at;
}

}  // namespace AUX::CAB
