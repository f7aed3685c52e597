#pragma once

#include "foundation/status.h"

/// What the operations on items leave for the calling thread. An automation call clears it on entry
/// and gives it as its successful result, so that a client learns of a conversion.
namespace AUX::CAB {

/// A value was converted from or to another kind than the item's own.
inline constexpr Status ConversionNotice = 0x001E065D;

void ClearNotice() noexcept;
void SetNotice(Status notice) noexcept;

/// 0 or ConversionNotice.
[[nodiscard]] Status GetNotice() noexcept;

}  // namespace AUX::CAB
