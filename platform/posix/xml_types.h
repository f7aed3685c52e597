#pragma once

/// XML documents for systems that have libxml2. The module "msxml6.dll" makes them, by its export
/// DllGetClassObject for the class kDomDocument60. All calls on nodes that ever were in one tree
/// must come from one thread at a time; the objects may be released by any.

#include "platform/posix/stream_types.h"
#include "platform/posix/variant_types.h"

struct IXMLDOMNode;

/// The type that a document declares.
struct IXMLDOMDocumentType : IUnknown {};

/// Codes of get_errorCode.
inline constexpr HRESULT XML_E_INVALIDATROOTLEVEL = static_cast<HRESULT>(0xC00CE556);
inline constexpr HRESULT XML_E_MISSINGROOT = static_cast<HRESULT>(0xC00CE558);
inline constexpr HRESULT XML_E_ENDTAGMISMATCH = static_cast<HRESULT>(0xC00CE56D);
inline constexpr HRESULT XML_E_DTDPROHIBITED = static_cast<HRESULT>(0xC00CE584);

/// The nodes that a question gave, in the order of the document, as they were then.
struct IXMLDOMNodeList : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
    /// S_FALSE and null behind the last one.
    virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) = 0;
};
QVD_INTERFACE_ID(IXMLDOMNodeList, 0x2933BF82, 0x7B36, 0x11D2,
                 {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60});

struct IXMLDOMNode : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** nodes) = 0;
    /// Moves a node, from another document too, behind the last child of an element.
    /// \param added  May be null.
    /// \return E_INVALIDARG for null and for nodes of others, E_FAIL for what cannot lie here.
    virtual HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* child, IXMLDOMNode** added) = 0;
    /// \param query  XPath 1.0. E_FAIL for one that is none, or has no nodes as its result.
    virtual HRESULT STDMETHODCALLTYPE selectNodes(BSTR query, IXMLDOMNodeList** nodes) = 0;
    /// The first of the nodes; S_FALSE and null if there are none.
    virtual HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR query, IXMLDOMNode** node) = 0;
};
QVD_INTERFACE_ID(IXMLDOMNode, 0x2933BF80, 0x7B36, 0x11D2,
                 {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60});

struct IXMLDOMElement : IXMLDOMNode {
    /// The text as VT_BSTR; S_FALSE and VT_NULL if there is no such attribute.
    virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) = 0;
};
QVD_INTERFACE_ID(IXMLDOMElement, 0x2933BF86, 0x7B36, 0x11D2,
                 {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60});

/// What a parser found wrong.
struct IXMLDOMParseError : IUnknown {
    /// 0 and S_FALSE if nothing; XML_E_... below, E_FAIL for other faults of the text, or the error
    /// of the stream.
    virtual HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) = 0;
    /// Counted from 1.
    virtual HRESULT STDMETHODCALLTYPE get_line(LONG* line) = 0;
};
QVD_INTERFACE_ID(IXMLDOMParseError, 0x3EFAA426, 0x272F, 0x11D2,
                 {0x83, 0x6F, 0x00, 0x00, 0xF8, 0x7A, 0x77, 0x82});

struct IXMLDOMDocument2 : IXMLDOMNode {
    /// Documents are always loaded before the call returns.
    virtual HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) = 0;
    /// There is nothing to validate by, as no document may have a type.
    virtual HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidated) = 0;
    /// "ProhibitDTD", which is always on; "SelectionLanguage", always "XPath". E_FAIL for others.
    virtual HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT value) = 0;
    /// Loads from an IStream (VT_UNKNOWN), to its end. What was there is gone, whatever comes.
    /// \return S_FALSE and VARIANT_FALSE if the text is not well-formed, has a document type, nests
    ///         more than 256 deep, or the stream fails: get_parseError tells.
    virtual HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* isLoaded) = 0;
    /// The same from a text, whatever encoding it says that it has.
    virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR text, VARIANT_BOOL* isLoaded) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** error) = 0;
    /// S_FALSE and null: no document has a type here.
    virtual HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** type) = 0;
};
QVD_INTERFACE_ID(IXMLDOMDocument2, 0x2933BF95, 0x7B36, 0x11D2,
                 {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60});
