#pragma once

#include "browser/fine_toolbar.h"
#include "driver/conversion_job.h"
#include "platform/browser.h"
#include "platform/com_ptr.h"
#include "settings/conversion_settings.h"

class QVDIEaddinBHO;

/// The container of one browser tab: a window that shows what lies behind it, holds the toolbar,
/// carries its commands and owns the tab's settings and job. Belongs to the tab's user-interface
/// thread.
class BandWindow {
public:
    HWND Window = nullptr;  ///< Null before Create, and again once the window has ended.
    platform::ComPtr<IWebBrowser2> Browser;
    HWND BrowserWindow = nullptr;  ///< Owner of the save dialog; not owned.
    FineToolbar Toolbar;
    QVDIEaddinBHO* Owner = nullptr;  ///< The object that this is part of.
    ConversionSettings Settings;
    ConversionJob Job;

    BandWindow() noexcept;
    /// Destroys the window that Create made.
    ~BandWindow();
    BandWindow(const BandWindow&) = delete;
    BandWindow& operator=(const BandWindow&) = delete;

    /// Makes the window and the toolbar in it, below `parent`. Where that fails there is no toolbar
    /// and no message. \return true.
    bool Create(HWND parent, IWebBrowser2* browser) noexcept;

    /// Does what WM_COMMAND with this id asks for: 1 and 0x8011 convert the page, 0x8015 the
    /// selection, 0x8014 opens the Options dialog; any other id does nothing.
    /// \param commandId  The message's whole first parameter.
    /// \param handled    Becomes false: the window's next handler sees the message as well.
    /// \return what Convert gave, or 1; the message's result.
    LRESULT OnCommand(WPARAM commandId, bool& handled) noexcept;

    /// Runs the command to its end; see ConvertCommand::Run. The save dialog lets messages
    /// through: a command that comes while one is under way, or while the Options dialog is open,
    /// ends at once with 1.
    LRESULT Convert(int selectionOnly, AUX::WStringView pageUrl) noexcept;

    /// Reads the settings and shows the Options dialog until it ends, with the thread's active
    /// window disabled. Does nothing while a command is under way, or when the settings cannot be
    /// had whole: OK would store what is left of them.
    void ShowOptions() noexcept;

    /// Gives the markup of what is selected in the tab. \return false if nothing is.
    [[nodiscard]] bool CaptureSelection(AUX::WString& output) noexcept;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam,
                                      LPARAM lParam) noexcept;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    void OnSize() noexcept;
    void OnPaint() noexcept;
    void OnDestroy() noexcept;

    bool ownsWindow_ = false;
    bool isBusy_ = false;  ///< A command is under way that lets messages through.
};
