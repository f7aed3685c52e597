#pragma once

#include <cstdint>

/// A length of so many points in thousandths of a point, cut towards zero; 0 for less, the largest
/// number for more. A length that came from a whole number of thousandths gives that number again,
/// which the bare product misses for one in a hundred (1.001 * 1000 is 1000.999...): it would
/// shrink on each way there and back.
[[nodiscard]] std::uint32_t ThousandthsOf(double points) noexcept;
