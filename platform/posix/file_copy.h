#pragma once

#include <string>

#include "platform/base.h"

namespace platform {

/// Moves a file to another device: a copy under a temporary name beside `to`, put in place in one
/// step, then `from` goes. A failure leaves `from` and whatever `to` held as they were. \param
/// flags  MOVEFILE_ flags; without MOVEFILE_REPLACE_EXISTING an existing `to` is kept. \return the
/// error code, 0 on success.
[[nodiscard]] DWORD CopyThenRemove(const std::string& from, const std::string& to,
                                   DWORD flags) noexcept;

}  // namespace platform
