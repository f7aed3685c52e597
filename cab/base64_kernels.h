#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base.h"

namespace AUX::CAB {

inline constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The numbers of units up to 0xFF; kNotInAlphabet for those that are not in the alphabet.
struct Base64Numbers {
    alignas(64) std::uint8_t of[256];
};
inline constexpr std::uint8_t kNotInAlphabet = 0xFF;
inline constexpr Base64Numbers kBase64Numbers = [] {
    Base64Numbers numbers{};
    for (std::uint8_t& number : numbers.of) number = kNotInAlphabet;
    for (std::uint8_t i = 0; i < 64; ++i) {
        numbers.of[static_cast<std::uint8_t>(kBase64Alphabet[i])] = i;
    }
    return numbers;
}();

/// Encodes the front of `size` bytes, in groups of three; needs AVX2. \return the bytes taken.
[[nodiscard]] std::size_t EncodeBase64Avx2(const std::uint8_t* bytes, std::size_t size,
                                           WCHAR* out) noexcept;

/// Decodes the front of `length` units, in groups of four, up to where one is not in the alphabet;
/// needs AVX2. Writes what it has decoded and nothing behind it. \return the units taken.
[[nodiscard]] std::size_t DecodeBase64Avx2(const WCHAR* text, std::size_t length,
                                           std::uint8_t* out) noexcept;

/// The same; these need AVX-512 with BW and VBMI.
[[nodiscard]] std::size_t EncodeBase64Avx512(const std::uint8_t* bytes, std::size_t size,
                                             WCHAR* out) noexcept;
[[nodiscard]] std::size_t DecodeBase64Avx512(const WCHAR* text, std::size_t length,
                                             std::uint8_t* out) noexcept;

}  // namespace AUX::CAB
