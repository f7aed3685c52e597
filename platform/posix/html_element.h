#pragma once

#include "platform/posix/com_types.h"

/// Heights are in pixels; every text is the caller's to free.

struct IHTMLElement : IDispatch {};
QVD_INTERFACE_ID(IHTMLElement, 0x3050F1FF, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});

struct IHTMLElement2 : IDispatch {
    /// Height of the element's content, also of what is scrolled out of view.
    virtual HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) = 0;
};
QVD_INTERFACE_ID(IHTMLElement2, 0x3050F434, 0x98B5, 0x11CF,
                 {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B});
