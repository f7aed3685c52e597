#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cab/json_node.h"

namespace AUX::CAB {

/// A unit of the source that has a part in its structure.
struct JsonMark {
    // Values of `link`. From kFirstMatch on it stands for the index, kFirstMatch less, of the mark
    // that closes this one.
    static constexpr std::uint32_t kComma = 0;
    static constexpr std::uint32_t kColon = 1;
    static constexpr std::uint32_t kClose = 2;
    static constexpr std::uint32_t kUnmatched = 3;  ///< A bracket that nothing closes.
    /// Added to a comma, colon or closing bracket: a backslash, or what stands for a quote behind
    /// one, lies between it and the mark before it.
    static constexpr std::uint32_t kSpecial = 4;
    static constexpr std::uint32_t kFirstMatch = 8;

    std::uint32_t position;
    std::uint32_t link;
};

/// The stripped text that a tree was parsed from, and the memory of all that is made from it, which
/// goes as a whole with the last count. That memory is the run-time's: AUX::Alloc gives blocks of
/// such sizes back to the system each time, and the pages of the next text would all be new. A node
/// that was parsed counts here for each handle outside of parsed nodes; others that use the text
/// have one count each.
class JsonSource {
public:
    /// Makes one with room for a text of `units`, and one count. \throws std::bad_alloc
    [[nodiscard]] static JsonSource* Create(std::size_t units);

    void AddRef(std::int64_t count = 1) noexcept { refCount_ += count; }
    void Release() noexcept {
        if (--refCount_ == 0) Destroy();
    }

    [[nodiscard]] WCHAR* Text() noexcept { return text_; }
    [[nodiscard]] std::uint32_t Length() const noexcept { return length_; }
    /// \param hidesQuotes  Whether a comment in the text has a quote in it.
    void SetLength(std::uint32_t length, bool hidesQuotes) noexcept {
        length_ = length;
        if (hidesQuotes) marks_ = Marks::None;
    }

    /// Gives memory, aligned to 8 bytes. \throws std::bad_alloc
    [[nodiscard]] void* Allocate(std::size_t bytes) {
        bytes = (bytes + 7) & ~std::size_t{7};
        if (bytes > static_cast<std::size_t>(end_ - next_)) return AllocateChunk(bytes);
        std::byte* const block = next_;
        next_ += bytes;
        return block;
    }
    /// An empty list for the one that splits a container.
    [[nodiscard]] std::vector<JsonNode*>& Scratch() noexcept {
        scratch_.clear();
        return scratch_;
    }

    /// Whether a part of the text may be gone over without marks. That is so for as long as all
    /// such parts, but for the root itself, are no more than an eighth of the text together.
    [[nodiscard]] bool MayScan(std::uint32_t start, std::uint32_t length) noexcept {
        if (start == rootStart_) return true;
        if (length > scansLeft_) return false;
        scansLeft_ -= length;
        return true;
    }
    /// Where the root's bracket stands.
    void SetRootStart(std::uint32_t start) noexcept {
        rootStart_ = start;
        scansLeft_ = length_ / 8;
    }

    /// The marks of the whole text, found at the first call. It never takes more than one pass over
    /// the text to know where a bracket closes, however deep it lies.
    /// \return null if they cannot serve: where a string holds a zero unit, or a comment a quote, a
    ///         scan that begins there takes other things for strings than one that began before.
    /// \throws std::bad_alloc
    [[nodiscard]] const JsonMark* MarksOfText();
    [[nodiscard]] std::uint32_t MarkCount() const noexcept { return markCount_; }
    [[nodiscard]] bool HasMarks() const noexcept { return marks_ == Marks::Found; }

    /// The index of the first mark at a position or behind it; found already.
    [[nodiscard]] std::uint32_t MarkAt(std::uint32_t position) const noexcept;

private:
    enum class Marks : std::uint8_t { NotSought, Found, None };
    struct Chunk {
        Chunk* next;
    };

    JsonSource() noexcept = default;
    void Destroy() noexcept;
    [[nodiscard]] void* AllocateChunk(std::size_t bytes);
    [[nodiscard]] bool FindMarks();

    std::int64_t refCount_ = 1;
    WCHAR* text_ = nullptr;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
    Chunk* chunks_ = nullptr;
    std::size_t chunkBytes_ = 4096;
    JsonMark* markList_ = nullptr;
    std::uint32_t markCount_ = 0;
    std::uint32_t length_ = 0;
    std::uint32_t rootStart_ = 0;
    std::uint32_t scansLeft_ = 0;  // Units.
    std::vector<JsonNode*> scratch_;
    Marks marks_ = Marks::NotSought;
};

}  // namespace AUX::CAB
