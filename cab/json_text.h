#pragma once

#include "cab/json_node.h"

namespace AUX::CAB {

/// Reads a text. Never fails on a bad one: what is not understood becomes a null node, the root
/// too. One pass over the text, which is copied; all below the root waits for its first read.
///
/// Accepts more than RFC 8259: comments (`#` and `//` up to the end of the line, `/* */`), other
/// forms of numbers and escapes, keys without checked quotes; docs/json-text.md lists them.
/// \throws std::bad_alloc also for a text of more than WString::kMaxLength units.
[[nodiscard]] JsonHandle ParseJson(WStringView text);

enum class JsonPlace : std::uint8_t { InObject, InArray };

inline constexpr std::int32_t kJsonCompact = -1;

/// Appends the text of a node.
/// \param indent  kJsonCompact, or the tabs in front of the node in the form with line feeds and
///                tabs, which has the comments too.
/// \param place   InArray: the node's name is not written.
/// \throws std::bad_alloc  `out` is then as it was.
void WriteJson(JsonNode& node, std::int32_t indent, JsonPlace place, WString& out);

}  // namespace AUX::CAB
