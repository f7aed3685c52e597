#include "foundation/bit_set.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/bit_kernels.h"
#include "foundation/memory.h"

namespace AUX {
namespace {

constexpr std::uint64_t kAllBits = ~std::uint64_t{0};

// The bits of a word from `index` up, and those up to `index`.
constexpr std::uint64_t MaskFrom(std::uint32_t index) noexcept { return kAllBits << (index & 63); }
constexpr std::uint64_t MaskTo(std::uint32_t index) noexcept {
    return kAllBits >> (63 - (index & 63));
}

void FillMasked(std::uint64_t& word, std::uint64_t mask, bool value) noexcept {
    word = value ? word | mask : word & ~mask;
}

}  // namespace

BitSet::~BitSet() { Free(words); }

BitSet::BitSet(BitSet&& other) noexcept
    : bitCount(std::exchange(other.bitCount, 0)), words(std::exchange(other.words, nullptr)) {}

BitSet& BitSet::operator=(BitSet&& other) noexcept {
    if (this != &other) {
        Free(words);
        bitCount = std::exchange(other.bitCount, 0);
        words = std::exchange(other.words, nullptr);
    }
    return *this;
}

bool BitSet::Create(std::uint32_t count) noexcept {
    Free(std::exchange(words, nullptr));
    bitCount = 0;
    return Resize(count);
}

bool BitSet::Resize(std::uint32_t count) noexcept {
    const std::uint32_t before = WordsFor(bitCount);
    const std::uint32_t after = WordsFor(count);
    if (after == 0) {
        Free(std::exchange(words, nullptr));
    } else if (after != before) {
        auto* const resized =
            static_cast<std::uint64_t*>(AUX::Resize(words, std::size_t{after} * sizeof *words));
        if (!resized) return false;
        words = resized;
        if (after > before) std::fill(words + before, words + after, 0);
    }
    if (count < bitCount && (count & 63)) words[after - 1] &= MaskTo(count - 1);
    bitCount = count;
    return true;
}

bool BitSet::Assign(const BitSet& other) noexcept {
    if (this == &other) return true;
    if (!Resize(other.bitCount)) return false;
    std::copy_n(other.words, WordsFor(bitCount), words);
    return true;
}

bool BitSet::SetBit(std::uint32_t index, bool value) noexcept {
    if (index >= bitCount) return false;
    const bool old = Test(index);
    FillMasked(words[index >> 6], std::uint64_t{1} << (index & 63), value);
    return old;
}

bool BitSet::SetBitGrow(std::uint32_t index, bool value) noexcept {
    if (index == UINT32_MAX) return false;
    if (index >= bitCount && !Resize(index + 1)) return false;
    return SetBit(index, value);
}

void BitSet::FillRange(bool value, std::uint32_t first, std::uint32_t count) noexcept {
    if (first >= bitCount || count == 0) return;
    const std::uint32_t last = first + std::min(count, bitCount - first) - 1;
    const std::uint32_t firstWord = first >> 6;
    const std::uint32_t lastWord = last >> 6;
    if (firstWord == lastWord) {
        FillMasked(words[firstWord], MaskFrom(first) & MaskTo(last), value);
        return;
    }
    FillMasked(words[firstWord], MaskFrom(first), value);
    FillMasked(words[lastWord], MaskTo(last), value);
    std::memset(words + firstWord + 1, value ? 0xFF : 0,
                std::size_t{lastWord - firstWord - 1} * sizeof *words);
}

std::int64_t BitSet::SearchFrom(std::uint32_t word) const noexcept {
    const std::uint32_t count = WordsFor(bitCount);
    while (word < count && words[word] == 0) ++word;
    return word < count ? std::int64_t{word} * 64 + std::countr_zero(words[word]) : -1;
}

std::uint32_t BitSet::CountRange(std::uint32_t first, std::uint32_t end) const noexcept {
    end = std::min(end, bitCount);
    if (first >= end) return 0;
    const std::uint32_t last = end - 1;
    const std::uint32_t firstWord = first >> 6;
    const std::uint32_t lastWord = last >> 6;
    if (firstWord == lastWord) {
        return CountWord(words[firstWord] & MaskFrom(first) & MaskTo(last));
    }
    const std::uint64_t inner = kernels->count(words + firstWord + 1, lastWord - firstWord - 1);
    return static_cast<std::uint32_t>(inner) + CountWord(words[firstWord] & MaskFrom(first)) +
           CountWord(words[lastWord] & MaskTo(last));
}

bool BitSet::Any() const noexcept {
    return std::any_of(words, words + WordsFor(bitCount),
                       [](std::uint64_t word) { return word != 0; });
}

bool BitSet::Equal(const BitSet& other) const noexcept {
    if (this == &other) return true;
    return bitCount == other.bitCount && std::equal(words, words + WordsFor(bitCount), other.words);
}

bool BitSet::Intersects(const BitSet& other) const noexcept {
    const std::uint32_t count = CommonWords(other);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (words[i] & other.words[i]) return true;
    }
    return false;
}

void BitSet::And(const BitSet& other) noexcept {
    if (this != &other) kernels->andWords(words, other.words, CommonWords(other));
}

void BitSet::AndNot(const BitSet& other) noexcept {
    if (this == &other) {
        FillRange(false, 0, bitCount);
    } else {
        kernels->andNotWords(words, other.words, CommonWords(other));
    }
}

bool BitSet::Or(const BitSet& other) noexcept {
    if (this == &other) return true;
    if (other.bitCount > bitCount && !Resize(other.bitCount)) return false;
    kernels->orWords(words, other.words, WordsFor(other.bitCount));
    return true;
}

}  // namespace AUX
