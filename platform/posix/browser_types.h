#pragma once

#include "platform/posix/variant_types.h"

struct IWebBrowser2 : IDispatch {
    /// The document of the page shown; S_FALSE or a failure, and null, while there is none.
    virtual HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) = 0;
    /// The page's address; the caller frees it.
    virtual HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) = 0;
    /// The browser's top window.
    virtual HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) = 0;
    /// Shows or hides a toolbar, which is made when it is first shown.
    /// \param classId  Its class as a text in braces (VT_BSTR). \param shows  VT_BOOL.
    /// \param size     Null.
    virtual HRESULT STDMETHODCALLTYPE ShowBrowserBar(VARIANT* classId, VARIANT* shows,
                                                     VARIANT* size) = 0;
};
QVD_INTERFACE_ID(IWebBrowser2, 0xD30C1661, 0xCDAF, 0x11D0,
                 {0x8A, 0x3E, 0x00, 0xC0, 0x4F, 0xC9, 0xE2, 0x6E});
