#pragma once

#include "platform/text.h"

namespace platform {

/// Whether a file name matches a search pattern: `*` stands for any text, `?` for one unit (Windows
/// lets it also stand for none before a full stop and at the end), `*.*` for every name.
[[nodiscard]] bool MatchesPattern(WideView name, WideView pattern) noexcept;

}  // namespace platform
