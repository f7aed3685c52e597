#pragma once

/// Values of automation: the VARIANT and what changes it.

#include "platform/com.h"

#ifndef _WIN32

#include "platform/posix/variant_types.h"

#endif
