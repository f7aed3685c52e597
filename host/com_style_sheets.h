#pragma once

#include <vector>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The style sheets that a document had when it was asked.
class StyleSheetsCollection final
    : public platform::ComObject<platform::NotImplemented<IHTMLStyleSheetsCollection>> {
public:
    explicit StyleSheetsCollection(std::vector<PageStyleSheet> sheets) noexcept;

    HRESULT STDMETHODCALLTYPE get_length(LONG* length) noexcept override;
    HRESULT STDMETHODCALLTYPE item(VARIANT* index, VARIANT* sheet) noexcept override;

private:
    std::vector<PageStyleSheet> sheets_;
};

class StyleSheet final : public platform::ComObject<platform::NotImplemented<IHTMLStyleSheet>> {
public:
    explicit StyleSheet(PageStyleSheet sheet) noexcept;

    HRESULT STDMETHODCALLTYPE get_href(BSTR* address) noexcept override;
    HRESULT STDMETHODCALLTYPE get_cssText(BSTR* text) noexcept override;

private:
    PageStyleSheet sheet_;
};

}  // namespace host
