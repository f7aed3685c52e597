#pragma once

/// Descriptions of automation interfaces: type libraries, their registration, late-bound calls.

#include "platform/automation.h"

#ifndef _WIN32

#include "platform/posix/typeinfo/type_calls.h"

#endif
