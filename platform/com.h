#pragma once

/// The component object model as far as the code uses it: interfaces, ids, BSTR.

#include "platform/base.h"

#ifdef _WIN32

#include <objbase.h>
#include <oleauto.h>

namespace platform {

/// The id of an interface.
template <class T>
const IID& InterfaceId() noexcept {
    return __uuidof(T);
}

}  // namespace platform

#else

#include "platform/posix/com_types.h"

#endif
