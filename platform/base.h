#pragma once

/// The base types, constants and the per-thread error code of the operating system, under their
/// Win32 names. This is the one header that includes <windows.h>.

#ifdef _WIN32

#include <windows.h>

// These macros would rename operations of ours; callers write the wide name.
#undef GetMessage
#undef GetObject
#undef GetClassName

// The exports of a module stand in its .def file.
#define QVD_EXPORT

#else

#include "platform/posix/base_types.h"

/// Marks a function that a module exports; everything else of it is hidden.
#define QVD_EXPORT [[gnu::visibility("default")]]

#endif

static_assert(sizeof(WCHAR) == 2 && sizeof(TEXT("a")) == 4, "text is UTF-16 on every build");
static_assert(sizeof(LONG) == 4 && sizeof(DWORD) == 4, "Windows LONG is 32 bits");
