#pragma once

/// Handles of the operating system and their owners.

#include "platform/unique_handle.h"

#ifndef _WIN32

/// Gives a handle back. The object behind it lives on while another handle or a running call holds
/// it. A value that is no open handle gives FALSE with ERROR_INVALID_HANDLE.
BOOL CloseHandle(HANDLE handle) noexcept;

#endif

namespace platform {

struct FileHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) noexcept { CloseHandle(value); }
};
/// Owns a file; INVALID_HANDLE_VALUE is none.
using FileHandle = UniqueHandle<FileHandleTraits>;

struct KernelHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { CloseHandle(value); }
};
/// Owns an event, a mapping, a process or a token; null is none.
using KernelHandle = UniqueHandle<KernelHandleTraits>;

}  // namespace platform
