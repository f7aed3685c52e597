#pragma once

/// Text at the edges of the process: files, pipes, programs and terminals carry UTF-8, everything
/// inside is UTF-16. For programs and tests; the add-in's own strings are AUX::WString.

#include <string>
#include <string_view>

#include "platform/base.h"

namespace platform {

using WideString = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

/// UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(WideView text);

/// UTF-8 to UTF-16; each byte that is not part of a well-formed sequence becomes U+FFFD
/// (Unicode 15, section 3.9, best practice of maximal subparts).
WideString FromUtf8(std::string_view text);

}  // namespace platform
