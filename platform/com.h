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

/// Binds an interface of ours to its id.
#define QVD_INTERFACE_ID(T, ...)                            \
    template <>                                             \
    inline const IID& platform::InterfaceId<T>() noexcept { \
        static constexpr IID kId{__VA_ARGS__};              \
        return kId;                                         \
    }                                                       \
    static_assert(sizeof(IID) == 16, "an id is 128 bits")

#else

#include "platform/posix/com_types.h"

#endif
