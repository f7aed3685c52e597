#pragma once

#include "driver/conversion_job.h"
#include "platform/browser.h"
#include "platform/com_ptr.h"
#include "settings/conversion_settings.h"

/// The container of one browser tab: carries the commands of its toolbar and owns the tab's
/// settings and job. Belongs to the tab's user-interface thread.
class BandWindow {
public:
    HWND Window = nullptr;  ///< Owner of the messages and of the launch; not owned.
    platform::ComPtr<IWebBrowser2> Browser;
    HWND BrowserWindow = nullptr;  ///< Owner of the save dialog; not owned.
    ConversionSettings Settings;
    ConversionJob Job;

    BandWindow() noexcept;

    /// Does what WM_COMMAND with this id asks for: 1 and 0x8011 convert the page, 0x8015 the
    /// selection; any other id does nothing.
    /// \param commandId  The message's whole first parameter.
    /// \param handled    Becomes false: the window's next handler sees the message as well.
    /// \return what Convert gave, or 1; the message's result.
    LRESULT OnCommand(WPARAM commandId, bool& handled) noexcept;

    /// Runs the command to its end; see ConvertCommand::Run. The save dialog lets messages
    /// through: a command that comes while one is under way ends at once with 1.
    LRESULT Convert(int selectionOnly, AUX::WStringView pageUrl) noexcept;

    /// Gives the markup of what is selected in the tab. \return false if nothing is.
    [[nodiscard]] bool CaptureSelection(AUX::WString& output) noexcept;

private:
    bool isConverting_ = false;
};
