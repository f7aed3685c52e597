#pragma once

/// Events, waiting, critical sections and the tick count.

#include "platform/handles.h"

#ifndef _WIN32
#include "platform/posix/sync_calls.h"
#endif
