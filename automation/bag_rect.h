#pragma once

#include "cab/data_dictionary.h"

namespace AUX {

/// A rectangle as bags keep it: a dictionary of the four doubles "top", "bottom", "left", "right".
/// Its order in memory differs from Rect's.
struct BagRect {
    double left = 0, top = 0, right = 0, bottom = 0;
};

/// Whether width or height, top less bottom, is not above 0.
[[nodiscard]] constexpr bool IsEmptyRect(const BagRect& rect) noexcept {
    return !(rect.right - rect.left > 0 && rect.top - rect.bottom > 0);
}

/// Reads the four items in their order; one that is missing, or is no number, reads as 0.0. Adds
/// nothing to the dictionary. The caller holds the bag's lock.
[[nodiscard]] BagRect LoadBagRect(CAB::DataDictionary& from) noexcept;

/// Writes the four items in their order, and adds those that are missing.
/// \return false if memory ran out, or the bag's template refuses an item or its value: then items
///         that stand before that one in the order may have been added and set.
[[nodiscard]] bool SaveBagRect(const BagRect& rect, CAB::DataDictionary& to) noexcept;

}  // namespace AUX
