#pragma once

#include "platform/gdi.h"

/// Draws over a band what its parent erases there, so that the band looks like what lies behind it.
/// \param dc  Of the band. \return false if it is null.
[[nodiscard]] bool DrawBandBackground(HWND band, HDC dc) noexcept;
