#pragma once

#include <memory>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The document interfaces over one document of a loaded page, which it shares.
class Document final : public platform::ComObject<platform::NotImplemented<IHTMLDocument2>,
                                                  platform::NotImplemented<IHTMLDocument3>> {
public:
    explicit Document(std::shared_ptr<PageDocument> page) noexcept;

    HRESULT STDMETHODCALLTYPE get_all(IHTMLElementCollection** elements) noexcept override;
    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override;
    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override;
    HRESULT STDMETHODCALLTYPE get_selection(IHTMLSelectionObject** selection) noexcept override;
    HRESULT STDMETHODCALLTYPE get_frames(IHTMLFramesCollection2** frames) noexcept override;
    HRESULT STDMETHODCALLTYPE
    get_styleSheets(IHTMLStyleSheetsCollection** sheets) noexcept override;
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override;

private:
    std::shared_ptr<PageDocument> page_;
};

}  // namespace host
