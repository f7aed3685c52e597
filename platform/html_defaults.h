#pragma once

/// Bases for classes that stand in for the browser. On Windows the browser's interfaces have up to
/// a hundred operations; NotImplemented<X> answers E_NOTIMPL to each one of X that is not
/// overridden. Natively an interface has only what is called, so the name is the interface itself.

#include "platform/browser.h"
#include "platform/html.h"

#ifdef _WIN32

#include "platform/generated/html_not_implemented.h"  // By cmake/not_implemented.py.

#else

namespace platform {

template <class Interface>
using NotImplemented = Interface;

}  // namespace platform

#endif
