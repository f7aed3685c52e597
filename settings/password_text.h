#pragma once

#include <cstdint>

#include "foundation/astring.h"
#include "foundation/status.h"
#include "foundation/wstring.h"

/// The form in which passwords are kept in the registry and travel in a job: base64 (RFC 4648,
/// section 4) of the UTF-16 code units as little-endian bytes, in lines of 76 characters. It hides
/// nothing; the buffers that it goes through are wiped all the same.

/// Bytes of the form of a password with `units` code units.
[[nodiscard]] std::uint64_t EncodedPasswordSize(std::uint32_t units) noexcept;

/// Replaces `text` with the form of the password. CR LF stands between lines, and also at the end
/// when groups without padding fill the last line. An empty password gives an empty text.
/// \return false, with `text` empty, when memory runs out or the form passes 4 GB.
[[nodiscard]] bool EncodePasswordText(AUX::WStringView password, AUX::AString& text) noexcept;

/// Replaces `password` with what the text says. A zero byte in the place of a group's first
/// character ends the text; every other character outside the alphabet is skipped, '=' too.
/// \return kStatusInvalidArgument when the bytes are no whole code units;
/// kStatusInsufficientMemory.
///         `password` is empty after both.
[[nodiscard]] AUX::Status DecodePasswordText(AUX::AStringView text,
                                             AUX::WString& password) noexcept;

/// Overwrites the whole block, then empties the string; the block stays.
void WipeText(AUX::WString& text) noexcept;
void WipeText(AUX::AString& text) noexcept;
