#pragma once

/// The libraries that every machine has; made of the IDL files in platform/idl.

#include <cstddef>
#include <span>

namespace platform::types {

/// IUnknown and IDispatch, which all others refer to.
std::span<const std::byte> BaseLibraryBytes() noexcept;
/// The browser's own, with its events.
std::span<const std::byte> BrowserLibraryBytes() noexcept;

}  // namespace platform::types
