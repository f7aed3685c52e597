#include "browser/addin_entry.h"

#include "browser/band_window.h"
#include "platform/com_object.h"

namespace {

/// A band for one tab that has no window of its own: its messages belong to the browser's.
class AddinBand final : public platform::ComObject<IAddinBand> {
public:
    AddinBand(IWebBrowser2* browser, HWND browserWindow) noexcept {
        band_.Browser = platform::ComPtr<IWebBrowser2>(browser);
        band_.Window = browserWindow;
        band_.BrowserWindow = browserWindow;
    }

    LRESULT STDMETHODCALLTYPE OnCommand(UINT commandId) noexcept override {
        // The save dialog lets messages through, one of which may give up the last reference.
        const platform::ComPtr<AddinBand> self(this);
        bool handled = false;
        return band_.OnCommand(commandId, handled);
    }

private:
    BandWindow band_;
};

}  // namespace

HRESULT STDMETHODCALLTYPE QvdCreateBand(IWebBrowser2* browser, HWND browserWindow,
                                        IAddinBand** band) noexcept {
    if (!band) return E_POINTER;
    *band = nullptr;
    auto made = platform::MakeObject<AddinBand>(browser, browserWindow);
    if (!made) return E_OUTOFMEMORY;
    *band = made.Detach();
    return S_OK;
}
