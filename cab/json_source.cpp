#include "cab/json_source.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

#include "cab/json_blocks.h"

namespace AUX::CAB {
namespace {

constexpr std::size_t kFirstBytes = 512;  // In the source's own block, for small texts.
constexpr std::size_t kMostChunkBytes = std::size_t{1} << 20;
constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// What MarksOfText fills in, with the openings that still wait as two chains through their links.
class MarkList {
public:
    explicit MarkList(std::uint32_t textLength)
        : capacity_(textLength / kUnitsPerMark + kJsonBlock), marks_(Allocate(capacity_)) {}
    MarkList(const MarkList&) = delete;
    MarkList& operator=(const MarkList&) = delete;
    ~MarkList() { ::operator delete(marks_); }

    /// For the marks of a block. \param unitsLeft  Of the text, with the block.
    void MakeRoom(std::uint32_t unitsLeft) {
        if (capacity_ - count_ >= kJsonBlock) return;
        capacity_ += std::min<std::size_t>(capacity_, unitsLeft) + kJsonBlock;
        JsonMark* const larger = Allocate(capacity_);
        std::copy_n(marks_, count_, larger);
        ::operator delete(std::exchange(marks_, larger));
    }

    [[nodiscard]] std::uint32_t Count() const noexcept { return count_; }

    /// Adds the marks of a block, for which there is room.
    void Add(const WCHAR* text, const JsonBlocks<JsonMarkBits>& blocks) noexcept {
        std::uint64_t structure = blocks.Found().structure & ~blocks.Strings();
        std::uint64_t special = blocks.Found().special;
        // Kept in registers, which nothing that is written here can be part of.
        JsonMark* const marks = marks_;
        std::uint32_t count = count_;
        std::uint32_t isSpecial = isSpecial_;
        for (; structure; structure &= structure - 1, ++count, isSpecial = 0) {
            const std::uint64_t below = (structure & -structure) - 1;
            if (special & below) isSpecial = JsonMark::kSpecial;
            special &= ~below;
            const std::uint32_t position =
                blocks.Position() + static_cast<std::uint32_t>(std::countr_zero(structure));
            const WCHAR unit = text[position];
            marks[count].position = position;
            if (unit < '[') {
                marks[count].link = isSpecial | (unit == ',' ? JsonMark::kComma : JsonMark::kColon);
                continue;
            }
            std::uint32_t& waiting = unit < '{' ? square_ : curly_;
            if (unit == '[' || unit == '{') {
                marks[count].link = std::exchange(waiting, count);
                continue;
            }
            marks[count].link = JsonMark::kClose | isSpecial;
            if (waiting == kNone) continue;
            waiting = std::exchange(marks[waiting].link, count + JsonMark::kFirstMatch);
        }
        count_ = count;
        isSpecial_ = special ? JsonMark::kSpecial : isSpecial;
    }

    /// Gives the list away.
    [[nodiscard]] JsonMark* End() noexcept {
        for (std::uint32_t waiting : {square_, curly_}) {
            while (waiting != kNone) {
                waiting = std::exchange(marks_[waiting].link, JsonMark::kUnmatched);
            }
        }
        return std::exchange(marks_, nullptr);
    }

private:
    static constexpr std::uint32_t kUnitsPerMark = 5;  // Fewer are rare.

    static JsonMark* Allocate(std::size_t count) {
        return static_cast<JsonMark*>(::operator new(count * sizeof(JsonMark)));
    }

    std::size_t capacity_;
    JsonMark* marks_;
    std::uint32_t count_ = 0;
    std::uint32_t square_ = kNone;
    std::uint32_t curly_ = kNone;
    std::uint32_t isSpecial_ = 0;  // JsonMark::kSpecial if something special waits for its mark.
};

}  // namespace

JsonSource* JsonSource::Create(std::size_t units) {
    const std::size_t textBytes = (units * sizeof(WCHAR) + 7) & ~std::size_t{7};
    auto* const block =
        static_cast<std::byte*>(::operator new(sizeof(JsonSource) + kFirstBytes + textBytes));
    auto* const source = new (block) JsonSource;
    source->next_ = block + sizeof(JsonSource);
    source->end_ = source->next_ + kFirstBytes;
    source->text_ = reinterpret_cast<WCHAR*>(source->end_);
    return source;
}

void JsonSource::Destroy() noexcept {
    while (chunks_) ::operator delete(std::exchange(chunks_, chunks_->next));
    ::operator delete(markList_);
    this->~JsonSource();
    ::operator delete(this);
}

void* JsonSource::AllocateChunk(std::size_t bytes) {
    // A block that would take much of a chunk gets one of its own, and the chunk goes on.
    const bool isAlone = bytes > chunkBytes_ / 4;
    const std::size_t size = sizeof(Chunk) + (isAlone ? bytes : chunkBytes_);
    auto* const chunk = static_cast<Chunk*>(::operator new(size));
    chunk->next = chunks_;
    chunks_ = chunk;
    auto* const block = reinterpret_cast<std::byte*>(chunk + 1);
    if (isAlone) return block;
    next_ = block + bytes;
    end_ = block + chunkBytes_;
    chunkBytes_ = std::min(chunkBytes_ * 2, kMostChunkBytes);
    return block;
}

bool JsonSource::FindMarks() {
    MarkList marks(length_);
    JsonBlocks<JsonMarkBits> blocks(text_, 0, length_, FastestJsonKernels().classifyMarks);
    for (; blocks.IsValid(); blocks.Step()) {
        if (blocks.Found().zero) return false;
        marks.MakeRoom(length_ - blocks.Position());
        marks.Add(text_, blocks);
    }
    if (marks.Count() >= kNone - JsonMark::kFirstMatch) return false;
    markCount_ = marks.Count();
    markList_ = marks.End();
    return true;
}

const JsonMark* JsonSource::MarksOfText() {
    if (marks_ == Marks::NotSought) marks_ = FindMarks() ? Marks::Found : Marks::None;
    return marks_ == Marks::Found ? markList_ : nullptr;
}

std::uint32_t JsonSource::MarkAt(std::uint32_t position) const noexcept {
    const JsonMark* const found =
        std::lower_bound(markList_, markList_ + markCount_, position,
                         [](const JsonMark& mark, std::uint32_t at) { return mark.position < at; });
    return static_cast<std::uint32_t>(found - markList_);
}

}  // namespace AUX::CAB
