#pragma once

#include "cab/json_node.h"

namespace AUX::CAB {

/// Looks at the raw source of a node that was not fetched yet: decodes a string, reads a number,
/// splits an array or object into children that wait for their own fetch. What turns out to be
/// malformed becomes a null. FetchNode spares the call where there is little to do.
/// \throws std::bad_alloc  The node then is as before.
void FetchRawNode(JsonNode& node);

inline void FetchNode(JsonNode& node) {
    if (node.fetched) return;
    if (!node.isPlain) return FetchRawNode(node);
    if (node.type == JsonType::String) {
        ++node.text;
        node.textLength -= 2;
    }
    node.fetched = true;
}

/// Takes the `#`...`#` segments off the front of a piece of stripped text.
/// \return their texts, joined with LF, which lie in the source; null if there are none.
[[nodiscard]] const JsonComment* TakeComments(JsonSource& source, WStringView& piece);

/// Makes a node of the source, not fetched, without a name.
[[nodiscard]] JsonNode* NewParsedNode(JsonSource& source, JsonType type, WStringView raw);

/// Makes a node null.
void BecomeNull(JsonNode& node) noexcept;

}  // namespace AUX::CAB
