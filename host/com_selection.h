#pragma once

#include <memory>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// What is selected in a document, whenever it is asked.
class SelectionObject final
    : public platform::ComObject<platform::NotImplemented<IHTMLSelectionObject>> {
public:
    explicit SelectionObject(std::shared_ptr<PageDocument> page) noexcept;

    HRESULT STDMETHODCALLTYPE createRange(IDispatch** range) noexcept override;

private:
    std::shared_ptr<PageDocument> page_;
};

/// The selected text. It goes with the selection.
class TextRange final : public platform::ComObject<platform::NotImplemented<IHTMLTxtRange>> {
public:
    explicit TextRange(std::shared_ptr<PageDocument> page) noexcept;

    HRESULT STDMETHODCALLTYPE get_htmlText(BSTR* markup) noexcept override;
    HRESULT STDMETHODCALLTYPE get_text(BSTR* text) noexcept override;

private:
    HRESULT Read(platform::WideString PageSelection::*part, BSTR* text) noexcept;

    std::shared_ptr<PageDocument> page_;
};

/// Selected controls, of which nothing can be asked here.
class ControlRange final : public platform::ComObject<platform::NotImplemented<IHTMLControlRange>> {
};

}  // namespace host
