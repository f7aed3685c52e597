#pragma once

#include <cstdint>

#include "cab/item_slot.h"
#include "cab/json_node.h"

/// Items as nodes and back. Both throw std::bad_alloc. The bag's lock is held.
namespace AUX::CAB {

/// Writing options, or'ed together.
inline constexpr std::uint32_t TextTyped = 1;         ///< Some kinds get a typed form.
inline constexpr std::uint32_t TextValueNames = 2;    ///< A number that has a name is that name.
inline constexpr std::uint32_t TextOmitDefaults = 4;  ///< Items at their default are left out.

/// A kind that JSON cannot show by itself: written as an object with the keys `.type` and `.value`.
struct TypedForm {
    const WCHAR* name;
    Kind kind;
};
inline constexpr TypedForm kTypedForms[] = {
    {TEXT("double"), Kind::Double},
    {TEXT("stream"), Kind::Stream},
    {TEXT("int64"), Kind::Int64},
};
inline constexpr const WCHAR* kTypeKey = TEXT(".type");
inline constexpr const WCHAR* kValueKey = TEXT(".value");

/// Makes the node of an item.
/// \return false, with `node` unchanged, for an item that has no text form: one that is transient,
///         at its default where those are left out, an object, a stream that cannot be read, a
///         container that had children and lost them all.
/// \throws std::length_error for one that is nested too deep.
[[nodiscard]] bool ItemToNode(DataItem& item, JsonHandle& node, std::uint32_t options);

/// Gives the value of a node to the item at a place, which is made if there is none and it can be.
/// An array grows up to what the text has; elements that take no value leave their places empty.
/// \return whether the value was taken; of a container true, whatever its children gave.
[[nodiscard]] bool NodeToSlot(ItemSlot& slot, JsonNode& node);

}  // namespace AUX::CAB
