#include "host/com_frames.h"

#include <utility>

#include "host/com_call.h"
#include "host/com_document.h"

namespace host {

using platform::MakeObject;

FramesCollection::FramesCollection(std::vector<std::shared_ptr<PageDocument>> frames) noexcept
    : frames_(std::move(frames)) {}

HRESULT STDMETHODCALLTYPE FramesCollection::item(VARIANT* index, VARIANT* window) noexcept {
    if (!index || !window) return E_POINTER;
    VariantInit(window);
    if (index->vt != VT_I4) return E_INVALIDARG;
    const auto place = static_cast<std::size_t>(index->lVal);
    if (index->lVal < 0 || place >= frames_.size()) return DISP_E_BADINDEX;
    IHTMLWindow2* const made = MakeObject<Window>(frames_[place]).Detach();
    if (!made) return E_OUTOFMEMORY;
    window->vt = VT_DISPATCH;
    window->pdispVal = made;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE FramesCollection::get_length(LONG* length) noexcept {
    if (!length) return E_POINTER;
    *length = static_cast<LONG>(frames_.size());
    return S_OK;
}

Window::Window(std::shared_ptr<PageDocument> page) noexcept : page_(std::move(page)) {}

HRESULT STDMETHODCALLTYPE Window::get_document(IHTMLDocument2** document) noexcept {
    if (!document) return E_POINTER;
    *document = nullptr;
    if (!page_) return E_ACCESSDENIED;
    return GiveObject(MakeObject<Document>(page_), document);
}

}  // namespace host
