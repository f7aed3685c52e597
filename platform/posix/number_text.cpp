#include <cstdint>

#include "platform/automation.h"
#include "platform/text.h"

namespace {

constexpr std::uint64_t kLimit = std::uint64_t{1} << 33;  // Far above what fits; sums stay exact.

int DigitOf(WCHAR unit, unsigned base) noexcept {
    int value = 16;
    if (unit >= '0' && unit <= '9') value = unit - '0';
    if (unit >= 'a' && unit <= 'f') value = unit - 'a' + 10;
    if (unit >= 'A' && unit <= 'F') value = unit - 'A' + 10;
    return static_cast<unsigned>(value) < base ? value : -1;
}

// Reads digits from the beginning of a text, off which it takes them.
std::uint64_t TakeDigits(platform::WideView& text, unsigned base) noexcept {
    std::uint64_t number = 0;
    for (int digit; !text.empty() && (digit = DigitOf(text.front(), base)) >= 0;
         text.remove_prefix(1)) {
        if (number < kLimit) number = number * base + static_cast<unsigned>(digit);
    }
    return number;
}

}  // namespace

HRESULT VarUI4FromStr(const WCHAR* text, LCID, ULONG, ULONG* result) noexcept {
    if (!text || !result) return DISP_E_TYPEMISMATCH;
    platform::WideView rest(text);
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
    while (!rest.empty() && rest.back() == ' ') rest.remove_suffix(1);
    unsigned base = 10;
    if (rest.size() > 2 && rest[0] == '&' && (rest[1] | 0x20) == 'h') base = 16;
    if (rest.size() > 2 && rest[0] == '&' && (rest[1] | 0x20) == 'o') base = 8;
    bool isNegative = false;
    if (base != 10) {
        rest.remove_prefix(2);
    } else if (!rest.empty() && (rest.front() == '-' || rest.front() == '+')) {
        isNegative = rest.front() == '-';
        rest.remove_prefix(1);
    }
    if (rest.empty() || DigitOf(rest.front(), base) < 0) return DISP_E_TYPEMISMATCH;
    std::uint64_t number = TakeDigits(rest, base);
    if (base == 10 && !rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        // To the nearest number, a half to the even one.
        const platform::WideView fraction = rest;
        (void)TakeDigits(rest, base);
        const platform::WideView digits = fraction.substr(0, fraction.size() - rest.size());
        if (!digits.empty() && digits.front() >= '5') {
            const bool isHalf = digits.front() == '5' &&
                                digits.find_first_not_of('0', 1) == platform::WideView::npos;
            number += !isHalf || number % 2 ? 1 : 0;
        }
    }
    if (!rest.empty()) return DISP_E_TYPEMISMATCH;
    if (number > 0xFFFFFFFF || (isNegative && number != 0)) return DISP_E_OVERFLOW;
    *result = static_cast<ULONG>(number);
    return S_OK;
}
