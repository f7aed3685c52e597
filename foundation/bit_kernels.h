#pragma once

#include <cstddef>
#include <cstdint>

/// The inner loops of bit sets, in forms that give the same: with the registers of 128 bits that
/// each 64-bit processor has, and with newer instructions. One form is chosen when the library's
/// memory manager starts, before any other code of the library runs.
namespace AUX {

struct BitKernels {
    /// The number of set bits in `count` words.
    std::uint64_t (*count)(const std::uint64_t* words, std::size_t count) noexcept;

    /// `to[i]` becomes `to[i]` and, and not, or `from[i]`. The two do not overlap.
    void (*andWords)(std::uint64_t* to, const std::uint64_t* from, std::size_t count) noexcept;
    void (*andNotWords)(std::uint64_t* to, const std::uint64_t* from, std::size_t count) noexcept;
    void (*orWords)(std::uint64_t* to, const std::uint64_t* from, std::size_t count) noexcept;
};

/// Counts by the parallel sum, without an instruction for it.
extern const BitKernels kPlainBitKernels;
/// Needs the instruction POPCNT.
extern const BitKernels kPopcntBitKernels;
/// Needs AVX2 and POPCNT.
extern const BitKernels kAvx2BitKernels;
/// Needs AVX-512 with its own count of bits, and POPCNT.
extern const BitKernels kAvx512BitKernels;

/// The form that this processor runs fastest; the plain one before the start.
extern constinit const BitKernels* kernels;

namespace memory {

/// Chooses by the system facts, for the manager's start.
void ChooseBitKernels() noexcept;

}  // namespace memory

/// The number of set bits in one word, as a parallel sum.
[[nodiscard]] constexpr std::uint32_t CountWord(std::uint64_t word) noexcept {
    word = (word & 0x5555555555555555) + (word >> 1 & 0x5555555555555555);
    word = (word & 0x3333333333333333) + (word >> 2 & 0x3333333333333333);
    word = (word & 0x0F0F0F0F0F0F0F0F) + (word >> 4 & 0x0F0F0F0F0F0F0F0F);
    word = (word & 0x00FF00FF00FF00FF) + (word >> 8 & 0x00FF00FF00FF00FF);
    word = (word & 0x0000FFFF0000FFFF) + (word >> 16 & 0x0000FFFF0000FFFF);
    return static_cast<std::uint32_t>(word) + static_cast<std::uint32_t>(word >> 32);
}

}  // namespace AUX
