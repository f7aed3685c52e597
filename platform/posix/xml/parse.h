#pragma once

#include <libxml/tree.h>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace platform::xml {

/// What was wrong; the code is S_OK if nothing was.
struct ParseFault {
    HRESULT code = S_OK;
    WideString reason;
    LONG line = 0;  ///< Counted from 1.
};

enum class Encoding { AsTold, Utf8 };

/// Parses a document. \return null, with the fault told, if it is not well-formed or has a type.
xmlDoc* Parse(std::string_view bytes, Encoding encoding, ParseFault& fault);

}  // namespace platform::xml
