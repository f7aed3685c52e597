#pragma once

#include <memory>

#include "host/document_model.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The document interfaces over a loaded page. Shares the page, which no one changes any more.
class Document final : public platform::ComObject<platform::NotImplemented<IHTMLDocument2>,
                                                  platform::NotImplemented<IHTMLDocument3>> {
public:
    explicit Document(std::shared_ptr<const DocumentModel> model) noexcept;

    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override;
    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override;
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override;

private:
    std::shared_ptr<const DocumentModel> model_;
};

/// A text for a caller who frees it. \return E_POINTER, E_OUTOFMEMORY.
HRESULT GiveText(const platform::WideString& text, BSTR* result) noexcept;

}  // namespace host
