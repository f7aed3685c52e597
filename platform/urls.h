#pragma once

/// Addresses as texts: joining them, and turning them into paths and back.

#include "platform/base.h"

#ifdef _WIN32

#include <shlwapi.h>

#else

#include "platform/posix/url_calls.h"

#endif
