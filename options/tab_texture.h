#pragma once

#include "platform/user.h"

/// Gives a dialog the background of the tab control that it lies in. Without the system's themes it
/// keeps its own.
void EnableTabTexture(HWND dialog) noexcept;
