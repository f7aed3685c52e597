#include "host/com_browser.h"

#include <utility>

#include "host/com_call.h"
#include "host/com_document.h"
#include "platform/com_library.h"

namespace host {

Browser::Browser(std::shared_ptr<PageDocument> page, HWND window, BrowserBars* bars)
    : page_(std::move(page)),
      window_(window),
      bars_(bars),
      events_(platform::MakeObject<EventSource>()) {}

void Browser::ChangeWindowState(bool isInFront) noexcept {
    if (events_) events_->FireWindowStateChanged(isInFront);
}

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

HRESULT STDMETHODCALLTYPE Browser::ShowBrowserBar(VARIANT* classId, VARIANT* shows,
                                                  VARIANT*) noexcept {
    if (!classId || classId->vt != VT_BSTR || !classId->bstrVal) return E_INVALIDARG;
    CLSID id = {};
    if (FAILED(CLSIDFromString(classId->bstrVal, &id))) return E_INVALIDARG;
    if (!bars_) return E_FAIL;
    const bool isShown = !shows || shows->vt != VT_BOOL || shows->boolVal != VARIANT_FALSE;
    return ComCall([&] { return bars_->Show(id, isShown); });
}

HRESULT STDMETHODCALLTYPE Browser::QueryService(REFGUID service, REFIID id,
                                                void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    const bool isKnown = IsEqualGUID(service, platform::kTopLevelBrowserService) ||
                         IsEqualGUID(service, platform::kWebBrowserService);
    return isKnown ? QueryInterface(id, object) : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE Browser::FindConnectionPoint(REFIID id,
                                                       IConnectionPoint** point) noexcept {
    if (!point) return E_POINTER;
    *point = nullptr;
    if (!IsEqualIID(id, platform::kBrowserEvents)) return CONNECT_E_NOCONNECTION;
    if (!events_) return E_OUTOFMEMORY;
    *point = platform::ComPtr<IConnectionPoint>(events_.Get()).Detach();
    return S_OK;
}

}  // namespace host
