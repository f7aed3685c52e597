#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base.h"

namespace AUX::CAB {

/// Encodes the front of `size` bytes, in groups of three; needs AVX2. \return the bytes taken.
[[nodiscard]] std::size_t EncodeBase64Avx2(const std::uint8_t* bytes, std::size_t size,
                                           WCHAR* out) noexcept;

/// Decodes the front of `length` units, in groups of four, up to where one is not in the alphabet;
/// needs AVX2. Writes what it has decoded and nothing behind it. \return the units taken.
[[nodiscard]] std::size_t DecodeBase64Avx2(const WCHAR* text, std::size_t length,
                                           std::uint8_t* out) noexcept;

}  // namespace AUX::CAB
