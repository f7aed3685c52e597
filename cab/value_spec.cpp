#include "cab/value_spec.h"

namespace AUX::CAB {

namespace {

bool IsMark(const NumberRange& range, const NumberRange& mark) noexcept {
    return std::bit_cast<std::uint64_t>(range.org) == std::bit_cast<std::uint64_t>(mark.org) &&
           std::bit_cast<std::uint64_t>(range.end) == std::bit_cast<std::uint64_t>(mark.end);
}

}  // namespace

bool ValueSpec::Accepts(double number) const noexcept {
    if (list == RangeList::None) return true;
    if (const NamedTable* const table = Names(); table && table->NameOf(number)) return true;
    bool isExclusive = list == RangeList::OnlyExclusive;
    bool isIncluded = isExclusive;
    for (const NumberRange* range = Ranges(); !IsMark(*range, kRangeEnd); ++range) {
        if (!isExclusive && IsMark(*range, kRangeSeparator)) {
            isExclusive = true;
        } else if (range->org <= number && number <= range->end) {
            if (isExclusive) return false;
            isIncluded = true;
        }
    }
    return isIncluded;
}

}  // namespace AUX::CAB
