#pragma once

/// Shared memory by name, and files as memory. Natively a mapping of memory is a file in the user's
/// runtime folder; it differs from Windows in this:
/// - Only memory with a name can be mapped, whole and from its start; only a file without one.
/// - A mapped file can be cut; a copy that reaches behind its end then faults (guarded_copy.h).
/// - Processes meet if they run for the same user and on the same profile.
/// - Memory that cannot be had is always ERROR_COMMITMENT_LIMIT, at creation.

#include "platform/handles.h"
#ifndef _WIN32
#include "platform/posix/memory_calls.h"
#endif

namespace platform {

/// Owns the handle of a mapping; null is none.
using MappingHandle = KernelHandle;

struct MappedViewTraits {
    using Value = void*;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { UnmapViewOfFile(value); }
};
/// Owns a view of a mapping, by its address. The memory stays while a view or a handle is held, the
/// name only while a handle is.
using MappedView = UniqueHandle<MappedViewTraits>;

}  // namespace platform
