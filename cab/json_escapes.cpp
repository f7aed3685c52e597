#include "cab/json_escapes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "cab/json_kernels.h"
#include "cab/json_quotes.h"

namespace AUX::CAB {
namespace {

constexpr std::ptrdiff_t kStep = 8;  // Units in a register.

__m128i Load(const WCHAR* from) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
void Store(WCHAR* to, __m128i units) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), units);
}
__m128i Equals(__m128i units, char unit) noexcept {
    return _mm_cmpeq_epi16(units, _mm_set1_epi16(unit));
}

// The index of the first unit of which a comparison is true; kStep if there is none.
int FirstOf(__m128i truth) noexcept {
    const auto bits = static_cast<std::uint32_t>(_mm_movemask_epi8(truth)) | 0x10000;
    return std::countr_zero(bits) / 2;
}

// The unit's value as a digit, whatever unit it is.
constexpr std::uint32_t HexValue(WCHAR unit) noexcept {
    return std::uint32_t{unit} - (unit < 0x3A ? 0x30u : unit >= 0x61 ? 0x57u : 0x37u);
}

std::uint32_t HexValue(const WCHAR* digits, int count) noexcept {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value * 16 + HexValue(digits[i]);
    return value & 0xFFFF;
}

// Decodes one escape, of which `at` is the unit behind the backslash.
const WCHAR* DecodeOne(const WCHAR* at, const WCHAR* end, WCHAR*& out) noexcept {
    const WCHAR unit = *at;
    const std::ptrdiff_t left = end - at - 1;
    WCHAR plain = unit;
    switch (unit) {
        case kHiddenQuote:
            plain = '"';
            break;
        case 'b':
            plain = 0x08;
            break;
        case 'f':
            plain = 0x0C;
            break;
        case 'n':
            plain = 0x0A;
            break;
        case 'r':
            plain = 0x0D;
            break;
        case 't':
            plain = 0x09;
            break;
        case 'v':
            plain = 0x0B;
            break;
        case 'x':
            if (left < 2) break;
            *out++ = static_cast<WCHAR>(HexValue(at + 1, 2));
            return at + 3;
        case 'u': {
            if (left < 4) break;
            const std::uint32_t first = HexValue(at + 1, 4);
            const bool hasSecond = left >= 10 && at[5] == '\\' && at[6] == 'u';
            // A pair is its two units. The first half of one that is none adds nothing.
            if (first >= 0xD801 && first <= 0xDBFE && hasSecond &&
                (HexValue(at + 7, 4) & 0xFC00) != 0xDC00) {
                return at + 5;
            }
            *out++ = static_cast<WCHAR>(first);
            return at + 5;
        }
        default:
            if (unit < '0' || unit > '7' || left < 2) break;
            *out++ = static_cast<WCHAR>(((unit - 0x30) * 8 + (at[1] - 0x30)) * 8 + (at[2] - 0x30));
            return at + 3;
    }
    *out++ = plain;
    return at + 1;
}

}  // namespace

bool HasBackslash(WStringView text) noexcept {
    const WCHAR* at = text.data();
    const WCHAR* const end = at + text.size();
    for (; end - at >= kStep; at += kStep) {
        if (_mm_movemask_epi8(Equals(Load(at), '\\')) != 0) return true;
    }
    while (at != end && *at != '\\') ++at;
    return at != end;
}

std::size_t DecodeEscapes(WStringView text, WCHAR* out) noexcept {
    WCHAR* const start = out;
    const WCHAR* at = text.data();
    const WCHAR* const end = at + text.size();
    while (at != end) {
        // What is written too far lies in the room of units that are still ahead.
        while (end - at >= kStep) {
            const __m128i units = Load(at);
            Store(out, units);
            const int run = FirstOf(Equals(units, '\\'));
            at += run;
            out += run;
            if (run < kStep) break;
        }
        while (at != end && *at != '\\') *out++ = *at++;
        if (at == end) break;
        if (++at == end) {
            *out++ = '\\';
        } else {
            at = DecodeOne(at, end, out);
        }
    }
    return static_cast<std::size_t>(out - start);
}

// Not inline: compilers warn of literals that are known to be too short for it, where they do not
// see that their length keeps them from getting there.
WCHAR* CopyManyUnits(WStringView text, WCHAR* out) noexcept {
    std::memcpy(out, text.data(), text.size() * sizeof(WCHAR));
    return out + text.size();
}

WCHAR* CopyWithQuotes(WStringView text, WCHAR* out) noexcept {
    const WCHAR* at = text.data();
    const WCHAR* const end = at + text.size();
    if (end - at >= kJsonBlock) {
        const std::size_t copied = FastestJsonKernels().restoreQuotes(at, text.size(), out);
        at += copied;
        out += copied;
    }
    for (; at != end; ++at) *out++ = *at == kHiddenQuote ? WCHAR{'"'} : *at;
    return out;
}

namespace {

// Two units as they lie in memory.
constexpr std::uint32_t PairOf(char first, char second) noexcept {
    return static_cast<std::uint32_t>(first) | static_cast<std::uint32_t>(second) << 16;
}

struct Pairs {
    std::uint32_t of[0x100];
};

// The two digits of each byte.
constexpr Pairs kHexPairs = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    Pairs pairs{};
    for (int i = 0; i < 0x100; ++i) pairs.of[i] = PairOf(kDigits[i >> 4], kDigits[i & 15]);
    return pairs;
}();

// The short escapes; 0 where there is none.
constexpr Pairs kShortEscapes = [] {
    Pairs escapes{};
    constexpr char kPairs[][2] = {{0x08, 'b'}, {0x09, 't'}, {0x0A, 'n'}, {0x0C, 'f'},
                                  {0x0D, 'r'}, {'"', '"'},  {'/', '/'},  {'\\', '\\'}};
    for (const auto& pair : kPairs) escapes.of[static_cast<int>(pair[0])] = PairOf('\\', pair[1]);
    return escapes;
}();

void PutPair(WCHAR* out, std::uint32_t pair) noexcept { std::memcpy(out, &pair, sizeof pair); }

WCHAR* EncodeOne(WCHAR unit, WCHAR* out) noexcept {
    const std::uint32_t shortEscape = unit < 0x80 ? kShortEscapes.of[unit] : 0;
    if (shortEscape) {
        PutPair(out, shortEscape);
        return out + 2;
    }
    PutPair(out, PairOf('\\', 'u'));
    PutPair(out + 2, kHexPairs.of[unit >> 8]);
    PutPair(out + 4, kHexPairs.of[unit & 0xFF]);
    return out + 6;
}

// The units of a register that need an escape, two bits each.
std::uint32_t NeedEscapes(__m128i units) noexcept {
    // 0x20 to 0x7E become 0 to 0x5E, all others more, with the sign bit turned round.
    const __m128i moved = _mm_add_epi16(units, _mm_set1_epi16(0x8000 - 0x20));
    const __m128i outside = _mm_cmpgt_epi16(moved, _mm_set1_epi16(-0x8000 + 0x5E));
    const __m128i special =
        _mm_or_si128(_mm_or_si128(Equals(units, '"'), Equals(units, '/')), Equals(units, '\\'));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_or_si128(outside, special)));
}

// Encodes the first `count` units, kStep at most, with kStep more behind them to be read.
WCHAR* EncodeStep(const WCHAR* at, std::ptrdiff_t count, WCHAR* out) noexcept {
    const __m128i units = Load(at);
    Store(out, units);
    std::uint32_t escapes = NeedEscapes(units) & ((1u << 2 * count) - 1);
    std::ptrdiff_t done = 0;
    for (; escapes; escapes &= escapes - 1, escapes &= escapes - 1) {
        const std::ptrdiff_t next = std::countr_zero(escapes) / 2;
        out = EncodeOne(at[next], out + (next - done));
        done = next + 1;
        Store(out, Load(at + done));
    }
    return out + (count - done);
}

}  // namespace

WCHAR* EncodeEscapes(WStringView text, WCHAR* out) noexcept {
    constexpr std::size_t kLeft = 2 * kStep;
    for (; text.size() >= kLeft; text.remove_prefix(kStep)) {
        out = EncodeStep(text.data(), kStep, out);
    }
    WCHAR last[kLeft + kStep] = {};
    const WCHAR* const end = CopyUnits({text.data(), text.size() % kLeft}, last);
    for (const WCHAR* at = last; at < end; at += kStep) {
        out = EncodeStep(at, std::min(end - at, kStep), out);
    }
    return out;
}

}  // namespace AUX::CAB
