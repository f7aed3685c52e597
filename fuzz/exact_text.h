#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/text.h"

namespace fuzz {

/// Bytes as a terminated text in a block of exactly its size, so that the address sanitizer sees a
/// read behind it. UTF-8, but for a byte in front that is 0xFF: then two bytes are one unit, which
/// may be a lone surrogate.
inline std::unique_ptr<WCHAR[]> ExactText(const std::uint8_t* data, std::size_t size) {
    platform::WideString text;
    if (size > 0 && data[0] == 0xFF) {
        for (std::size_t i = 1; i + 1 < size; i += 2) {
            text += static_cast<WCHAR>(data[i] << 8 | data[i + 1]);
        }
    } else {
        text = platform::FromUtf8({reinterpret_cast<const char*>(data), size});
    }
    text.resize(std::char_traits<WCHAR>::length(text.c_str()));
    std::unique_ptr<WCHAR[]> exact(new WCHAR[text.size() + 1]);
    text.copy(exact.get(), text.size());
    exact[text.size()] = 0;
    return exact;
}

}  // namespace fuzz
