#pragma once

#include "foundation/basic_string.h"

namespace AUX {

/// The library's owned text of UTF-16 code units. Its operations stand at BasicString.
using WString = BasicString<WCHAR>;

}  // namespace AUX
