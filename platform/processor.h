#pragma once

/// What the processor can do.

#include "platform/base.h"

#ifndef _WIN32

inline constexpr DWORD PF_SSE4_2_INSTRUCTIONS_AVAILABLE = 38;
inline constexpr DWORD PF_AVX2_INSTRUCTIONS_AVAILABLE = 40;

/// Tells whether the processor has a feature and the system lets programs use it. False for any
/// feature but those above.
BOOL IsProcessorFeaturePresent(DWORD feature) noexcept;

#endif
