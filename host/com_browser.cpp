#include "host/com_browser.h"

#include <utility>

#include "host/com_document.h"

namespace host {

Browser::Browser(std::shared_ptr<const DocumentModel> model, HWND window) noexcept
    : model_(std::move(model)), window_(window) {}

HRESULT STDMETHODCALLTYPE Browser::get_Document(IDispatch** document) noexcept {
    if (!document) return E_POINTER;
    *document = nullptr;
    if (!model_) return S_FALSE;
    IHTMLDocument2* made = platform::MakeObject<Document>(model_).Detach();
    *document = made;
    return made ? S_OK : E_OUTOFMEMORY;
}

HRESULT STDMETHODCALLTYPE Browser::get_LocationURL(BSTR* address) noexcept {
    return GiveText(model_ ? model_->url : platform::WideString(), address);
}

HRESULT STDMETHODCALLTYPE Browser::get_HWND(SHANDLE_PTR* window) noexcept {
    if (!window) return E_POINTER;
    *window = reinterpret_cast<SHANDLE_PTR>(window_);
    return S_OK;
}

}  // namespace host
