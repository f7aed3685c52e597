#pragma once

#include <cstdint>

#include "cab/json_blocks.h"
#include "cab/json_source.h"

/// Two ways of finding the commas and colons of one level of nesting, which give the same: one goes
/// over the text, one over the marks of it. Brackets of one sort are matched without regard to the
/// other sort.
namespace AUX::CAB {

/// Finds the next comma or colon at the level of the start. From the outside a string, and what is
/// in brackets, is one thing. A closing bracket of the level ends the scan, so does the end of the
/// text, and a zero unit in a string or brackets.
class JsonTextScan {
public:
    /// Begins at `start`, outside of strings.
    JsonTextScan(const WCHAR* text, std::uint32_t start, std::uint32_t end) noexcept
        : blocks_(text, start, end, FastestJsonKernels().classify), text_(text) {}

    /// \param position  Gets the place of what was found. \return false at the end.
    [[nodiscard]] bool Next(std::uint32_t& position, bool& isColon) noexcept;

    /// Where the source's structure has a child's opening bracket: not known to this scan.
    [[nodiscard]] std::uint64_t PlaceOf(std::uint32_t) const noexcept { return kNoPlace; }
    /// Whether the present piece has neither structure nor anything special in it: not known
    /// either.
    [[nodiscard]] bool IsPlain(std::uint32_t) const noexcept { return false; }
    void BeginPiece() noexcept {}

    static constexpr std::uint64_t kNoPlace = ~std::uint64_t{0};

private:
    [[nodiscard]] bool SkipBrackets() noexcept;
    void StepBlock() noexcept {
        blocks_.Step();
        left_ = ~std::uint64_t{0};
    }
    /// Passes the bit and those below it.
    void Pass(std::uint64_t bit) noexcept { left_ &= ~(bit | (bit - 1)); }

    JsonBlocks<JsonBlockBits> blocks_;
    const WCHAR* text_;
    std::uint64_t left_ = ~std::uint64_t{0};  ///< The units of the block that are still ahead.
    bool isSquare_ = false;
};

class JsonMarkScan {
public:
    /// \param first  The first mark behind the opening bracket.
    JsonMarkScan(const JsonMark* marks, std::uint32_t count, std::uint32_t first,
                 std::uint32_t end) noexcept
        : marks_(marks), count_(count), at_(first), piece_(first), end_(end) {}

    [[nodiscard]] bool Next(std::uint32_t& position, bool& isColon) noexcept {
        while (at_ < count_) {
            const JsonMark& mark = marks_[at_];
            last_ = at_;
            if (mark.position >= end_) return false;
            if (mark.link >= JsonMark::kFirstMatch) {
                at_ = mark.link - JsonMark::kFirstMatch + 1;
                continue;
            }
            const std::uint32_t sort = mark.link & ~JsonMark::kSpecial;
            if (sort > JsonMark::kColon) return false;
            position = mark.position;
            isColon = sort == JsonMark::kColon;
            ++at_;
            return true;
        }
        return false;
    }

    /// To be asked for the pieces in their order.
    [[nodiscard]] std::uint64_t PlaceOf(std::uint32_t position) noexcept {
        while (piece_ < count_ && marks_[piece_].position < position) ++piece_;
        const bool isThere = piece_ < count_ && marks_[piece_].position == position;
        return isThere ? piece_ : JsonTextScan::kNoPlace;
    }

    /// To be asked before PlaceOf. \param end  Where the piece ends.
    [[nodiscard]] bool IsPlain(std::uint32_t end) const noexcept {
        return last_ == piece_ && last_ < count_ && marks_[last_].position == end &&
               marks_[last_].link < JsonMark::kSpecial;
    }

    /// The next piece begins behind what was found last.
    void BeginPiece() noexcept { piece_ = at_; }

private:
    const JsonMark* marks_;
    std::uint32_t count_;
    std::uint32_t at_;        // The next mark.
    std::uint32_t last_ = 0;  // The one that was looked at last.
    std::uint32_t piece_;     // The first in the present piece, or what ends it.
    std::uint32_t end_;
};

}  // namespace AUX::CAB
