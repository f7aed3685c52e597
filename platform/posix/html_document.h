#pragma once

#include "platform/posix/variant_types.h"

struct IHTMLElement;
struct IHTMLElementCollection;
struct IHTMLFramesCollection2;
struct IHTMLSelectionObject;
struct IHTMLStyleSheetsCollection;

/// A document without the element or object asked for answers S_OK and null.

struct IHTMLDocument2 : IDispatch {
    /// All elements of the document.
    virtual HRESULT STDMETHODCALLTYPE get_all(IHTMLElementCollection** elements) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) = 0;
    /// The title; the caller frees it.
    virtual HRESULT STDMETHODCALLTYPE get_title(BSTR* title) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_selection(IHTMLSelectionObject** selection) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_frames(IHTMLFramesCollection2** frames) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_styleSheets(IHTMLStyleSheetsCollection** sheets) = 0;
};
QVD_INTERFACE_ID(IHTMLDocument2, 0x332C4425, 0x26CB, 0x11D0,
                 {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19});

struct IHTMLDocument3 : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) = 0;
};
QVD_INTERFACE_ID(IHTMLDocument3, 0x3050F485, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

/// The frames of a window, in the order of the document.
struct IHTMLFramesCollection2 : IDispatch {
    /// A window, by its index (VT_I4).
    virtual HRESULT STDMETHODCALLTYPE item(VARIANT* index, VARIANT* window) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
};
QVD_INTERFACE_ID(IHTMLFramesCollection2, 0x332C4426, 0x26CB, 0x11D0,
                 {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19});

struct IHTMLWindow2 : IHTMLFramesCollection2 {
    /// E_ACCESSDENIED for a document that the page may not reach.
    virtual HRESULT STDMETHODCALLTYPE get_document(IHTMLDocument2** document) = 0;
};
QVD_INTERFACE_ID(IHTMLWindow2, 0x332C4427, 0x26CB, 0x11D0,
                 {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19});

/// What the user has selected in one document.
struct IHTMLSelectionObject : IDispatch {
    /// An IHTMLTxtRange, or a range of controls, which is none.
    virtual HRESULT STDMETHODCALLTYPE createRange(IDispatch** range) = 0;
};
QVD_INTERFACE_ID(IHTMLSelectionObject, 0x3050F25A, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

struct IHTMLTxtRange : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_htmlText(BSTR* markup) = 0;
    /// Null for a range without text.
    virtual HRESULT STDMETHODCALLTYPE get_text(BSTR* text) = 0;
};
QVD_INTERFACE_ID(IHTMLTxtRange, 0x3050F220, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

/// Selected controls; nothing of it is called.
struct IHTMLControlRange : IDispatch {
    // Its operations are not declared.
};
QVD_INTERFACE_ID(IHTMLControlRange, 0x3050F29C, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

/// The style sheets that the document names, without those that these import.
struct IHTMLStyleSheetsCollection : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
    /// A style sheet, by its index (VT_I4).
    virtual HRESULT STDMETHODCALLTYPE item(VARIANT* index, VARIANT* sheet) = 0;
};
QVD_INTERFACE_ID(IHTMLStyleSheetsCollection, 0x3050F37E, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

struct IHTMLStyleSheet : IDispatch {
    /// The address as written; null for a sheet that stands in the document.
    virtual HRESULT STDMETHODCALLTYPE get_href(BSTR* address) = 0;
    /// E_ACCESSDENIED for a sheet that the page may not read.
    virtual HRESULT STDMETHODCALLTYPE get_cssText(BSTR* text) = 0;
};
QVD_INTERFACE_ID(IHTMLStyleSheet, 0x3050F2E3, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});
