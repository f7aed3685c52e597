#pragma once

/// The interfaces of a loaded page: document, elements and what hangs on them.

#include "platform/automation.h"

#ifdef _WIN32

#include <mshtml.h>

#else

#include "platform/posix/html_document.h"
#include "platform/posix/html_element.h"

#endif
