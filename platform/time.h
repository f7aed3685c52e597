#pragma once

/// The clock.

#include "platform/base.h"

#ifndef _WIN32

/// The time in UTC. A test can hold the clock (`platform/testing.h`).
void GetSystemTime(SYSTEMTIME* time) noexcept;

#endif
