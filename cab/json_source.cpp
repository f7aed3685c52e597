#include "cab/json_source.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

#include "cab/json_blocks.h"
#include "foundation/bit_kernels.h"

namespace AUX::CAB {
namespace {

constexpr std::size_t kFirstBytes = 512;  // In the source's own block, for small texts.
constexpr std::size_t kMostChunkBytes = std::size_t{1} << 20;
constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// What MarksOfText fills in, with the openings that still wait as two chains through their links.
class MarkList {
public:
    explicit MarkList(JsonMark* marks) noexcept : marks_(marks) {}

    void Add(std::uint32_t position, WCHAR unit) noexcept {
        std::uint32_t link = JsonMark::kComma;
        switch (unit) {
            case ',':
                break;
            case ':':
                link = JsonMark::kColon;
                break;
            case '[':
                link = std::exchange(square_, count_);
                break;
            case '{':
                link = std::exchange(curly_, count_);
                break;
            default:
                Close(unit == ']' ? square_ : curly_);
                link = JsonMark::kClose;
        }
        marks_[count_++] = {position, link};
    }

    void End() noexcept {
        for (std::uint32_t waiting : {square_, curly_}) {
            while (waiting != kNone) {
                waiting = std::exchange(marks_[waiting].link, JsonMark::kUnmatched);
            }
        }
    }

private:
    void Close(std::uint32_t& waiting) noexcept {
        if (waiting == kNone) return;
        waiting = std::exchange(marks_[waiting].link, count_ + JsonMark::kFirstMatch);
    }

    JsonMark* marks_;
    std::uint32_t count_ = 0;
    std::uint32_t square_ = kNone;
    std::uint32_t curly_ = kNone;
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
    std::size_t count = 0;
    JsonBlocks blocks(text_, 0, length_);
    for (; blocks.IsValid(); blocks.Step()) {
        if (blocks.Bits().zero) return false;
        count += CountWord(blocks.Structure());
    }
    if (count >= kNone - JsonMark::kFirstMatch) return false;
    markList_ = static_cast<JsonMark*>(::operator new(count * sizeof(JsonMark)));
    markCount_ = static_cast<std::uint32_t>(count);
    MarkList marks(markList_);
    for (JsonBlocks again(text_, 0, length_); again.IsValid(); again.Step()) {
        for (std::uint64_t bits = again.Structure(); bits; bits &= bits - 1) {
            const std::uint32_t position =
                again.Position() + static_cast<std::uint32_t>(std::countr_zero(bits));
            marks.Add(position, text_[position]);
        }
    }
    marks.End();
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
