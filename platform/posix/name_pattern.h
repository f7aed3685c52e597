#pragma once

#include "platform/text.h"

namespace platform {

/// Whether a file name matches a search pattern: `*` stands for any text, `?` for one character or,
/// at the end, for none; `*.*` is every name, and a pattern that ends in a full stop wants names
/// without one.
[[nodiscard]] bool MatchesPattern(WideView name, WideView pattern) noexcept;

}  // namespace platform
