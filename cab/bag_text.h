#pragma once

#include <cstdint>

#include "cab/data_root.h"
#include "foundation/wstring_view.h"
#include "platform/com.h"

/// A bag as JSON text.
namespace AUX::CAB {

/// Flags of ToJson, or'ed together.
inline constexpr std::uint32_t kJsonOmitDefaults = 1;  ///< Leaves items at their default out.
inline constexpr std::uint32_t kJsonValueNames = 2;    ///< Writes numbers that have names as those.

/// Containers below this many others have no text form: such a bag gives E_FAIL, and such a value
/// is refused when a text is read. It is as deep as paths lead, too.
inline constexpr std::uint32_t kMaxTextDepth = 1000;

/// Writes a bag on one line. Takes the bag's lock while it reads the items. Objects and transient
/// items have no text form.
/// \param bag   Null, a bag that is lost, gives E_FAIL.
/// \param text  Gets the text; null if there is nothing to write. E_POINTER if it is null.
/// \return E_OUTOFMEMORY; E_FAIL for a bag nested deeper than kMaxTextDepth.
[[nodiscard]] HRESULT ToJson(DataRoot* bag, std::uint32_t flags, BSTR* text) noexcept;

/// Reads a text into a bag. What the text does not name keeps its value; a value that its item
/// refuses is passed over. Takes the bag's lock while it changes items.
/// \param bag   Null, a bag that is lost, gives E_FAIL.
/// \param text  E_INVALIDARG if its pointer is null.
/// \return E_FAIL if the text is no object: the bag is then as it was. E_OUTOFMEMORY: what was
///         taken up to there stays.
[[nodiscard]] HRESULT FromJson(DataRoot* bag, WStringView text) noexcept;

}  // namespace AUX::CAB
