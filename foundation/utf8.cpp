#include "foundation/utf8.h"

#include <algorithm>
#include <cstring>

#include "foundation/utf8_block.h"
#include "foundation/utf8_writers.h"
#include "foundation/wstring_view.h"
#include "platform/processor.h"

namespace AUX {
namespace {

constexpr std::size_t kMaxBytes = 4;  // Of one code point.

constexpr bool IsHigh(std::uint32_t unit) noexcept { return unit - 0xD800u < 0x400; }
constexpr bool IsLow(std::uint32_t unit) noexcept { return unit - 0xDC00u < 0x400; }

constexpr bool IsSurrogate(std::uint32_t unit) noexcept { return (unit & 0xF800) == 0xD800; }

bool IsPair(const WCHAR* text, const WCHAR* end) noexcept {
    return IsHigh(text[0]) && end - text > 1 && IsLow(text[1]);
}

// Writes the bytes of the code point at `text` and moves behind it; `out` has room for four. One of
// three forms is picked from a list, not branched to: text mixes them at every letter.
inline char* EncodeOne(const WCHAR*& text, const WCHAR* end, char* out) noexcept {
    const std::uint32_t unit = *text;
    std::uint32_t word = 0;
    std::size_t size = kMaxBytes;
    if (IsSurrogate(unit) && IsPair(text, end)) {
        const std::uint32_t point = 0x10000 + ((unit - 0xD800) << 10) + (text[1] - 0xDC00u);
        word = 0x808080F0 | point >> 18 | (point >> 4 & 0x3F00) | (point << 10 & 0x3F0000) |
               (point & 0x3F) << 24;
        ++text;
    } else {
        const std::uint32_t last = unit & 0x3F;
        const std::uint32_t words[] = {unit, 0x80C0 | unit >> 6 | last << 8,
                                       0x8080E0 | unit >> 12 | (unit << 2 & 0x3F00) | last << 16};
        size = std::size_t{1} + (unit >= 0x80) + (unit >= 0x800);
        word = words[size - 1];
    }
    ++text;
    std::memcpy(out, &word, sizeof word);
    return out + size;
}

std::size_t CountPairs(const WCHAR* text) noexcept {
    std::size_t pairs = 0;
    for (std::ptrdiff_t i = 0; i < utf8::kBlockUnits; ++i) {
        pairs += IsHigh(text[i]) && IsLow(text[i + 1]);
    }
    return pairs;
}

// A pair takes four bytes, where its two units alone would take three each. Each block is followed
// by one unit at least, since a pair may begin with its last.
std::size_t Count(const WCHAR* text, const WCHAR* end) noexcept {
    std::size_t bytes = 0;
    while (end - text > utf8::kBlockUnits) {
        std::ptrdiff_t blocks = (end - text - 1) / utf8::kBlockUnits;
        blocks = std::min(blocks, utf8::Tally::kMaxBlocks);
        utf8::Tally tally;
        for (const WCHAR* const stop = text + blocks * utf8::kBlockUnits; text < stop;
             text += utf8::kBlockUnits) {
            const utf8::Block block(text);
            tally.Add(block);
            if (block.HasSurrogate()) bytes -= 2 * CountPairs(text);
        }
        bytes += tally.Bytes();
    }
    for (; text < end; ++text) {
        const std::uint32_t unit = *text;
        bytes += std::size_t{1} + (unit >= 0x80) + (unit >= 0x800);
        if (IsHigh(unit) && IsPair(text, end)) bytes -= 2;
    }
    return bytes;
}

// Copies what fits of `size` bytes and tells whether all did.
bool PutCut(const char* bytes, std::size_t size, char*& out, char* limit) noexcept {
    const std::size_t room = static_cast<std::size_t>(limit - out);
    const std::size_t fits = size < room ? size : room;
    std::memcpy(out, bytes, fits);
    out += fits;
    return fits == size;
}

// Writes what it can of one block, a unit or a pair at least, and moves `text` on by that.
char* WriteBlock(const WCHAR*& text, const WCHAR* end, char* out) noexcept {
    const utf8::Block block(text);
    // Whole blocks first: the processor runs ahead where the step is a constant.
    if (block.IsShort()) {
        text += utf8::kBlockUnits;
        return block.IsAscii() ? block.PutAscii(out, utf8::kBlockUnits) : block.PutShort(out);
    }
    const std::ptrdiff_t threeByte = block.ThreeByteRun();
    if (threeByte == utf8::kBlockUnits) {
        text += utf8::kBlockUnits;
        return block.PutThreeByte(out, utf8::kBlockUnits);
    }
    const std::ptrdiff_t ascii = block.AsciiRun();
    if (threeByte + ascii == 0) return EncodeOne(text, end, out);
    text += threeByte + ascii;  // One of them is 0.
    return threeByte ? block.PutThreeByte(out, threeByte) : block.PutAscii(out, ascii);
}

utf8::BlockWriter ChooseWriter() noexcept {
    const utf8::BlockWriter writer =
        platform::HasAvx512Compress() ? utf8::CompressBlocks : utf8::WriteBlocks;
    utf8::chosenWriter.store(writer, std::memory_order_relaxed);
    return writer;
}

// Writes until the text ends or the buffer is full; gives the end of what was written.
char* Write(const WCHAR* text, const WCHAR* end, char* out, char* limit) noexcept {
    const utf8::BlockWriter chosen = utf8::chosenWriter.load(std::memory_order_relaxed);
    out = (chosen ? chosen : ChooseWriter())(text, end, out, limit);
    while (text != end && out != limit) {
        if (*text < 0x80) {
            *out++ = static_cast<char>(*text++);
            continue;
        }
        char bytes[kMaxBytes];
        const char* const last = EncodeOne(text, end, bytes);
        if (!PutCut(bytes, static_cast<std::size_t>(last - bytes), out, limit)) break;
    }
    return out;
}

}  // namespace

constinit std::atomic<utf8::BlockWriter> utf8::chosenWriter{nullptr};

// Each block is followed by another one's units, which overwrite what it wrote too much.
char* utf8::WriteBlocks(const WCHAR*& text, const WCHAR* end, char* out,
                        const char* limit) noexcept {
    constexpr std::ptrdiff_t kBlockRoom = utf8::kBlockUnits * 4;
    constexpr std::ptrdiff_t kRunRoom = utf8::kRunUnits * 4;
    static_assert(kBlockRoom >= utf8::kBlockReach);
    while (end - text >= utf8::kRunUnits + utf8::kBlockUnits && limit - out >= kRunRoom) {
        if (utf8::PutAsciiRun(text, out)) {
            text += utf8::kRunUnits;
            out += utf8::kRunUnits;
            continue;
        }
        const WCHAR* const stop = text + utf8::kRunUnits - utf8::kBlockUnits;
        while (text <= stop) out = WriteBlock(text, end, out);
    }
    while (end - text >= 2 * utf8::kBlockUnits && limit - out >= kBlockRoom) {
        out = WriteBlock(text, end, out);
    }
    return out;
}

std::size_t EncodeUtf8(const WCHAR* text, std::int64_t length, char* buffer, std::size_t bufferSize,
                       bool withMark) noexcept {
    if (!text) return 0;
    const std::size_t units =
        length < 0 ? WStringView(text).size() : static_cast<std::size_t>(length);
    if (units == 0) return 0;
    const WCHAR* const end = text + units;
    constexpr char kMark[] = {'\xEF', '\xBB', '\xBF'};
    const bool putsMark = withMark && *text != 0xFEFF;
    if (!buffer || bufferSize == 0) return Count(text, end) + (putsMark ? sizeof kMark : 0);
    char* out = buffer;
    char* const limit = buffer + bufferSize;
    if (!putsMark || PutCut(kMark, sizeof kMark, out, limit)) out = Write(text, end, out, limit);
    return static_cast<std::size_t>(out - buffer);
}

}  // namespace AUX
