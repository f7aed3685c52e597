#pragma once

#include "platform/user.h"

/// Where a window of `size` goes that is to be centred on `owner`: within `area`, with its upper
/// left corner first where it does not fit. All in pixels of the screen.
[[nodiscard]] POINT CentredPlace(const RECT& owner, const RECT& area, SIZE size) noexcept;

/// Moves a window to the centre of its owner, within the work area of the owner's monitor. Without
/// an owner that can be seen it goes to the centre of the work area.
void CentreOnOwner(HWND window) noexcept;
