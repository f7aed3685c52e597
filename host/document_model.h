#pragma once

#include "platform/text.h"

namespace host {

/// Height of an element that a document lacks.
inline constexpr LONG kNoElement = -1;

/// A loaded page as the document interfaces show it, wherever it came from. Filled once by a
/// backend, then only read.
struct DocumentModel {
    platform::WideString url;      // the address shown, with its fragment
    platform::WideString title;    // as scripts see it: no leading, trailing or doubled blanks
    LONG rootHeight = kNoElement;  // scroll heights in pixels
    LONG bodyHeight = kNoElement;
};

}  // namespace host
