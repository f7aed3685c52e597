#include "host/com_document.h"

#include <utility>

#include "host/com_element.h"

namespace host {
namespace {

/// An element of the given height; a page without it answers S_OK and null, as a browser does.
HRESULT GiveElement(LONG height, IHTMLElement** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (height == kNoElement) return S_OK;
    *result = platform::MakeObject<Element>(height).Detach();
    return *result ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

HRESULT GiveText(const platform::WideString& text, BSTR* result) noexcept {
    if (!result) return E_POINTER;
    *result = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *result ? S_OK : E_OUTOFMEMORY;
}

Document::Document(std::shared_ptr<const DocumentModel> model) noexcept
    : model_(std::move(model)) {}

HRESULT STDMETHODCALLTYPE Document::get_body(IHTMLElement** body) noexcept {
    return GiveElement(model_->bodyHeight, body);
}

HRESULT STDMETHODCALLTYPE Document::get_title(BSTR* title) noexcept {
    return GiveText(model_->title, title);
}

HRESULT STDMETHODCALLTYPE Document::get_documentElement(IHTMLElement** root) noexcept {
    return GiveElement(model_->rootHeight, root);
}

}  // namespace host
