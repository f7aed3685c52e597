#pragma once

#include "foundation/wstring.h"

/// Asks the user where the PDF is to go.
/// \param owner          Null takes the thread's active window.
/// \param suggestedName  Stands in the name's field; at most 259 characters of it.
/// \param path           Gets the path, with ".pdf" added to a name without extension.
/// \return false if the user cancels, the dialog fails, or memory runs out; `path` is unchanged
/// then.
[[nodiscard]] bool AskOutputFile(HWND owner, AUX::WStringView suggestedName,
                                 AUX::WString& path) noexcept;
