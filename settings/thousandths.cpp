#include "settings/thousandths.h"

#include <cmath>

std::uint32_t ThousandthsOf(double points) noexcept {
    const double scaled = points * 1000.0;
    if (!(scaled > 0)) return 0;  // Also what is no number.
    if (scaled >= 4294967295.0) return 0xFFFFFFFF;
    const double nearest = std::round(scaled);
    return static_cast<std::uint32_t>(nearest / 1000.0 == points ? nearest : scaled);
}
