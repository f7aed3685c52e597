#pragma once

#include "foundation/wstring.h"
#include "platform/browser.h"
#include "platform/com_ptr.h"
#include "platform/html.h"

/// What the user has selected in a page or its frames. On the thread of the browser's objects.

/// Tells whether the selection is a text range with text. A selected control is none, nor is an
/// insertion point. \param selection  May be null: false.
[[nodiscard]] bool HasTextSelection(IHTMLSelectionObject* selection) noexcept;

/// Finds the first selection with text: of the document itself, else of its frames in their order,
/// each with the frames in it. Frames that the page may not reach are passed over. Changes nothing
/// in the page.
/// \param document   In: where to search; may be null. Out: the document that holds the selection.
/// \param selection  What it holds is released first; null when nothing is found.
/// \return S_OK, or S_FALSE if nothing is found; `document` then stays.
[[nodiscard]] HRESULT FindSelection(platform::ComPtr<IHTMLDocument2>& document,
                                    platform::ComPtr<IHTMLSelectionObject>& selection) noexcept;

/// Gives an attribute of every element of one tag name the value that the browser resolves it to,
/// an absolute address, so that the markup carries it. The page stays so. What fails is left out.
void MakeAttributeAbsolute(IHTMLDocument2* document, const WCHAR* tagName,
                           const WCHAR* attributeName) noexcept;

/// Gives the markup of what is selected in the page or one of its frames, with the addresses of
/// images and anchors made absolute; in the page they stay so.
/// \param output  Unchanged when false is given.
/// \return false if nothing is selected, or its markup cannot be had.
[[nodiscard]] bool CaptureSelection(IWebBrowser2* browser, AUX::WString& output) noexcept;
