#pragma once

#include "foundation/wstring.h"
#include "platform/html.h"

/// Makes a copy of a loaded page in the temporary folder. Lives for one capture.
class PageCapture {
public:
    /// Copies the page. This build makes no copies: it always gives false, and the page goes to
    /// the converter by its address.
    /// \param pageUrl     The page's address, the base of the relative ones in it.
    /// \param outputPath  Gets the copy's path; unchanged when false is given.
    [[nodiscard]] bool Capture(IHTMLDocument2* document, AUX::WStringView pageUrl,
                               AUX::WString& outputPath) noexcept;
};
