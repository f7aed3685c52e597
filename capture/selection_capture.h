#pragma once

#include "foundation/wstring.h"
#include "platform/browser.h"

/// Gives the markup of what the user has selected in the page or one of its frames. This build
/// finds no selection: it always gives false, and a command on the selection ends there.
/// \param output  Unchanged when false is given.
[[nodiscard]] bool CaptureSelection(IWebBrowser2* browser, AUX::WString& output) noexcept;
