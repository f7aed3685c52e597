#pragma once

/// Bases for classes that stand in for the browser, whose interfaces have up to a hundred
/// operations: platform::NotImplemented<X> answers E_NOTIMPL to each one of X that is not
/// overridden. Written by cmake/not_implemented.py from the headers of the build.

#include "platform/generated/html_not_implemented.h"
