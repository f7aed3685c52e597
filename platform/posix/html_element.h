#pragma once

#include "platform/posix/variant_types.h"

/// Heights are in pixels; every text is the caller's to free.

struct IHTMLElement : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value, LONG flags) = 0;
    /// Addresses come resolved; VT_NULL for an attribute that is not there.
    virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, LONG flags, VARIANT* value) = 0;
    /// Null for the root.
    virtual HRESULT STDMETHODCALLTYPE get_parentElement(IHTMLElement** parent) = 0;
    /// The element's markup as the page stands now.
    virtual HRESULT STDMETHODCALLTYPE get_outerHTML(BSTR* markup) = 0;
};
QVD_INTERFACE_ID(IHTMLElement, 0x3050F1FF, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

struct IHTMLElement2 : IDispatch {
    /// Height of the element's content, also of what is scrolled out of view.
    virtual HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) = 0;
};
QVD_INTERFACE_ID(IHTMLElement2, 0x3050F434, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

/// Elements in the order of the document.
struct IHTMLElementCollection : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
    /// The element of an index (VT_I4); a second index that differs asks for an element of that
    /// name, which is not answered here.
    virtual HRESULT STDMETHODCALLTYPE item(VARIANT name, VARIANT index, IDispatch** element) = 0;
    /// The collection of those with a tag name (VT_BSTR), whatever its case.
    virtual HRESULT STDMETHODCALLTYPE tags(VARIANT name, IDispatch** elements) = 0;
};
QVD_INTERFACE_ID(IHTMLElementCollection, 0x3050F21F, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});
