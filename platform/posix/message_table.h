#pragma once

#include <string_view>

#include "platform/base.h"

namespace platform {

/// The text of an error code or HRESULT, without the full stop; empty if there is none.
[[nodiscard]] std::string_view SystemMessage(DWORD code) noexcept;

}  // namespace platform
