#pragma once

#include <cstdint>

#include "foundation/wstring.h"

/// Who gives which codes: the categories of the library's Status codes, with the messages that each
/// has of its own. Any thread may call these, also while other static objects are made and
/// destroyed: after the registry's own end no category is known and none is taken.
namespace AUX {

/// One row of a table of messages, in the system's ANSI code page.
struct StatusMessage {
    std::uint32_t code;  // the low 16 bits of a Status
    const char* text;
};

/// Enters a category. The first call also enters the library's own categories, before this one. A
/// category that is there already stays as it is.
/// \param table  `rowCount` messages, searched from the first on; may be null with 0 rows. Table,
///               texts and name are borrowed until the category is taken out.
/// \param name   May be null or empty: the category then has no name of its own.
/// \return false, with the category not entered, when memory runs out.
bool RegisterStatusCategory(std::uint32_t number, const StatusMessage* table,
                            std::uint32_t rowCount, const char* name) noexcept;

/// Takes a category out; an unknown number does nothing.
void UnregisterStatusCategory(std::uint32_t number) noexcept;

namespace status_detail {

/// Gives the message of a category's own table, else of the common table.
/// \return false if there is none; when memory runs out it is true, with an empty text.
bool FindMessage(std::uint32_t category, std::uint32_t code, WString& message) noexcept;

/// Gives the name of a registered category. \return false if it has none; else as FindMessage.
bool FindCategoryName(std::uint32_t category, WString& name) noexcept;

}  // namespace status_detail
}  // namespace AUX
