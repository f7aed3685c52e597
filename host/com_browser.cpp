#include "host/com_browser.h"

#include <utility>

#include "host/com_call.h"
#include "host/com_document.h"

namespace host {

Browser::Browser(std::shared_ptr<PageDocument> page, HWND window) noexcept
    : page_(std::move(page)), window_(window) {}

HRESULT STDMETHODCALLTYPE Browser::get_Document(IDispatch** document) noexcept {
    if (!document) return E_POINTER;
    *document = nullptr;
    if (!page_) return S_FALSE;
    IHTMLDocument2* made = platform::MakeObject<Document>(page_).Detach();
    *document = made;
    return made ? S_OK : E_OUTOFMEMORY;
}

HRESULT STDMETHODCALLTYPE Browser::get_LocationURL(BSTR* address) noexcept {
    if (!address) return E_POINTER;
    *address = nullptr;
    return ComCall(
        [&] { return GiveText(page_ ? page_->Url() : platform::WideString(), address); });
}

HRESULT STDMETHODCALLTYPE Browser::get_HWND(SHANDLE_PTR* window) noexcept {
    if (!window) return E_POINTER;
    *window = reinterpret_cast<SHANDLE_PTR>(window_);
    return S_OK;
}

}  // namespace host
