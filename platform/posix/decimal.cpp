#include "platform/posix/decimal.h"

#include <algorithm>
#include <charconv>

namespace platform {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMostScale = 28;
constexpr Wide kMost = (Wide{1} << 96) - 1;

Wide DigitsOf(const DECIMAL& decimal) noexcept { return Wide{decimal.Hi32} << 64 | decimal.Lo64; }

}  // namespace

decltype(0.0L) ToNumber(const DECIMAL& decimal) noexcept {
    auto number = static_cast<decltype(0.0L)>(DigitsOf(decimal));
    for (int i = 0; i < decimal.scale; ++i) number /= 10;
    return decimal.sign & DECIMAL_NEG ? -number : number;
}

std::string ToText(const DECIMAL& decimal) {
    std::string text;
    int places = decimal.scale;
    for (Wide rest = DigitsOf(decimal); rest != 0 || places >= 0; rest /= 10) {
        const auto digit = static_cast<char>('0' + static_cast<int>(rest % 10));
        if (places > 0 && (digit != '0' || !text.empty())) text += digit;
        if (places <= 0) text += digit;
        if (--places == 0 && !text.empty()) text += '.';
    }
    if ((decimal.sign & DECIMAL_NEG) && text != "0") text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

bool MakeDecimal(std::string_view digits, DECIMAL& decimal) noexcept {
    decimal = {};
    Wide made = 0;
    int scale = 0;
    bool isFraction = false, isFull = false;
    for (std::size_t at = 0; at < digits.size(); ++at) {
        const char each = digits[at];
        if (each == '-') decimal.sign = DECIMAL_NEG;
        if (each == '.') isFraction = true;
        if (each == 'e' || each == 'E') {
            const char* first = &digits[at] + 1;
            int exponent = 0;
            std::from_chars(first + (*first == '+'), digits.data() + digits.size(), exponent);
            scale -= exponent;
            break;
        }
        if (each < '0' || each > '9' || isFull) continue;
        const Wide next = made * 10 + static_cast<unsigned>(each - '0');
        if (next > kMost && !isFraction) return false;
        isFull = next > kMost || (isFraction && scale == kMostScale);
        if (isFull) continue;
        made = next;
        scale += isFraction;
    }
    for (; scale > kMostScale; --scale) made /= 10;
    for (; scale < 0 && made != 0; ++scale) {
        made *= 10;
        if (made > kMost) return false;
    }
    decimal.scale = static_cast<BYTE>(std::max(scale, 0));
    decimal.Hi32 = static_cast<ULONG>(made >> 64);
    decimal.Lo64 = static_cast<ULONGLONG>(made);
    return true;
}

}  // namespace platform
