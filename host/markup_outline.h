#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/text.h"

namespace host {

/// Where one element stands in its markup, counted in UTF-16 units from the start.
struct OutlineElement {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    platform::WideString name;   // in small letters
    std::size_t open = 0;        // its start tag's '<'
    std::size_t content = 0;     // behind the start tag
    std::size_t contentEnd = 0;  // before the end tag, if there is one
    std::size_t end = 0;         // behind the element
    std::size_t parent = kNone;  // the index of the element around it
};

/// The elements of a markup in their order. An element whose end tag is missing ends with the one
/// around it, or with the markup.
std::vector<OutlineElement> ReadOutline(platform::WideView markup);

/// Where the value of an attribute stands in a tag, quotes included; empty right behind the name
/// if it has none.
struct AttributePlace {
    std::size_t start = 0;
    std::size_t end = 0;
    platform::WideString value;  // references resolved
};

/// Finds an attribute. \param name  In small letters.
std::optional<AttributePlace> FindAttributePlace(platform::WideView tag, platform::WideView name);

/// The tag with another value for the attribute, or with the attribute if it has none.
platform::WideString SetTagAttribute(platform::WideView tag, platform::WideView name,
                                     platform::WideView value);

/// The text of a stretch of markup as a reader sees it: no tags, scripts or styles, references
/// resolved, blanks collapsed.
platform::WideString TextOfMarkup(platform::WideView markup);

/// Whether an element's start tag matches a selector: `name`, `#id`, `.class` or `name#id`,
/// `name.class`, in UTF-16. "*" is any name.
bool MatchesSelector(platform::WideView elementName, platform::WideView tag,
                     platform::WideView selector);

}  // namespace host
