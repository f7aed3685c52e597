#include "host/com_document.h"

#include <utility>

#include "host/com_call.h"
#include "host/com_element.h"
#include "host/com_frames.h"
#include "host/com_selection.h"
#include "host/com_style_sheets.h"

namespace host {

using platform::MakeObject;

Document::Document(std::shared_ptr<PageDocument> page) noexcept : page_(std::move(page)) {}

HRESULT STDMETHODCALLTYPE Document::get_all(IHTMLElementCollection** elements) noexcept {
    if (!elements) return E_POINTER;
    return GiveObject(MakeObject<ElementCollection>(page_), elements);
}

HRESULT STDMETHODCALLTYPE Document::get_body(IHTMLElement** body) noexcept {
    if (!body) return E_POINTER;
    *body = nullptr;
    return ComCall([&] {
        std::shared_ptr<PageElement> element;
        return page_->Body(element) ? GiveElement(std::move(element), body) : E_FAIL;
    });
}

HRESULT STDMETHODCALLTYPE Document::get_title(BSTR* title) noexcept {
    if (!title) return E_POINTER;
    *title = nullptr;
    return ComCall([&] {
        platform::WideString text;
        return page_->Title(text) ? GiveText(text, title) : E_FAIL;
    });
}

HRESULT STDMETHODCALLTYPE Document::get_selection(IHTMLSelectionObject** selection) noexcept {
    if (!selection) return E_POINTER;
    return GiveObject(MakeObject<SelectionObject>(page_), selection);
}

HRESULT STDMETHODCALLTYPE Document::get_frames(IHTMLFramesCollection2** frames) noexcept {
    if (!frames) return E_POINTER;
    *frames = nullptr;
    return ComCall([&]() -> HRESULT {
        std::vector<std::shared_ptr<PageDocument>> inner;
        if (!page_->Frames(inner)) return E_FAIL;
        return GiveObject(MakeObject<FramesCollection>(std::move(inner)), frames);
    });
}

HRESULT STDMETHODCALLTYPE Document::get_styleSheets(IHTMLStyleSheetsCollection** sheets) noexcept {
    if (!sheets) return E_POINTER;
    *sheets = nullptr;
    return ComCall([&]() -> HRESULT {
        std::vector<PageStyleSheet> found;
        if (!page_->StyleSheets(found)) return E_FAIL;
        return GiveObject(MakeObject<StyleSheetsCollection>(std::move(found)), sheets);
    });
}

HRESULT STDMETHODCALLTYPE Document::get_documentElement(IHTMLElement** root) noexcept {
    if (!root) return E_POINTER;
    *root = nullptr;
    return ComCall([&] {
        std::shared_ptr<PageElement> element;
        return page_->Root(element) ? GiveElement(std::move(element), root) : E_FAIL;
    });
}

}  // namespace host
