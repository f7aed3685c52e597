#pragma once

#include <functional>
#include <optional>

#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/text.h"

namespace fake {

/// What the browser answers. The test owns it and may change it between calls.
struct Page {
    platform::WideString address;
    std::optional<platform::WideString> title;  // none: asking for it fails
    bool hasDocument = true;
    bool isHtml = true;              // gives IHTMLDocument2
    bool hasStructure = true;        // gives IHTMLDocument3
    std::optional<LONG> rootHeight;  // none: there is no such element
    std::optional<LONG> bodyHeight;
    bool canMeasure = true;  // elements give IHTMLElement2
    int documentCalls = 0;
    std::function<void()> onTitle = [] {};
};

class Element final : public platform::ComObject<platform::NotImplemented<IHTMLElement>,
                                                 platform::NotImplemented<IHTMLElement2>> {
public:
    Element(const Page& page, LONG height) noexcept : page_(page), height_(height) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        if (!page_.canMeasure && IsEqualIID(id, platform::InterfaceId<IHTMLElement2>())) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return ComObject::QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override {
        *height = height_;
        return S_OK;
    }

private:
    const Page& page_;
    LONG height_;
};

class Document final : public platform::ComObject<platform::NotImplemented<IHTMLDocument2>,
                                                  platform::NotImplemented<IHTMLDocument3>> {
public:
    explicit Document(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        const bool isRefused =
            (!page_.isHtml && IsEqualIID(id, platform::InterfaceId<IHTMLDocument2>())) ||
            (!page_.hasStructure && IsEqualIID(id, platform::InterfaceId<IHTMLDocument3>()));
        if (isRefused) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return ComObject::QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override {
        page_.onTitle();
        *title = nullptr;
        if (!page_.title) return E_FAIL;
        *title = SysAllocStringLen(page_.title->data(), static_cast<UINT>(page_.title->size()));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override {
        return Give(page_.bodyHeight, body);
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override {
        return Give(page_.rootHeight, root);
    }

private:
    HRESULT Give(std::optional<LONG> height, IHTMLElement** element) noexcept {
        *element = nullptr;
        if (!height) return E_FAIL;
        *element = platform::MakeObject<Element>(page_, *height).Detach();
        return S_OK;
    }

    Page& page_;
};

class Browser final : public platform::ComObject<platform::NotImplemented<IWebBrowser2>> {
public:
    explicit Browser(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override {
        ++page_.documentCalls;
        *document = nullptr;
        if (!page_.hasDocument) return E_FAIL;
        IHTMLDocument2* const made = platform::MakeObject<Document>(page_).Detach();
        *document = made;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override {
        *address = nullptr;
        if (page_.address.empty()) return E_FAIL;
        *address = SysAllocString(page_.address.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override {
        *window = 0;
        return E_FAIL;
    }

private:
    Page& page_;
};

}  // namespace fake
