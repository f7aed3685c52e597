#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base.h"

namespace AUX {

/// Encodes UTF-16 as UTF-8. A lone surrogate is encoded as it stands, in three bytes. A negative
/// `length` means that the text runs to its terminator; a null or empty text gives 0. The bytes are
/// not terminated.
/// \param buffer    Null, or a `bufferSize` of 0, only counts. The bytes of a character that do not
///                  fit are cut off at the buffer's end, and encoding ends there.
/// \param withMark  Puts the mark EF BB BF first, unless the text itself begins with U+FEFF.
/// \return the bytes counted or written.
std::size_t EncodeUtf8(const WCHAR* text, std::int64_t length, char* buffer, std::size_t bufferSize,
                       bool withMark) noexcept;

}  // namespace AUX
