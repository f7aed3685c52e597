#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

#include "foundation/utf8_writers.h"

namespace AUX::utf8 {
namespace {

using Units = __m512i;

constexpr std::ptrdiff_t kWide = 32;    // Units of two bytes in a register.
constexpr std::ptrdiff_t kNarrow = 16;  // Units widened to four.

Units All(int number) noexcept { return _mm512_set1_epi32(number); }
Units All16(int number) noexcept { return _mm512_set1_epi16(static_cast<short>(number)); }

Units Load(const WCHAR* text) noexcept { return _mm512_loadu_si512(text); }
Units LoadWidened(const WCHAR* text) noexcept {
    return _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text)));
}

// Writes the marked bytes closely, and nothing behind them.
char* Put(Units bytes, std::uint64_t marks, char* out) noexcept {
    const int count = std::popcount(marks);
    const std::uint64_t written = count == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
    _mm512_mask_storeu_epi8(out, written, _mm512_maskz_compress_epi8(marks, bytes));
    return out + count;
}

// Writes kWide units of at most two bytes.
char* PutShort(Units units, char* out) noexcept {
    const Units last = _mm512_slli_epi16(_mm512_and_si512(units, All16(0x3F)), 8);
    const Units two =
        _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6), last), All16(0x80C0));
    const __mmask32 isTwo = _mm512_test_epi16_mask(units, All16(0x780));
    const Units bytes = _mm512_mask_mov_epi16(units, isTwo, two);
    // A second byte is never 0; a first one may be.
    return Put(bytes, _mm512_test_epi8_mask(bytes, bytes) | 0x5555555555555555, out);
}

// Writes the units of any sort from `text` on, kNarrow of them, which one more follows.
// \param isPairOpen  Whether the first one is the end of a pair that was written before; becomes
//                    whether the last one begins a pair whose end comes next.
char* PutAny(const WCHAR* text, unsigned& isPairOpen, char* out) noexcept {
    const Units units = LoadWidened(text);
    const Units next = LoadWidened(text + 1);
    const auto isOfRange = [](Units of, int start) {  // Of a range of 0x400 units.
        return _mm512_cmpeq_epi32_mask(_mm512_and_si512(of, All(0xFC00)), All(start));
    };
    const Units last = _mm512_and_si512(units, All(0x3F));
    const Units middle = _mm512_and_si512(_mm512_slli_epi32(units, 2), All(0x3F00));
    const Units two = _mm512_or_si512(
        All(0x80C0), _mm512_or_si512(_mm512_srli_epi32(units, 6), _mm512_slli_epi32(last, 8)));
    const Units three =
        _mm512_or_si512(_mm512_or_si512(All(0x8080E0), _mm512_srli_epi32(units, 12)),
                        _mm512_or_si512(middle, _mm512_slli_epi32(last, 16)));
    Units bytes = _mm512_mask_mov_epi32(units, _mm512_test_epi32_mask(units, All(0xFF80)), two);
    bytes = _mm512_mask_mov_epi32(bytes, _mm512_test_epi32_mask(units, All(0xF800)), three);
    unsigned pairEnds = isPairOpen;
    isPairOpen = 0;
    if (const __mmask16 highs = isOfRange(units, 0xD800)) {
        const unsigned pairs = highs & isOfRange(next, 0xDC00);
        // The code point is ((high - 0xD800) << 10) + (low - 0xDC00) + 0x10000.
        const Units point = _mm512_add_epi32(_mm512_add_epi32(_mm512_slli_epi32(units, 10), next),
                                             All(0x10000 - (0xD800 << 10) - 0xDC00));
        const auto six = [point](int shift, int place) {
            const Units bits = _mm512_and_si512(_mm512_srli_epi32(point, shift), All(0x3F));
            return _mm512_slli_epi32(bits, place);
        };
        const Units four =
            _mm512_or_si512(_mm512_or_si512(All(static_cast<int>(0x808080F0)), six(18, 0)),
                            _mm512_or_si512(six(12, 8), _mm512_or_si512(six(6, 16), six(0, 24))));
        bytes = _mm512_mask_mov_epi32(bytes, static_cast<__mmask16>(pairs), four);
        pairEnds |= pairs << 1;
        isPairOpen = pairs >> (kNarrow - 1);
    }
    const __mmask16 kept = static_cast<__mmask16>(~pairEnds);
    bytes = _mm512_maskz_mov_epi32(kept, bytes);
    const std::uint64_t firsts =
        _mm512_test_epi8_mask(_mm512_maskz_mov_epi32(kept, All(1)), All(1));
    return Put(bytes, _mm512_test_epi8_mask(bytes, bytes) | firsts, out);
}

// Writes ASCII by 64 units, while there is nothing else in them, and gives how many they were.
std::ptrdiff_t PutAsciiRuns(const WCHAR* text, const WCHAR* end, char* out,
                            const char* limit) noexcept {
    constexpr std::ptrdiff_t kRun = 2 * kWide;
    const std::ptrdiff_t most = std::min(end - text, limit - out) - kRun;
    // Packing works on quarters; this brings their eighths back into order.
    const Units order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    std::ptrdiff_t at = 0;
    for (; at < most; at += kRun) {
        const Units low = Load(text + at);
        const Units high = Load(text + at + kWide);
        if (_mm512_test_epi16_mask(_mm512_or_si512(low, high), All16(0xFF80))) break;
        const Units bytes = _mm512_packus_epi16(low, high);
        _mm512_storeu_si512(out + at, _mm512_permutexvar_epi64(order, bytes));
    }
    return at;
}

}  // namespace

char* CompressBlocks(const WCHAR*& text, const WCHAR* end, char* out, const char* limit) noexcept {
    constexpr std::ptrdiff_t kRoom = kWide * 4;  // More than any of the steps below fills.
    const WCHAR* at = text;
    unsigned isPairOpen = 0;
    while (end - at > kWide && limit - out >= kRoom) {
        const Units units = Load(at);
        if (isPairOpen || _mm512_test_epi16_mask(units, All16(0xF800))) {
            out = PutAny(at, isPairOpen, out);
            at += kNarrow;
        } else if (_mm512_test_epi16_mask(units, All16(0x780))) {
            out = PutShort(units, out);
            at += kWide;
        } else {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            const std::ptrdiff_t run = kWide + PutAsciiRuns(at + kWide, end, out + kWide, limit);
            at += run;
            out += run;
        }
    }
    text = at + isPairOpen;
    return out;
}

}  // namespace AUX::utf8
