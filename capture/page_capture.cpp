#include "capture/page_capture.h"

#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "capture/characters.h"
#include "foundation/paths.h"
#include "foundation/temp_location.h"
#include "foundation/urls.h"
#include "foundation/utf8.h"
#include "platform/com_ptr.h"
#include "platform/files.h"
#include "platform/scope_exit.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "platform/urls.h"

namespace {

using platform::ComPtr;
using platform::UniqueBstr;
using platform::UniqueVariant;

constexpr AUX::WStringView kDocumentType = TEXT("<!DOCTYPE HTML>");
constexpr std::uint32_t kSheetPathUnits = 288;
constexpr DWORD kUrlUnits = 2084;
constexpr std::size_t kMarkBytes = 3;

AUX::WStringView ViewOf(const UniqueBstr& text) noexcept {
    return {text.Get(), SysStringLen(text.Get())};
}

bool IsSameText(AUX::WStringView a, AUX::WStringView b) noexcept {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (ToLowerAscii(a[i]) != ToLowerAscii(b[i])) return false;
    }
    return true;
}

/// \return false only if memory ran out.
bool Resolve(const AUX::WString& base, AUX::WStringView url, AUX::WString& output) noexcept {
    AUX::WString urlText;
    if (!urlText.Assign(url)) return false;
    if (AUX::CombineUrl(base.Text(), urlText.Text(), output)) return true;
    output = std::move(urlText);
    return true;
}

ComPtr<IHTMLStyleSheet> StyleSheetAt(IHTMLStyleSheetsCollection& sheets,
                                     std::int32_t index) noexcept {
    UniqueVariant number(index);
    UniqueVariant item;
    if (FAILED(sheets.item(number.Change(), item.Put()))) return {};
    if (item.Get().vt != VT_DISPATCH &&
        FAILED(VariantChangeType(item.Change(), item.Change(), 0, VT_DISPATCH))) {
        return {};
    }
    return ComPtr<IDispatch>(item.Get().pdispVal).As<IHTMLStyleSheet>();
}

/// The root element's markup. \return false if there is no body, no root or no markup.
bool ReadMarkup(IHTMLDocument2& document, UniqueBstr& markup) noexcept {
    ComPtr<IHTMLElement> body;
    if (FAILED(document.get_body(body.Put())) || !body) return false;
    ComPtr<IHTMLElement> root;
    if (FAILED(body->get_parentElement(root.Put())) || !root) return false;
    return SUCCEEDED(root->get_outerHTML(markup.Put())) && markup;
}

}  // namespace

PageCapture::~PageCapture() {
    for (StyleSheetEntry* sheet : StyleSheets) delete sheet;
}

bool PageCapture::Capture(IHTMLDocument2* document, AUX::WStringView pageUrl,
                          AUX::WString& outputPath) noexcept {
    if (!document || !BaseUrl.Assign(pageUrl)) return false;
    AUX::WString stem;
    if (!AUX::GetTempFolder(TempFolder)) return false;
    if (!AUX::MakeUniqueFileName(TempFolder, TEXT("qvd_"), TEXT("html"), MainFile, &stem)) {
        return false;
    }
    if (!ResourceFolder.Assign(TempFolder) || !ResourceFolder.Append(stem) ||
        !ResourceFolder.Append(TEXT("_files\\"))) {
        return false;
    }
    if (AUX::IsFailure(AUX::CreateDirectoryTree(ResourceFolder.Text()))) return false;
    if (!outputPath.Assign(MainFile)) return false;
    UniqueBstr markup;
    if (!ReadMarkup(*document, markup)) return false;
    CollectStyleSheets(document);
    return WriteMainFile(ViewOf(markup));
}

void PageCapture::CollectStyleSheets(IHTMLDocument2* document) noexcept {
    ComPtr<IHTMLStyleSheetsCollection> sheets;
    std::remove_pointer_t<PLONG> count = 0;
    if (FAILED(document->get_styleSheets(sheets.Put())) || !sheets) return;
    if (FAILED(sheets->get_length(&count))) return;
    for (std::int32_t index = 0; index < count; ++index) {
        const auto sheet = StyleSheetAt(*sheets, index);
        if (sheet) (void)CollectStyleSheet(*sheet);  // One that does not fit is left out.
    }
}

bool PageCapture::CollectStyleSheet(IHTMLStyleSheet& sheet) noexcept {
    UniqueBstr href;
    if (FAILED(sheet.get_href(href.Put())) || !href) return false;
    UniqueBstr text;
    if (FAILED(sheet.get_cssText(text.Put()))) text.Reset();
    std::unique_ptr<StyleSheetEntry> entry(new (std::nothrow) StyleSheetEntry);
    if (!entry || !Resolve(BaseUrl, ViewOf(href), entry->Url)) return false;
    if (!entry->CssText.Assign(ViewOf(text)) || !StyleSheets.Add(entry.get())) return false;
    (void)entry.release();  // The array's now.
    return true;
}

bool PageCapture::ResolveImage(AUX::WStringView url, AUX::WString& output) noexcept {
    return Resolve(BaseUrl, url, output);
}

bool PageCapture::ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept {
    return Resolve(BaseUrl, url, output);
}

bool PageCapture::ResolveStyleUrl(AUX::WStringView base, AUX::WStringView url,
                                  AUX::WString& output) noexcept {
    AUX::WString terminated;
    return terminated.Assign(base) && Resolve(terminated, url, output);
}

bool PageCapture::ResolveLink(AUX::WStringView href, AUX::WStringView type,
                              AUX::WString& output) noexcept {
    AUX::WString written;
    if (!written.Assign(href)) return false;
    if (!AUX::CombineUrl(BaseUrl.Text(), written.Text(), output)) {
        output = std::move(written);
        return true;
    }
    if (!IsSameText(type, TEXT("text/css"))) return true;
    StyleSheetEntry* const sheet = FindStyleSheet(output);
    if (!sheet || sheet->CssText.IsEmpty()) return true;
    if (sheet->LocalUrl.IsEmpty() && !MakeLocal(*sheet)) return true;
    (void)output.Assign(sheet->LocalUrl);  // Without memory the absolute address stays.
    return true;
}

PageCapture::StyleSheetEntry* PageCapture::FindStyleSheet(AUX::WStringView url) const noexcept {
    for (StyleSheetEntry* sheet : StyleSheets) {
        if (IsSameText(sheet->Url, url)) return sheet;
    }
    return nullptr;
}

bool PageCapture::MakeLocal(StyleSheetEntry& sheet) noexcept {
    WCHAR name[kSheetPathUnits];
    if (GetTempFileNameW(ResourceFolder.Text(), TEXT("c"), 0, name) == 0) return false;
    StyleRewriter rewriter;
    if (!rewriter.Rewrite(sheet.Url, sheet.CssText, *this)) return false;
    sheet.CssText = std::move(rewriter.Splicer.Output);
    if (!WriteTextFile(sheet.CssText.Text(), sheet.CssText.Length(), name, true)) return false;
    WCHAR url[kUrlUnits];
    DWORD units = kUrlUnits;
    return SUCCEEDED(UrlCreateFromPathW(name, url, &units, 0)) && sheet.LocalUrl.Assign(url);
}

bool PageCapture::WriteMainFile(AUX::WStringView markup) noexcept {
    MarkupRewriter rewriter;
    if (!rewriter.Rewrite(BaseUrl, markup, *this, *this)) return false;
    AUX::WString text;
    if (!text.Assign(kDocumentType) || !text.Append(rewriter.Splicer.Output)) return false;
    rewriter.Splicer.Output.Free();
    return WriteTextFile(text.Text(), text.Length(), MainFile.Text(), false);
}

bool PageCapture::WriteTextFile(const WCHAR* text, std::int64_t length, const WCHAR* path,
                                bool dropByteOrderMark) noexcept {
    const std::size_t size = AUX::EncodeUtf8(text, length, nullptr, 0, true);
    if (size > std::numeric_limits<DWORD>::max()) return false;
    const std::size_t dropped = dropByteOrderMark && size >= kMarkBytes ? kMarkBytes : 0;
    char* const bytes = static_cast<char*>(AUX::Alloc(size));
    const platform::ScopeExit freed([bytes]() noexcept { AUX::Free(bytes); });
    if (!bytes && size > 0) return false;
    (void)AUX::EncodeUtf8(text, length, bytes, size, true);  // The size is the one counted.
    const platform::FileHandle file(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file && WriteFile(file.Get(), bytes ? bytes + dropped : "",
                             static_cast<DWORD>(size - dropped), &written, nullptr);
}
