#pragma once

/// The stream of COM, which hands bytes between modules.

#include "platform/com.h"

#ifdef _WIN32

#include <objidl.h>

#else

#include "platform/posix/stream_types.h"

#endif
