#include "cab/json_scan.h"

#include <bit>

namespace AUX::CAB {

bool JsonTextScan::SkipBrackets() noexcept {
    std::uint64_t depth = 1;
    for (; blocks_.IsValid(); StepBlock()) {
        if (left_ == ~std::uint64_t{0}) {
            blocks_.PassNested(isSquare_, depth);
            if (!blocks_.IsValid()) break;
        }
        const JsonBlockBits& bits = blocks_.Found();
        const std::uint64_t outside = left_ & ~blocks_.Strings();
        const std::uint64_t open = (isSquare_ ? bits.openSquare : bits.openCurly) & outside;
        const std::uint64_t close = (isSquare_ ? bits.closeSquare : bits.closeCurly) & outside;
        const std::uint64_t zero = bits.zero & left_;
        for (std::uint64_t all = open | close | zero; all; all &= all - 1) {
            const std::uint64_t bit = all & -all;
            if (bit & zero) return false;
            if (bit & open) {
                ++depth;
            } else if (--depth == 0) {
                Pass(bit);
                return true;
            }
        }
    }
    return false;
}

bool JsonTextScan::Next(std::uint32_t& position, bool& isColon) noexcept {
    while (blocks_.IsValid()) {
        const std::uint64_t found = blocks_.Found().Structure() & ~blocks_.Strings() & left_;
        const std::uint64_t zero = blocks_.Found().zero & blocks_.Strings() & left_;
        if ((found | zero) == 0) {
            StepBlock();
            continue;
        }
        const std::uint64_t all = found | zero;
        const std::uint64_t bit = all & -all;
        if (bit & zero) return false;
        Pass(bit);
        const std::uint32_t at =
            blocks_.Position() + static_cast<std::uint32_t>(std::countr_zero(bit));
        const WCHAR unit = text_[at];
        if (unit == ',' || unit == ':') {
            position = at;
            isColon = unit == ':';
            return true;
        }
        if (unit == ']' || unit == '}') return false;
        isSquare_ = unit == '[';
        if (!SkipBrackets()) return false;
    }
    return false;
}

}  // namespace AUX::CAB
