#include "capture/selection_capture.h"

#include <type_traits>
#include <utility>

#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"

namespace {

using platform::ComPtr;
using platform::UniqueBstr;
using platform::UniqueVariant;

/// The calls' own type of a number: 32 bits, but not the same name on every system.
using Count = std::remove_pointer_t<PLONG>;

ComPtr<IHTMLTxtRange> TextRangeOf(IHTMLSelectionObject* selection) noexcept {
    ComPtr<IDispatch> range;
    if (FAILED(selection->createRange(range.Put()))) return {};
    return range.As<IHTMLTxtRange>();
}

ComPtr<IHTMLDocument2> DocumentOfFrame(IHTMLFramesCollection2& frames, Count index) noexcept {
    UniqueVariant number(index);
    UniqueVariant frame;
    if (FAILED(frames.item(number.Change(), frame.Put()))) return {};
    if (frame.Get().vt != VT_DISPATCH) return {};
    const auto window = ComPtr<IDispatch>(frame.Get().pdispVal).As<IHTMLWindow2>();
    ComPtr<IHTMLDocument2> document;
    if (!window || FAILED(window->get_document(document.Put()))) return {};
    return document;
}

ComPtr<IHTMLElementCollection> ElementsOf(IHTMLDocument2& document, BSTR tagName) noexcept {
    ComPtr<IHTMLElementCollection> all;
    if (FAILED(document.get_all(all.Put())) || !all) return {};
    VARIANT name;
    VariantInit(&name);
    name.vt = VT_BSTR;
    name.bstrVal = tagName;  // Borrowed.
    ComPtr<IDispatch> elements;
    if (FAILED(all->tags(name, elements.Put()))) return {};
    return elements.As<IHTMLElementCollection>();
}

}  // namespace

bool HasTextSelection(IHTMLSelectionObject* selection) noexcept {
    if (!selection) return false;
    const auto range = TextRangeOf(selection);
    UniqueBstr text;
    return range && SUCCEEDED(range->get_text(text.Put())) && text.Get();
}

HRESULT FindSelection(ComPtr<IHTMLDocument2>& document,
                      ComPtr<IHTMLSelectionObject>& selection) noexcept {
    selection.Reset();
    if (!document) return S_FALSE;
    ComPtr<IHTMLFramesCollection2> frames;
    Count count = 0;
    if (FAILED(document->get_frames(frames.Put())) || !frames ||
        FAILED(frames->get_length(&count))) {
        count = 0;
    }
    if (SUCCEEDED(document->get_selection(selection.Put())) && selection &&
        HasTextSelection(selection.Get())) {
        return S_OK;
    }
    for (Count index = 0; index < count; ++index) {
        auto inner = DocumentOfFrame(*frames, index);
        if (!inner) continue;
        selection.Reset();
        if (FindSelection(inner, selection) == S_OK && selection &&
            HasTextSelection(selection.Get())) {
            document = std::move(inner);
            return S_OK;
        }
    }
    selection.Reset();
    return S_FALSE;
}

void MakeAttributeAbsolute(IHTMLDocument2* document, const WCHAR* tagName,
                           const WCHAR* attributeName) noexcept {
    const UniqueBstr tag(SysAllocString(tagName));
    const UniqueBstr attribute(SysAllocString(attributeName));
    if (!tag || !attribute) return;
    const auto elements = ElementsOf(*document, tag.Get());
    Count count = 0;
    if (!elements || FAILED(elements->get_length(&count))) return;
    for (Count index = 0; index < count; ++index) {
        const UniqueVariant number(index);
        ComPtr<IDispatch> item;
        if (FAILED(elements->item(number.Get(), number.Get(), item.Put()))) continue;
        const auto element = item.As<IHTMLElement>();
        if (!element) continue;
        UniqueVariant value;
        // A value that cannot be had is written back as the browser left it.
        (void)element->getAttribute(attribute.Get(), 0, value.Put());
        (void)element->setAttribute(attribute.Get(), value.Get(), 0);
    }
}

bool CaptureSelection(IWebBrowser2* browser, AUX::WString& output) noexcept {
    ComPtr<IDispatch> shown;
    if (!browser || FAILED(browser->get_Document(shown.Put()))) return false;
    auto document = shown.As<IHTMLDocument2>();
    ComPtr<IHTMLSelectionObject> selection;
    if (!document || FindSelection(document, selection) != S_OK || !selection) return false;
    // Before the range is read, so that its markup has the new values.
    MakeAttributeAbsolute(document.Get(), TEXT("IMG"), TEXT("src"));
    MakeAttributeAbsolute(document.Get(), TEXT("a"), TEXT("href"));
    const auto range = TextRangeOf(selection.Get());
    UniqueBstr markup;
    if (!range || FAILED(range->get_htmlText(markup.Put())) || !markup) return false;
    return output.Assign(AUX::WStringView(markup.Get(), SysStringLen(markup.Get())));
}
