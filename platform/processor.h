#pragma once

/// What the processor can do.

#include <cstdint>

#include "platform/base.h"

namespace platform {

/// Tells whether the processor works on 64 bytes or 32 characters at a time (AVX-512 BW) and the
/// system lets programs use it. The system's own question does not know of it.
[[nodiscard]] bool HasAvx512Bytes() noexcept;

/// Likewise, whether it packs chosen bytes of a register of 64 closely (AVX-512 VBMI2), looks bytes
/// up in a table of 128 (VBMI), and multiplies without carries (PCLMUL).
[[nodiscard]] bool HasAvx512Compress() noexcept;

/// Likewise, whether it counts the bits of eight words of 64 bits at a time (AVX-512 VPOPCNTDQ).
[[nodiscard]] bool HasWideBitCount() noexcept;

/// The processor's time stamp counter.
[[nodiscard]] std::uint64_t TimeStamp() noexcept;

}  // namespace platform

#ifndef _WIN32

inline constexpr DWORD PF_SSE4_2_INSTRUCTIONS_AVAILABLE = 38;
inline constexpr DWORD PF_AVX2_INSTRUCTIONS_AVAILABLE = 40;

/// Tells whether the processor has a feature and the system lets programs use it. False for any
/// feature but those above.
BOOL IsProcessorFeaturePresent(DWORD feature) noexcept;

#endif
