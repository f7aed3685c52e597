#include "host/com_selection.h"

#include <utility>

#include "host/com_call.h"

namespace host {

using platform::MakeObject;

SelectionObject::SelectionObject(std::shared_ptr<PageDocument> page) noexcept
    : page_(std::move(page)) {}

HRESULT STDMETHODCALLTYPE SelectionObject::createRange(IDispatch** range) noexcept {
    if (!range) return E_POINTER;
    *range = nullptr;
    return ComCall([&]() -> HRESULT {
        PageSelection selection;
        if (!page_->Selection(selection)) return E_FAIL;
        if (selection.kind == PageSelection::Kind::Controls) {
            return GiveObject(MakeObject<ControlRange>(), range);
        }
        return GiveObject(MakeObject<TextRange>(page_), range);
    });
}

TextRange::TextRange(std::shared_ptr<PageDocument> page) noexcept : page_(std::move(page)) {}

HRESULT STDMETHODCALLTYPE TextRange::get_htmlText(BSTR* markup) noexcept {
    return Read(&PageSelection::markup, markup);
}

HRESULT STDMETHODCALLTYPE TextRange::get_text(BSTR* text) noexcept {
    return Read(&PageSelection::text, text);
}

/// An empty text is null.
HRESULT TextRange::Read(platform::WideString PageSelection::*part, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    return ComCall([&]() -> HRESULT {
        PageSelection selection;
        if (!page_->Selection(selection)) return E_FAIL;
        return (selection.*part).empty() ? S_OK : GiveText(selection.*part, text);
    });
}

}  // namespace host
