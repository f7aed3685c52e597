#pragma once

#include <bit>
#include <cstdint>

#include "cab/named_table.h"

namespace AUX::CAB {

/// An interval with both ends in it.
struct NumberRange {
    double org;
    double end;
};

/// Parts the inclusive ranges from the exclusive ones, where there are both.
inline constexpr NumberRange kRangeSeparator = {std::bit_cast<double>(std::uint64_t{0}),
                                                std::bit_cast<double>(0x7FFFFFFFFFFFFFFFull)};
/// Stands behind the last range.
inline constexpr NumberRange kRangeEnd = {std::bit_cast<double>(0x7FFFFFFFFFFFFFFFull),
                                          std::bit_cast<double>(std::uint64_t{0})};

enum class RangeList : std::uint32_t { None = 0, Inclusive = 1, OnlyExclusive = 2 };

/// Which numbers an item takes, and their names: the head of one block, which the template owns.
/// Behind it lie the inclusive ranges, kRangeSeparator if both sorts exist, the exclusive ranges,
/// and kRangeEnd. Read by any thread.
struct ValueSpec {
    NamedTableWord* names;  ///< May be null.
    RangeList list;

    /// Null if there are none.
    [[nodiscard]] const NamedTable* Names() const noexcept {
        return names ? TableOf(*names) : nullptr;
    }

    [[nodiscard]] const NumberRange* Ranges() const noexcept {
        return reinterpret_cast<const NumberRange*>(this + 1);
    }

    /// Whether a number passes. A named one always does. Without ranges every number does; else it
    /// must lie in an inclusive range, if there are any, and in no exclusive one. The ends belong
    /// to a range of either sort. A NaN lies in no range.
    [[nodiscard]] bool Accepts(double number) const noexcept;
};
static_assert(sizeof(ValueSpec) == 16);

}  // namespace AUX::CAB
