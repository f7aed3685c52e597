#pragma once

/// Builds job blocks byte by byte, apart from the code under test and from the add-in's writer.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace converter {

using Bytes = std::vector<std::uint8_t>;

/// A block under construction. `Done` puts its length in front.
class BlockBytes {
public:
    BlockBytes& Byte(std::uint8_t value) {
        bytes_.push_back(value);
        return *this;
    }
    BlockBytes& Zeros(std::size_t count) {
        bytes_.insert(bytes_.end(), count, 0);
        return *this;
    }
    BlockBytes& U32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            Byte(static_cast<std::uint8_t>(value >> shift & 0xFF));
        }
        return *this;
    }
    BlockBytes& Text(platform::WideView text) {
        U32(static_cast<std::uint32_t>(text.size()));
        for (const WCHAR unit : text) {
            Byte(static_cast<std::uint8_t>(unit & 0xFF)).Byte(static_cast<std::uint8_t>(unit >> 8));
        }
        return *this;
    }
    BlockBytes& Ascii(std::string_view text) {
        U32(static_cast<std::uint32_t>(text.size()));
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        return *this;
    }

    Bytes Done() const {
        Bytes block = BlockBytes().U32(static_cast<std::uint32_t>(bytes_.size() + 4)).bytes_;
        block.insert(block.end(), bytes_.begin(), bytes_.end());
        return block;
    }

private:
    Bytes bytes_;
};

/// A job with every optional part present.
inline Bytes FullBlock() {
    BlockBytes block;
    block.Byte(12);
    block.Byte(1).Byte(1).Byte(1).Ascii("YQBiAA==").Ascii("");  // security; the password "ab"
    block.U32(2).Byte(1).Byte(0).Byte(1).Byte(0).Byte(0).Byte(1).U32(3).U32(1).Byte(1);
    block.Byte(1).Byte(1).Text(TEXT("C:\\v.exe")).Text(TEXT("-o %f"));  // application
    block.Byte(1).Byte(1).Text(TEXT("Name"));
    block.Byte(1).U32(7).U32(1);  // option
    block.Byte(1).Text(TEXT("x")).Text(TEXT("")).Text(TEXT("yz"));
    block.U32(2);
    block.Text(TEXT("http://s/")).Text(TEXT("<b>")).Text(TEXT("t")).Text(TEXT("o.pdf"));
    block.U32(2).Text(TEXT("a1")).Text(TEXT("")).Byte(0).Byte(1).Byte(1);
    for (int k = 0; k < 10; ++k) block.Text(k == 9 ? TEXT("last") : TEXT(""));
    block.U32(9).U32(0);
    block.Text(TEXT("C:\\T\\qvd_1.html")).Zeros(12).U32(0).Byte(1).Byte(0).Byte(0);
    return block.Done();
}

/// A page job as the add-in writes it with security off.
inline Bytes PageBlock(platform::WideView source, platform::WideView output,
                       bool isTemporary = false) {
    BlockBytes block;
    block.Byte(12).Byte(0).Byte(1).Byte(0).Text(TEXT("")).Text(TEXT("%f"));
    block.Zeros(3).Zeros(8).Byte(0).U32(1);
    block.Text(source).U32(0).U32(0).Text(output).U32(0);
    return block.Byte(isTemporary).Byte(0).Byte(0).Done();
}

}  // namespace converter
