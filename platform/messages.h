#pragma once

/// What the system says: the texts of its error codes, and narrow texts in its code page.

#include "platform/base.h"

#ifndef _WIN32
#include "platform/posix/message_calls.h"
#endif
