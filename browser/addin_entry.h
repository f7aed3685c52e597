#pragma once

#include "platform/com.h"

struct IWebBrowser2;

/// What the host drives: the band of one browser tab. Lives on the thread that made it.
struct IAddinBand : IUnknown {
    /// Does what the band window does on WM_COMMAND with this id as its whole wParam: 1 and 0x8011
    /// convert the page, 0x8015 the selection.
    /// \return what the command gave: 0 once the start of the converter was tried, 1 when it ended
    ///         before, or when the id is none of these.
    virtual LRESULT STDMETHODCALLTYPE OnCommand(UINT commandId) noexcept = 0;

protected:
    ~IAddinBand() = default;  // Objects end through Release.
};
QVD_INTERFACE_ID(IAddinBand, 0x6D0B4C1E, 0x52A7, 0x4F0B,
                 {0x9C, 0x3D, 0x1A, 0x8E, 0x77, 0x40, 0xB2, 0x65});

/// Makes the band of a tab, with the settings and the job of that tab. The module's way in until
/// its class can be made through the class factory.
/// \param browser        The tab's browser; the band takes a reference. Null gives a band whose
///                       commands end at once.
/// \param browserWindow  Owner of the save dialog; may be null.
/// \param band           Receives one reference; null after a failure.
/// \return E_POINTER without `band`, E_OUTOFMEMORY.
extern "C" QVD_EXPORT HRESULT STDMETHODCALLTYPE QvdCreateBand(IWebBrowser2* browser,
                                                              HWND browserWindow,
                                                              IAddinBand** band) noexcept;

/// For callers that look the entry up by its name, "QvdCreateBand".
using QvdCreateBandFunction = HRESULT(STDMETHODCALLTYPE*)(IWebBrowser2*, HWND, IAddinBand**);
