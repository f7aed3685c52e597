#pragma once

#include <algorithm>
#include <cstdint>

#include "cab/json_kernels.h"

namespace AUX::CAB {

/// Walks over a part of a stripped text in blocks, and tells which of its units lie in strings. The
/// part begins outside of strings. \tparam Bits  What is asked of a block.
template <class Bits>
class JsonBlocks {
public:
    using Classify = void (*)(const WCHAR* block, Bits& bits) noexcept;

    JsonBlocks(const WCHAR* text, std::uint32_t start, std::uint32_t end,
               Classify classify) noexcept
        : classify_(classify), text_(text), at_(start), end_(end) {
        Look();
    }

    /// Whether there is a block; if not, nothing else may be asked.
    [[nodiscard]] bool IsValid() const noexcept { return at_ < end_; }
    void Step() noexcept {
        at_ = end_ - at_ > kJsonBlock ? at_ + static_cast<std::uint32_t>(kJsonBlock) : end_;
        inside_ = static_cast<std::uint64_t>(static_cast<std::int64_t>(strings_) >> 63);
        Look();
    }

    /// Passes blocks that cannot end the nesting, from the present one on.
    void PassNested(bool isSquare, std::uint64_t& depth) noexcept {
        JsonNesting nesting = {depth, inside_};
        at_ += static_cast<std::uint32_t>(
            FastestJsonKernels().passNested(text_ + at_, end_ - at_, isSquare, nesting));
        depth = nesting.depth;
        inside_ = nesting.inside;
        Look();
    }

    /// Of the block's first unit in the text.
    [[nodiscard]] std::uint32_t Position() const noexcept { return at_; }
    [[nodiscard]] const Bits& Found() const noexcept { return bits_; }
    /// The units in strings, with the opening quote and without the closing one.
    [[nodiscard]] std::uint64_t Strings() const noexcept { return strings_; }

private:
    void Look() noexcept {
        if (!IsValid()) return;
        const std::uint32_t left = end_ - at_;
        if (left >= kJsonBlock) {
            classify_(text_ + at_, bits_);
        } else {
            WCHAR last[kJsonBlock];
            std::fill(std::copy_n(text_ + at_, left, last), last + kJsonBlock, WCHAR{' '});
            classify_(last, bits_);
        }
        strings_ = bits_.strings ^ inside_;
    }

    Classify classify_;
    const WCHAR* text_;
    std::uint32_t at_;
    std::uint32_t end_;
    std::uint64_t inside_ = 0;
    std::uint64_t strings_ = 0;
    Bits bits_{};
};

}  // namespace AUX::CAB
