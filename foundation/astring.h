#pragma once

#include "foundation/basic_string.h"

namespace AUX {

/// The library's owned text of 8-bit characters. Its operations stand at BasicString.
using AString = BasicString<char>;

}  // namespace AUX
