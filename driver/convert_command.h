#pragma once

#include "driver/conversion_job.h"
#include "platform/browser.h"
#include "platform/com_ptr.h"
#include "platform/html.h"
#include "settings/conversion_settings.h"

/// The capture operations that a command calls.
struct CaptureOperations {
    bool (*page)(IHTMLDocument2* document, AUX::WStringView pageUrl, AUX::WString& path) noexcept;
    bool (*selection)(IWebBrowser2* browser, AUX::WString& markup) noexcept;

    /// The ones of capture/.
    [[nodiscard]] static const CaptureOperations& Real() noexcept;
};

/// One press of a toolbar button, from the page to a started converter. Lives for one command, on
/// the tab's user-interface thread; the settings and the job are the tab's and outlive it. Says
/// nothing to the user but that the converter is missing or nothing is selected.
class ConvertCommand {
public:
    /// \param browser        May be null: the command ends at once then.
    /// \param window         Owner of the messages and of the launch.
    /// \param browserWindow  Owner of the save dialog; null takes the thread's active window.
    ConvertCommand(IWebBrowser2* browser, HWND window, HWND browserWindow,
                   ConversionSettings& settings, ConversionJob& job,
                   const CaptureOperations& capture = CaptureOperations::Real()) noexcept;

    /// \param selectionOnly  1 converts the selection, any other value the page.
    /// \param pageUrl        The address that the browser shows; empty if it could not be read.
    /// \return 0 once the launch has been tried, whatever it answered; else 1. Of what was made
    ///         before an early end only a storage file whose writing failed stays.
    [[nodiscard]] LRESULT Run(int selectionOnly, AUX::WStringView pageUrl) noexcept;

private:
    [[nodiscard]] platform::ComPtr<IHTMLDocument2> Document() const noexcept;
    void SuggestName(AUX::WString& name) const noexcept;
    void CapturePage(JobItem& item, AUX::WStringView pageUrl) noexcept;
    [[nodiscard]] bool StoreJob() noexcept;
    void ShowMessage(const WCHAR* text, UINT icon) const noexcept;

    platform::ComPtr<IWebBrowser2> browser_;
    HWND window_;
    HWND browserWindow_;
    ConversionSettings& settings_;
    ConversionJob& job_;
    const CaptureOperations& capture_;
    bool protected_ = false;
};
