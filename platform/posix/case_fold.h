#pragma once

#include "platform/text.h"

namespace platform {

/// Text with the letters of the Latin, Greek, Cyrillic and Armenian scripts (and their full-width
/// and circled forms) turned into capitals, unit by unit, where capital and small letter stand for
/// each other both ways: "ß", "ı" or the final sigma stay, as they do on Windows. The result is
/// stored in the registry's file, so a change of the table is a change of the file's format.
WideString FoldCase(WideView text);

/// The capital of one unit, in the same sense.
[[nodiscard]] WCHAR FoldUnit(WCHAR unit) noexcept;
/// The small letter of one unit.
[[nodiscard]] WCHAR SmallUnit(WCHAR unit) noexcept;

}  // namespace platform
