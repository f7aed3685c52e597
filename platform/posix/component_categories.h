#pragma once

#include "platform/com.h"

namespace platform {

/// Makes the manager of the kinds of classes. \return E_NOINTERFACE, E_OUTOFMEMORY.
HRESULT MakeComponentCategories(REFIID id, void** object) noexcept;

}  // namespace platform
