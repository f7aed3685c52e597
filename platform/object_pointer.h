#pragma once

namespace platform {

/// Whether a pointer that is either an object's or a text's is an object's: its first word leads to
/// a table whose first three entries are code of a loaded module. Natively the table lies in a
/// loaded module itself. Null is no object.
/// \param pointer  Null, or readable up to the end of its text or object.
bool IsObjectPointer(const void* pointer) noexcept;

}  // namespace platform
