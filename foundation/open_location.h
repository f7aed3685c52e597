#pragma once

#include "foundation/array.h"
#include "foundation/wstring.h"

/// Handing locations to the shell. A null text and an empty one are the same. On the thread's own
/// terms: what the shell opens may pump its messages.
namespace AUX {

/// Finds the program that opens a protocol ("http") or an extension (".txt").
/// \param handler  Its path; empty when the result is false. It may own `name`.
[[nodiscard]] bool DefaultHandlerOf(const WCHAR* name, WString& handler) noexcept;

enum class UseBrowser { No, Yes };

/// Opens a location by its handler, with the wait cursor meanwhile. "me@host" is a mail address. A
/// file: address with a fragment, which handlers of files refuse, goes to the handler of "http" if
/// its own fails.
/// \param useBrowser  Yes asks the browser first, and without one opens the location as No does.
/// \return whether the shell took it; false for an empty location and when memory runs out.
[[nodiscard]] bool OpenLocation(const WCHAR* location, UseBrowser useBrowser) noexcept;

enum class NamesAreRelative { No, Yes };

/// Shows items in their folder.
/// \param folder  Blanks, tabs and line ends around it do not count. If nothing is left, the folder
///                of the first name serves, unless names are relative to it. One with a scheme
///                other than FTP is opened as a location; then S_FALSE says that this failed.
/// \param names   Borrowed paths; those that lead nowhere are passed over.
/// \return S_OK; E_INVALIDARG without a folder; E_OUTOFMEMORY; what the shell says.
[[nodiscard]] HRESULT RevealItems(const WCHAR* folder, const Array<const WCHAR*>& names,
                                  NamesAreRelative namesAreRelative) noexcept;

}  // namespace AUX
