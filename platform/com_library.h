#pragma once

/// What makes objects by the id of their class, and what registers classes by their kind.

#include "platform/com.h"

#ifdef _WIN32

#include <comcat.h>
#include <unknwn.h>

#else

#include "platform/posix/com_calls.h"

#endif
