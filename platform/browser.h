#pragma once

/// The browser as its add-ins see it: one IWebBrowser2 for each tab.

#include "platform/com.h"

#ifdef _WIN32

#include <exdisp.h>

#else

#include "platform/posix/browser_types.h"

#endif
