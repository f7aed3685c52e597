#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/allocated.h"
#include "foundation/wstring.h"

/// Bytes as text in the standard alphabet of RFC 4648 with padding, without line breaks. Needs
/// nothing of the bags.
namespace AUX::CAB {

/// The units that `size` bytes take.
[[nodiscard]] constexpr std::size_t Base64Length(std::size_t size) noexcept {
    return (size / 3 + (size % 3 != 0)) * 4;
}

/// Writes Base64Length(size) units, without a terminator.
void EncodeBase64(const void* bytes, std::size_t size, WCHAR* out) noexcept;

/// Reads a text into at most `text.size() / 4 * 3` bytes. Takes no white space.
/// \return the number of bytes; 0 if the text is not valid, when `out` may have been written to.
[[nodiscard]] std::size_t DecodeBase64(WStringView text, std::uint8_t* out) noexcept;

/// Replaces `text`. \return false, with `text` unchanged, when memory runs out or the text would
/// pass its largest length.
[[nodiscard]] bool Base64Encode(const void* bytes, std::size_t size, WString& text) noexcept;

/// Bytes in a block that they own.
class Base64Bytes {
public:
    [[nodiscard]] std::uint8_t* Data() const noexcept { return data_.get(); }
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }

private:
    friend bool Base64Decode(WStringView text, Base64Bytes& bytes) noexcept;
    std::unique_ptr<std::uint8_t, FreeBlock> data_;
    std::size_t size_ = 0;
};

/// Replaces `bytes`, by none if the text is not valid.
/// \return false, with `bytes` unchanged, when memory runs out.
[[nodiscard]] bool Base64Decode(WStringView text, Base64Bytes& bytes) noexcept;

}  // namespace AUX::CAB
