#pragma once

#include "platform/com_library.h"
#include "platform/com_ptr.h"

/// Makes the factory of the add-in's class. It refuses to be part of another object. Null when
/// memory runs out.
[[nodiscard]] platform::ComPtr<IClassFactory> MakeClassFactory() noexcept;
