#pragma once

#include <functional>
#include <optional>

#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/text.h"

namespace fake {

/// What the browser answers. The test owns it and may change it between calls.
struct Page {
    platform::WideString address;  // empty: asking for it fails
    std::optional<platform::WideString> title;
    bool hasDocument = true;
    std::optional<LONG> rootHeight;  // none: there is no such element
    std::optional<LONG> bodyHeight;
    IID refused = {};  // an interface that no object gives
    std::function<void()> onTitle = [] {};
};

/// An object of the page's that does nothing by itself.
template <class... Interfaces>
class PageObject : public platform::ComObject<platform::NotImplemented<Interfaces>...> {
public:
    explicit PageObject(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        using Base = platform::ComObject<platform::NotImplemented<Interfaces>...>;
        if (!IsEqualIID(id, page_.refused)) return Base::QueryInterface(id, object);
        *object = nullptr;
        return E_NOINTERFACE;
    }

protected:
    Page& page_;
};

class Element final : public PageObject<IHTMLElement, IHTMLElement2> {
public:
    Element(Page& page, LONG height) noexcept : PageObject(page), height_(height) {}

    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override {
        *height = height_;
        return S_OK;
    }

private:
    LONG height_;
};

class Document final : public PageObject<IHTMLDocument2, IHTMLDocument3> {
public:
    using PageObject::PageObject;

    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override {
        page_.onTitle();
        *title = page_.title ? SysAllocString(page_.title->c_str()) : nullptr;
        return *title ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override {
        return Give(page_.bodyHeight, body);
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override {
        return Give(page_.rootHeight, root);
    }

private:
    /// An element that is not there is a success with nothing, as a browser gives it.
    HRESULT Give(std::optional<LONG> height, IHTMLElement** element) noexcept {
        *element = height ? platform::MakeObject<Element>(page_, *height).Detach() : nullptr;
        return S_OK;
    }
};

class Browser final : public PageObject<IWebBrowser2> {
public:
    using PageObject::PageObject;

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override {
        *document = nullptr;
        if (!page_.hasDocument) return E_FAIL;
        IHTMLDocument2* const made = platform::MakeObject<Document>(page_).Detach();
        *document = made;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override {
        *address = page_.address.empty() ? nullptr : SysAllocString(page_.address.c_str());
        return *address ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override {
        *window = 0;
        return E_FAIL;
    }
};

}  // namespace fake
