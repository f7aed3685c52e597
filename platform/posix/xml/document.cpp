#include "platform/posix/xml/document.h"

#include "platform/com_library.h"
#include "platform/posix/xml/nodes.h"
#include "platform/posix/xml/parse.h"
#include "platform/xml.h"

namespace platform {

namespace xml {

namespace {

class ParseError final : public ComObject<IXMLDOMParseError> {
public:
    explicit ParseError(const ParseFault& fault) : fault_(fault) {}

    HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) noexcept override {
        if (!code) return E_INVALIDARG;
        *code = fault_.code;
        return fault_.code == S_OK ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) noexcept override {
        if (!reason) return E_INVALIDARG;
        *reason = SysAllocString(fault_.reason.c_str());
        return *reason ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE get_line(LONG* line) noexcept override {
        if (!line) return E_INVALIDARG;
        *line = fault_.line;
        return S_OK;
    }

private:
    ParseFault fault_;
};

/// Reads a stream to its end.
HRESULT ReadAll(IStream& stream, std::string& bytes) {
    constexpr ULONG kPiece = 65536;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + kPiece);
        ULONG done = 0;
        const HRESULT result = stream.Read(bytes.data() + before, kPiece, &done);
        if (FAILED(result)) return result;
        if (done > kPiece) return E_FAIL;
        bytes.resize(before + done);
        if (done == 0) return S_OK;
    }
}

bool HasLoneSurrogate(WideView text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0xD800 || text[i] > 0xDFFF) continue;
        const bool isPair = text[i] < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                            text[i + 1] <= 0xDFFF;
        if (!isPair) return true;
        ++i;
    }
    return false;
}

class Document final : public NodeObject<IXMLDOMDocument2> {
public:
    HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL) noexcept override { return S_OK; }

    HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT) noexcept override {
        if (!name) return E_INVALIDARG;
        const WideView asked(name);
        return asked == TEXT("ProhibitDTD") || asked == TEXT("SelectionLanguage") ? S_OK : E_FAIL;
    }

    HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* isLoaded) noexcept override {
        if (!isLoaded) return E_POINTER;
        *isLoaded = VARIANT_FALSE;
        ComPtr<IStream> stream;
        if (source.vt != VT_UNKNOWN || !source.punkVal || FAILED(QueryFor(source.punkVal, stream)))
            return E_INVALIDARG;
        std::string bytes;
        const HRESULT result = ReadAll(*stream, bytes);
        if (SUCCEEDED(result)) return Take(bytes, Encoding::AsTold, isLoaded);
        Empty({result, TEXT("The stream cannot be read."), 0});
        return S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE loadXML(BSTR text, VARIANT_BOOL* isLoaded) noexcept override {
        if (!isLoaded) return E_POINTER;
        *isLoaded = VARIANT_FALSE;
        const WideView whole(text ? text : TEXT(""), SysStringLen(text));
        if (!HasLoneSurrogate(whole)) return Take(ToUtf8(whole), Encoding::Utf8, isLoaded);
        Empty({E_FAIL, TEXT("The text has half a character."), 0});
        return S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** error) noexcept override {
        if (!error) return E_INVALIDARG;
        *error = MakeObject<ParseError>(fault_).Detach();
        return *error ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** type) noexcept override {
        if (!type) return E_INVALIDARG;
        *type = nullptr;
        return S_FALSE;
    }

private:
    void Empty(ParseFault fault) {
        place_ = {std::make_shared<Forest>(), nullptr};
        fault_ = std::move(fault);
    }

    HRESULT Take(std::string_view bytes, Encoding encoding, VARIANT_BOOL* isLoaded) {
        ParseFault fault;
        xmlDoc* const tree = Parse(bytes, encoding, fault);
        Empty(std::move(fault));
        if (!tree) return S_FALSE;
        place_.forest->Plant(tree);
        place_.node = reinterpret_cast<xmlNode*>(tree);  // The head of both is the same.
        *isLoaded = VARIANT_TRUE;
        return S_OK;
    }

    ParseFault fault_;
};

class DocumentFactory final : public ComObject<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id,
                                             void** object) noexcept override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const ComPtr<Document> document = MakeObject<Document>();
        return document ? document->QueryInterface(id, object) : E_OUTOFMEMORY;
    }
    /// The module is part of the layer and never goes.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }
};

}  // namespace

}  // namespace xml

HRESULT GetXmlClass(REFCLSID classId, REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (classId != kDomDocument60) return CLASS_E_CLASSNOTAVAILABLE;
    const ComPtr<xml::DocumentFactory> factory = MakeObject<xml::DocumentFactory>();
    return factory ? factory->QueryInterface(id, object) : E_OUTOFMEMORY;
}

}  // namespace platform
