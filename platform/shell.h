#pragma once

/// Starting programs, known folders and the command line.

#include "platform/base.h"

#ifdef _WIN32

#include <knownfolders.h>
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#else

#include "platform/posix/shell_calls.h"

#endif
