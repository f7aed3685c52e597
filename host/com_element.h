#pragma once

#include <memory>
#include <vector>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// One element of a loaded page.
class Element final : public platform::ComObject<platform::NotImplemented<IHTMLElement>,
                                                 platform::NotImplemented<IHTMLElement2>> {
public:
    explicit Element(std::shared_ptr<PageElement> element) noexcept;

    HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value, LONG flags) noexcept override;
    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, LONG flags, VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_parentElement(IHTMLElement** parent) noexcept override;
    HRESULT STDMETHODCALLTYPE get_outerHTML(BSTR* markup) noexcept override;
    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override;

private:
    std::shared_ptr<PageElement> element_;
};

/// All elements of a document or, asked by tags(), some of them. What it holds is found at the
/// first question.
class ElementCollection final
    : public platform::ComObject<platform::NotImplemented<IHTMLElementCollection>> {
public:
    explicit ElementCollection(std::shared_ptr<PageDocument> page,
                               platform::WideString tag = TEXT("*")) noexcept;

    HRESULT STDMETHODCALLTYPE get_length(LONG* length) noexcept override;
    HRESULT STDMETHODCALLTYPE item(VARIANT name, VARIANT index,
                                   IDispatch** element) noexcept override;
    HRESULT STDMETHODCALLTYPE tags(VARIANT name, IDispatch** elements) noexcept override;

private:
    bool Find();

    std::shared_ptr<PageDocument> page_;
    platform::WideString tag_;
    std::vector<std::shared_ptr<PageElement>> elements_;
    bool found_ = false;
};

/// An element that is not there answers S_OK and null, as a browser does.
HRESULT GiveElement(std::shared_ptr<PageElement> element, IHTMLElement** result) noexcept;

}  // namespace host
