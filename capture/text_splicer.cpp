#include "capture/text_splicer.h"

#include <algorithm>
#include <xmmintrin.h>

void TextSplicer::Clear() noexcept {
    Begin = nullptr;
    End = nullptr;
    Cursor = nullptr;
    Output.Clear();
    isComplete_ = true;
}

void TextSplicer::Init(const WCHAR* begin, const WCHAR* end) noexcept {
    Begin = begin;
    End = end;
    Cursor = begin;
}

// Absolute addresses take more room than relative ones; twice the source is enough for all but
// pages of hardly anything else.
void TextSplicer::ExpectWholeSource() noexcept {
    const std::uint64_t wanted = (static_cast<std::uint64_t>(End - Begin) + 1) * 2;
    if (wanted <= AUX::WString::kMaxLength) {
        (void)Output.Reserve(static_cast<std::uint32_t>(wanted));  // Append asks again.
    }
}

// What is fetched may lie behind the room: then nothing happens.
void TextSplicer::FetchRoom(std::size_t units) const noexcept {
    constexpr std::size_t kLine = 64;  // bytes
    const std::size_t lines = std::min<std::size_t>(units * sizeof(WCHAR) / kLine, 32);
    std::uintptr_t at = reinterpret_cast<std::uintptr_t>(Output.Text() + Output.Length());
    for (std::size_t n = 0; n < lines; ++n) {
        _mm_prefetch(reinterpret_cast<const char*>(at += kLine), _MM_HINT_T0);
    }
}

// Room grows by half at least, so that many small pieces move the output only a few times.
bool TextSplicer::Grow(std::size_t units) noexcept {
    constexpr std::uint64_t kMost = AUX::WString::kMaxLength;
    const std::uint64_t length = Output.Length();
    if (units > kMost - length) return false;
    const std::uint64_t needed = length + units;
    const std::uint64_t wanted = std::min(needed + length / 2, kMost);
    return Output.Reserve(static_cast<std::uint32_t>(wanted)) ||
           (needed < wanted && Output.Reserve(static_cast<std::uint32_t>(needed)));
}
