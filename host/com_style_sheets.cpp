#include "host/com_style_sheets.h"

#include <utility>

#include "host/com_call.h"

namespace host {

using platform::MakeObject;

StyleSheetsCollection::StyleSheetsCollection(std::vector<PageStyleSheet> sheets) noexcept
    : sheets_(std::move(sheets)) {}

HRESULT STDMETHODCALLTYPE StyleSheetsCollection::get_length(LONG* length) noexcept {
    if (!length) return E_POINTER;
    *length = static_cast<LONG>(sheets_.size());
    return S_OK;
}

HRESULT STDMETHODCALLTYPE StyleSheetsCollection::item(VARIANT* index, VARIANT* sheet) noexcept {
    if (!index || !sheet) return E_POINTER;
    VariantInit(sheet);
    if (index->vt != VT_I4) return E_INVALIDARG;
    const auto place = static_cast<std::size_t>(index->lVal);
    if (index->lVal < 0 || place >= sheets_.size()) return DISP_E_BADINDEX;
    return ComCall([&]() -> HRESULT {
        IHTMLStyleSheet* const made = MakeObject<StyleSheet>(sheets_[place]).Detach();
        if (!made) return E_OUTOFMEMORY;
        sheet->vt = VT_DISPATCH;
        sheet->pdispVal = made;
        return S_OK;
    });
}

StyleSheet::StyleSheet(PageStyleSheet sheet) noexcept : sheet_(std::move(sheet)) {}

HRESULT STDMETHODCALLTYPE StyleSheet::get_href(BSTR* address) noexcept {
    if (!address) return E_POINTER;
    *address = nullptr;
    return sheet_.href ? GiveText(*sheet_.href, address) : S_OK;
}

HRESULT STDMETHODCALLTYPE StyleSheet::get_cssText(BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    return sheet_.text ? GiveText(*sheet_.text, text) : E_ACCESSDENIED;
}

}  // namespace host
