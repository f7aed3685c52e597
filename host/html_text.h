#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

namespace host {

/// What the text backend reads out of a page's markup. It looks for this and nothing else; markup
/// of any kind, cut off anywhere, is taken.
struct HtmlFacts {
    platform::WideString title;  // character references resolved, blanks collapsed
    LONG height = 0;             // pixels: <meta name="page-height">, else an estimate of the text
};

HtmlFacts ReadHtmlFacts(platform::WideView markup);

/// The text of a file: UTF-16 or UTF-8 by its byte order mark, else UTF-8 if it is well-formed,
/// else Windows-1252, which any bytes are. A charset that the markup names does not count.
platform::WideString DecodeFileText(std::string_view bytes);

/// Resolves character references, named ones of HTML 4 that Latin-1 and common punctuation have.
/// What is no reference stays as it is.
platform::WideString DecodeReferences(platform::WideView text);

/// One blank for each run of blanks, none at the ends.
platform::WideString CollapseBlanks(platform::WideView text);

}  // namespace host
