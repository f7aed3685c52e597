#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/band_bar.h"
#include "host/page_document.h"
#include "platform/testing.h"

namespace host {

/// One tab of the browser: its window, its browser object, the add-ins in it. Lives on one thread,
/// which uses COM and whose messages are dispatched.
class Tab {
public:
    /// \param addins  Borrowed.
    explicit Tab(const AddinList& addins) : addins_(addins) {}
    /// Closes what is open, in a browser's order: the toolbars, then the helpers, then the window.
    ~Tab();
    Tab(const Tab&) = delete;
    Tab& operator=(const Tab&) = delete;

    /// Makes the tab with its page, and in it each add-in that the browser has.
    /// \return false, and a sentence for the user in `error`, if the add-in has no toolbar then.
    [[nodiscard]] bool Open(std::shared_ptr<PageDocument> page, std::string& error);

    /// Tells the add-ins that the tab is now the one that the user sees, or is not any more.
    void BringToFront() noexcept { browser_->ChangeWindowState(true); }
    void SendToBack() noexcept { browser_->ChangeWindowState(false); }

    /// Presses the toolbar's button, or chooses from its menu.
    /// \param command  What the toolbar then sends.
    /// \param saveAs   The user's answer when asked for a file; nothing asks indeed.
    /// \return what message boxes said meanwhile; all were answered with OK.
    std::vector<platform::WideString> Press(UINT command,
                                            const std::optional<platform::WideString>& saveAs);

    /// Gives the page up. The toolbar, and with it the job, stays.
    void ClosePage() noexcept { browser_->ClosePage(); }

    /// Has the toolbar shown or hidden, as by the browser's menu. \return what the add-in gave.
    HRESULT ShowToolbar(bool shows);
    /// Whether the user sees the toolbar.
    [[nodiscard]] bool ShowsToolbar() const noexcept;

private:
    [[nodiscard]] bool MakeWindow() noexcept;
    HRESULT MakeHelpers(std::string& error);

    const AddinList& addins_;
    HWND window_ = nullptr;
    std::unique_ptr<BandBar> bar_;
    platform::ComPtr<Browser> browser_;
    std::vector<platform::ComPtr<IObjectWithSite>> helpers_;
};

}  // namespace host
