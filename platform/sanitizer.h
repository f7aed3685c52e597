#pragma once

/// Tells the address sanitizer about memory that an allocator of ours hands out. Costs nothing in
/// other builds.

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QVD_HAS_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVD_HAS_ADDRESS_SANITIZER
#endif
#endif

#ifdef QVD_HAS_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace platform {

/// From now on an access to these bytes is an error, for whole units of 8 bytes.
inline void ForbidAccess([[maybe_unused]] const void* begin,
                         [[maybe_unused]] std::size_t size) noexcept {
#ifdef QVD_HAS_ADDRESS_SANITIZER
    __asan_poison_memory_region(begin, size);
#endif
}

/// Takes back ForbidAccess.
inline void AllowAccess([[maybe_unused]] const void* begin,
                        [[maybe_unused]] std::size_t size) noexcept {
#ifdef QVD_HAS_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(begin, size);
#endif
}

/// What pointers in these bytes point to does not count as leaked.
inline void LookForPointersIn([[maybe_unused]] const void* begin,
                              [[maybe_unused]] std::size_t size) noexcept {
#ifdef QVD_HAS_ADDRESS_SANITIZER
    __lsan_register_root_region(begin, size);
#endif
}

/// Takes back LookForPointersIn, for the same bytes.
inline void LookNoMoreIn([[maybe_unused]] const void* begin,
                         [[maybe_unused]] std::size_t size) noexcept {
#ifdef QVD_HAS_ADDRESS_SANITIZER
    __lsan_unregister_root_region(begin, size);
#endif
}

}  // namespace platform
