#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "foundation/wstring_view.h"

namespace fuzz {

inline void Require(bool holds) {
    if (!holds) std::abort();
}

/// Units in a block of exactly their size: of single bytes, or where the first byte is odd of two.
inline std::vector<WCHAR> MakeUnits(const std::uint8_t* data, std::size_t size) {
    std::vector<WCHAR> units;
    if (size == 0) return units;
    const std::size_t step = 1 + data[0] % 2;
    for (std::size_t at = 1; at + step <= size; at += step) {
        units.push_back(static_cast<WCHAR>(step == 1 ? data[at] : data[at] | data[at + 1] << 8));
    }
    units.shrink_to_fit();
    return units;
}

inline AUX::WStringView View(const std::vector<WCHAR>& units) {
    return {units.data(), units.size()};
}

}  // namespace fuzz
