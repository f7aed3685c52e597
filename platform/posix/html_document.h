#pragma once

#include "platform/posix/com_types.h"

struct IHTMLElement;

/// A document without the element asked for answers S_OK and null.

struct IHTMLDocument2 : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) = 0;
    /// The title; the caller frees it.
    virtual HRESULT STDMETHODCALLTYPE get_title(BSTR* title) = 0;
};
QVD_INTERFACE_ID(IHTMLDocument2, 0x332C4425, 0x26CB, 0x11D0,
                 {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19});

struct IHTMLDocument3 : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) = 0;
};
QVD_INTERFACE_ID(IHTMLDocument3, 0x3050F485, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});
