#pragma once

#include "cab/data_item.h"
#include "platform/automation.h"

/// Values of automation as values of items, and back. What is given by reference is read through
/// it, also a VARIANT in a VARIANT.
namespace AUX {

/// The kind of item that takes such a value; None for those that no item takes.
[[nodiscard]] CAB::Kind KindOf(const VARIANT& value) noexcept;

/// Sets an item. Unsigned numbers that don't fit the signed type of their size are taken as the
/// next larger type, so that an item refuses what it can't hold. \return false if the item refuses,
/// no item takes such a value, or memory runs out.
[[nodiscard]] bool PutVariant(CAB::DataItem& item, const VARIANT& value) noexcept;

/// Gives an item's value: numbers and texts as they are, an object counted.
/// \param value  Overwritten; VT_EMPTY after a failure.
/// \return E_FAIL for a stream; E_INVALIDARG for the nil item and for containers, whose value is
///         their face; E_OUTOFMEMORY.
[[nodiscard]] HRESULT GiveVariant(CAB::DataItem& item, VARIANT& value) noexcept;

/// Reads a path: a text, or a number n as "[n]". What is neither is changed to a number, or else to
/// a text. VT_EMPTY, VT_NULL and VT_ERROR, which stands for a missing argument, give an empty path.
/// \return false if it can't be changed, or memory runs out.
[[nodiscard]] bool PathOf(const VARIANT& value, WString& path) noexcept;

/// The text that a VARIANT holds; no data if it holds none.
[[nodiscard]] WStringView TextOf(const VARIANT& value) noexcept;

/// Reads an index. \return false for what can't be changed to a number of 32 bits.
[[nodiscard]] bool IndexOf(const VARIANT& value, LONG& index) noexcept;

/// Whether it is empty, null, or stands for a missing argument.
[[nodiscard]] bool IsMissing(const VARIANT& value) noexcept;

}  // namespace AUX
