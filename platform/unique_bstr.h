#pragma once

#include "platform/com.h"
#include "platform/unique_handle.h"

namespace platform {

struct BstrTraits {
    using Value = BSTR;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { SysFreeString(value); }
};

/// Owns a BSTR; null is the empty text.
using UniqueBstr = UniqueHandle<BstrTraits>;

}  // namespace platform
