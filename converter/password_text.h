#pragma once

#include <string_view>

#include "converter/result.h"
#include "platform/text.h"

namespace converter {

/// Reads the base64 form (RFC 4648) in which a password travels: UTF-16 code units, little-endian,
/// with a line break (carriage return, line feed) behind every 76 characters and `=` at the end.
/// Nothing gives an empty password. A password that was misread would lock its owner out of the
/// file, so anything but this form is an error.
Result<platform::WideString> ReadPasswordText(std::string_view text);

}  // namespace converter
