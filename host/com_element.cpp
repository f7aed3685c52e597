#include "host/com_element.h"

#include <utility>

#include "host/com_call.h"

namespace host {

using platform::MakeObject;
using platform::WideString;

HRESULT GiveElement(std::shared_ptr<PageElement> element, IHTMLElement** result) noexcept {
    *result = nullptr;
    if (!element) return S_OK;
    return GiveObject(MakeObject<Element>(std::move(element)), result);
}

Element::Element(std::shared_ptr<PageElement> element) noexcept : element_(std::move(element)) {}

HRESULT STDMETHODCALLTYPE Element::setAttribute(BSTR name, VARIANT value, LONG) noexcept {
    if (!name) return E_INVALIDARG;
    // What getAttribute gives for an attribute that is not there changes nothing.
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return S_OK;
    if (value.vt != VT_BSTR) return E_INVALIDARG;
    return ComCall([&]() -> HRESULT {
        const WideString text(value.bstrVal ? value.bstrVal : TEXT(""),
                              SysStringLen(value.bstrVal));
        return element_->SetAttribute(name, text) ? S_OK : E_FAIL;
    });
}

HRESULT STDMETHODCALLTYPE Element::getAttribute(BSTR name, LONG, VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    VariantInit(value);
    if (!name) return E_INVALIDARG;
    return ComCall([&]() -> HRESULT {
        std::optional<WideString> text;
        if (!element_->Attribute(name, text)) return E_FAIL;
        BSTR given = nullptr;
        if (text && FAILED(GiveText(*text, &given))) return E_OUTOFMEMORY;
        value->vt = text ? VT_BSTR : VT_NULL;
        value->bstrVal = given;
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE Element::get_parentElement(IHTMLElement** parent) noexcept {
    if (!parent) return E_POINTER;
    *parent = nullptr;
    return ComCall([&] {
        std::shared_ptr<PageElement> element;
        return element_->Parent(element) ? GiveElement(std::move(element), parent) : E_FAIL;
    });
}

HRESULT STDMETHODCALLTYPE Element::get_outerHTML(BSTR* markup) noexcept {
    if (!markup) return E_POINTER;
    *markup = nullptr;
    return ComCall([&] {
        WideString text;
        return element_->Markup(text) ? GiveText(text, markup) : E_FAIL;
    });
}

HRESULT STDMETHODCALLTYPE Element::get_scrollHeight(LONG* height) noexcept {
    if (!height) return E_POINTER;
    *height = 0;
    return ComCall([&]() -> HRESULT { return element_->ScrollHeight(*height) ? S_OK : E_FAIL; });
}

ElementCollection::ElementCollection(std::shared_ptr<PageDocument> page,
                                     platform::WideString tag) noexcept
    : page_(std::move(page)), tag_(std::move(tag)) {}

bool ElementCollection::Find() {
    if (!found_) found_ = page_->Elements(tag_, elements_);
    return found_;
}

HRESULT STDMETHODCALLTYPE ElementCollection::get_length(LONG* length) noexcept {
    if (!length) return E_POINTER;
    *length = 0;
    return ComCall([&]() -> HRESULT {
        if (!Find()) return E_FAIL;
        *length = static_cast<LONG>(elements_.size());
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE ElementCollection::item(VARIANT name, VARIANT,
                                                  IDispatch** element) noexcept {
    if (!element) return E_POINTER;
    *element = nullptr;
    if (name.vt != VT_I4) return E_INVALIDARG;
    return ComCall([&]() -> HRESULT {
        if (!Find()) return E_FAIL;
        const auto index = static_cast<std::size_t>(name.lVal);
        if (name.lVal < 0 || index >= elements_.size()) return S_OK;
        IHTMLElement* const made = MakeObject<Element>(elements_[index]).Detach();
        *element = made;
        return made ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT STDMETHODCALLTYPE ElementCollection::tags(VARIANT name, IDispatch** elements) noexcept {
    if (!elements) return E_POINTER;
    *elements = nullptr;
    if (name.vt != VT_BSTR || !name.bstrVal || tag_ != TEXT("*")) return E_INVALIDARG;
    return ComCall([&] {
        return GiveObject(MakeObject<ElementCollection>(page_, WideString(name.bstrVal)), elements);
    });
}

}  // namespace host
