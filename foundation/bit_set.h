#pragma once

#include <bit>
#include <cstdint>

namespace AUX {

/// A set of bits whose size can change. Owns its words. Not thread-safe.
///
/// The bits of the last word that lie outside the size are always 0, also after the set has become
/// smaller: no operation ever sees a bit that was cut off. An index outside the size is answered as
/// the operation says, and nothing outside the words is read or written.
class BitSet {
public:
    BitSet() noexcept = default;
    ~BitSet();
    BitSet(const BitSet&) = delete;
    BitSet& operator=(const BitSet&) = delete;
    BitSet(BitSet&& other) noexcept;
    BitSet& operator=(BitSet&& other) noexcept;

    /// Bits.
    [[nodiscard]] std::uint32_t Size() const noexcept { return bitCount; }

    /// Drops the content and makes a set of zeros; 0 makes an empty one.
    /// \return false if memory runs out; the set is empty then.
    [[nodiscard]] bool Create(std::uint32_t count) noexcept;

    /// Keeps the content; new bits are 0, those outside a smaller size are lost.
    /// \return false if memory runs out; nothing has changed then.
    [[nodiscard]] bool Resize(std::uint32_t count) noexcept;

    /// Copies the other set; itself is a success with nothing done. Fails as Resize does.
    [[nodiscard]] bool Assign(const BitSet& other) noexcept;

    /// \return 0 for an index outside.
    [[nodiscard]] bool Test(std::uint32_t index) const noexcept {
        return index < bitCount && (words[index >> 6] >> (index & 63) & 1) != 0;
    }

    /// \return the bit's old value; 0 for an index outside, which changes nothing.
    bool SetBit(std::uint32_t index, bool value) noexcept;

    /// As SetBit, but makes room for the index first. \return 0 with nothing changed for the index
    /// 0xFFFFFFFF, and if memory runs out.
    bool SetBitGrow(std::uint32_t index, bool value) noexcept;

    /// Sets or clears `count` bits from `first` on, as far as they lie inside.
    void FillRange(bool value, std::uint32_t first, std::uint32_t count) noexcept;

    /// The lowest set bit above `index`; -1 as index starts at bit 0.
    /// \return -1 if there is none, and for an index outside.
    [[nodiscard]] std::int64_t NextSet(std::int64_t index) const noexcept;

    /// The number of set bits from `first` up to, not including, `end`, which may lie outside.
    [[nodiscard]] std::uint32_t CountRange(std::uint32_t first, std::uint32_t end) const noexcept;

    [[nodiscard]] bool Any() const noexcept;
    [[nodiscard]] bool None() const noexcept { return !Any(); }

    /// Whether sizes and bits are the same.
    [[nodiscard]] bool Equal(const BitSet& other) const noexcept;

    /// Whether a bit is set in both.
    [[nodiscard]] bool Intersects(const BitSet& other) const noexcept;

    /// These two work on the words that both sets have; words behind them stay as they are.
    void And(const BitSet& other) noexcept;
    void AndNot(const BitSet& other) noexcept;

    /// Grows to the larger size, and sets each bit that the other holds. Fails as Resize does.
    [[nodiscard]] bool Or(const BitSet& other) noexcept;

private:
    static constexpr std::uint32_t WordsFor(std::uint32_t bits) noexcept {
        return (bits >> 6) + (((bits & 63) + 63) >> 6);
    }
    [[nodiscard]] std::uint32_t CommonWords(const BitSet& other) const noexcept {
        return WordsFor(bitCount < other.bitCount ? bitCount : other.bitCount);
    }
    [[nodiscard]] std::int64_t SearchFrom(std::uint32_t word) const noexcept;

    std::uint32_t bitCount = 0;
    std::uint64_t* words = nullptr;  // from AUX::Alloc; null when there are no bits
};

// Inside a loop over a dense set nearly all steps end in the first word.
inline std::int64_t BitSet::NextSet(std::int64_t index) const noexcept {
    const std::uint64_t start = index < 0 ? 0 : static_cast<std::uint64_t>(index) + 1;
    if (start >= bitCount) return -1;
    const std::uint64_t left = words[start >> 6] >> (start & 63);
    // Guessed right, this lets the next step begin before the word has arrived.
    if (left & 1) return static_cast<std::int64_t>(start);
    if (left) return static_cast<std::int64_t>(start) + std::countr_zero(left);
    return SearchFrom(static_cast<std::uint32_t>(start >> 6) + 1);
}

}  // namespace AUX
