#include "foundation/utf8.h"

#include <cstring>

#include "foundation/wstring_view.h"

namespace AUX {
namespace {

// One block is tested and packed in a loop of fixed length, which compilers turn into vector code.
constexpr std::size_t kBlock = 16;
constexpr std::size_t kMaxBytes = 4;  // Of one code point.

bool IsAsciiBlock(const WCHAR* text) noexcept {
    std::uint16_t all = 0;
    for (std::size_t i = 0; i < kBlock; ++i) all = static_cast<std::uint16_t>(all | text[i]);
    return all < 0x80;
}

constexpr bool IsHigh(std::uint32_t unit) noexcept { return unit - 0xD800u < 0x400; }
constexpr bool IsLow(std::uint32_t unit) noexcept { return unit - 0xDC00u < 0x400; }

constexpr bool IsSurrogate(std::uint32_t unit) noexcept { return (unit & 0xF800) == 0xD800; }

bool IsPair(const WCHAR* text, const WCHAR* end) noexcept {
    return IsHigh(text[0]) && end - text > 1 && IsLow(text[1]);
}

constexpr char Byte(std::uint32_t value) noexcept {
    return static_cast<char>(static_cast<unsigned char>(value));
}

// Writes the bytes of the code point at `text` and moves behind it; `out` has room for four.
inline char* EncodeOne(const WCHAR*& text, const WCHAR* end, char* out) noexcept {
    const std::uint32_t unit = *text;
    if (unit < 0x80) {
        *out++ = Byte(unit);
    } else if (unit < 0x800) {
        *out++ = Byte(0xC0 | unit >> 6);
        *out++ = Byte(0x80 | (unit & 0x3F));
    } else if (IsSurrogate(unit) && IsPair(text, end)) {
        const std::uint32_t point = 0x10000 + ((unit - 0xD800) << 10) + (text[1] - 0xDC00u);
        *out++ = Byte(0xF0 | point >> 18);
        *out++ = Byte(0x80 | (point >> 12 & 0x3F));
        *out++ = Byte(0x80 | (point >> 6 & 0x3F));
        *out++ = Byte(0x80 | (point & 0x3F));
        ++text;
    } else {
        *out++ = Byte(0xE0 | unit >> 12);
        *out++ = Byte(0x80 | (unit >> 6 & 0x3F));
        *out++ = Byte(0x80 | (unit & 0x3F));
    }
    ++text;
    return out;
}

std::size_t Count(const WCHAR* text, const WCHAR* end) noexcept {
    std::size_t bytes = 0;
    while (text != end) {
        const std::size_t units = static_cast<std::size_t>(end - text);
        if (units >= kBlock && IsAsciiBlock(text)) {
            text += kBlock;
            bytes += kBlock;
            continue;
        }
        for (const WCHAR* const stop = text + (units < kBlock ? units : kBlock); text < stop;
             ++text) {
            const std::uint32_t unit = *text;
            bytes += 1u + (unit >= 0x80) + (unit >= 0x800);
            // A pair takes four bytes in all.
            if (IsSurrogate(unit) && IsPair(text, end)) {
                ++bytes;
                ++text;
            }
        }
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

// Writes until the text ends or the buffer is full; gives the end of what was written.
char* Write(const WCHAR* text, const WCHAR* end, char* out, char* limit) noexcept {
    while (text != end) {
        const std::size_t room = static_cast<std::size_t>(limit - out);
        const std::size_t units = static_cast<std::size_t>(end - text);
        if (room >= kBlock && units >= kBlock && IsAsciiBlock(text)) {
            for (std::size_t i = 0; i < kBlock; ++i) out[i] = Byte(text[i]);
            text += kBlock;
            out += kBlock;
        } else if (room >= kBlock * kMaxBytes && units >= kBlock) {
            // A pair may begin with the last unit of the block, so it ends up to one behind it.
            for (const WCHAR* const stop = text + kBlock; text < stop;) {
                out = EncodeOne(text, end, out);
            }
        } else if (room >= kMaxBytes) {
            out = EncodeOne(text, end, out);
        } else {
            char bytes[kMaxBytes];
            const char* const last = EncodeOne(text, end, bytes);
            if (!PutCut(bytes, static_cast<std::size_t>(last - bytes), out, limit)) break;
        }
    }
    return out;
}

}  // namespace

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
