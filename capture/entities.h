#pragma once

#include <cstdint>
#include <optional>

#include "capture/text_splicer.h"
#include "foundation/wstring.h"

/// Character references of markup: "&amp;", "&#233;", "&#xE9;". A negative length means that the
/// text runs to its terminator; a null or empty text gives an empty output. The text must be no
/// part of `output`, which is empty after a failure: when memory runs out or the result would be
/// longer than a string can be.

/// Replaces the references "&#N;", "&#xN;" (a small x), "&amp;", "&lt;", "&gt;", "&quot;" and
/// "&apos;" by their characters. A number that is a surrogate or above 0x10FFFF gives nothing.
/// Anything else behind an '&' stays as it stands.
[[nodiscard]] bool DecodeEntities(const WCHAR* text, std::int64_t length,
                                  AUX::WString& output) noexcept;

/// Writes a text in printable ASCII: the five special characters by name, tab, line ends and what
/// is above 127 as "&#N;" in decimal, a surrogate pair as the one character that it is. Other
/// control characters, lone surrogates, U+FFFE and U+FFFF are left out.
[[nodiscard]] bool EncodeEntities(const WCHAR* text, std::int64_t length,
                                  AUX::WString& output) noexcept;

/// The decoded form of a text: the text itself, or what `storage` then holds.
/// \return nothing if DecodeEntities fails.
[[nodiscard]] std::optional<AUX::WStringView> Decoded(AUX::WStringView text,
                                                      AUX::WString& storage) noexcept;

/// Adds what EncodeEntities makes of a text to the splicer's output.
void AppendEncoded(TextSplicer& splicer, AUX::WStringView text) noexcept;
