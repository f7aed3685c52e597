#pragma once

#include <string>
#include <vector>

#include "host/addin_list.h"
#include "host/com_browser.h"

namespace host {

/// The bar of a tab in which the toolbars of add-ins lie, one below the other. Lives on the tab's
/// thread.
class BandBar final : public BrowserBars {
public:
    /// \param addins  Borrowed. \param window  The tab's own, in which the bar lies; borrowed.
    BandBar(const AddinList& addins, HWND window) : addins_(addins), tab_(window) {}
    ~BandBar() override { Close(); }
    BandBar(const BandBar&) = delete;
    BandBar& operator=(const BandBar&) = delete;

    /// What finds the services of the bands; borrowed until Close.
    void SetBrowser(Browser* browser) noexcept { browser_ = browser; }

    /// \return REGDB_E_CLASSNOTREG for a class that is not offered as a toolbar, else what making
    ///         its object and giving it its place gave.
    HRESULT Show(REFCLSID classId, bool shows) override;

    /// The window of a class's toolbar; null if it has none.
    [[nodiscard]] HWND WindowOf(REFCLSID classId) const noexcept;
    [[nodiscard]] bool IsShown(REFCLSID classId) const noexcept;

    /// Ends all bands: their windows, their sites, their objects.
    void Close() noexcept;

private:
    struct Band {
        CLSID classId;
        platform::ComPtr<IDeskBand> object;
        HWND window;
        LONG height;  // in pixels
        bool isShown;
    };

    Band* Find(REFCLSID classId) noexcept;
    HRESULT MakeBand(REFCLSID classId);
    bool MakeBar() noexcept;
    void Arrange() noexcept;

    const AddinList& addins_;
    HWND tab_;
    HWND bar_ = nullptr;  // made for the first band, ends with the tab's window
    Browser* browser_ = nullptr;
    std::vector<Band> bands_;
};

}  // namespace host
