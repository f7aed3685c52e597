#pragma once

/// The resources that a module carries.

#include <cstddef>
#include <span>

#include "platform/modules.h"

#ifndef _WIN32
#include "platform/posix/resource_calls.h"
#endif

namespace platform {

/// The bytes of a resource, which last as long as the module; empty if there is none or on failure,
/// with FindResourceW's error code.
/// \param name, type  A text, or MAKEINTRESOURCEW of a number.
[[nodiscard]] inline std::span<const std::byte> ResourceBytes(HMODULE module, LPCWSTR name,
                                                              LPCWSTR type) noexcept {
    const HRSRC found = FindResourceW(module, name, type);
    const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    const void* bytes = loaded ? LockResource(loaded) : nullptr;
    if (!bytes) return {};
    return {static_cast<const std::byte*>(bytes), SizeofResource(module, found)};
}

}  // namespace platform
