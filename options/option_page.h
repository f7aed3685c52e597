#pragma once

#include "platform/user.h"
#include "settings/conversion_settings.h"

/// Whether a page shows the texture of the tab that it lies in, where the system has one.
enum class TabTexture { No, Yes };

/// A child dialog of the Options dialog: the page of a tab, or a panel in a page. It lives on the
/// dialog's thread, and its window ends with the parent; the object may outlive it and be used
/// again. Without a window it shows nothing and changes no setting.
class OptionPage {
public:
    HWND Window = nullptr;  ///< Null before Create, and again once the window has ended.

    OptionPage(const OptionPage&) = delete;
    OptionPage& operator=(const OptionPage&) = delete;

    /// Makes the window, hidden, as a child of `parent`. \return false if it cannot be made.
    bool Create(HWND parent) noexcept;

    /// Fills the controls from the record and keeps it for WriteBack; also on a reset. The record
    /// must outlive the window, and have its shared records.
    void Bind(ConversionSettings& settings) noexcept;

    /// Fills the record of Bind from the controls.
    void WriteBack() noexcept;

    /// Shows it at a corner of its parent's client area, in the size and z order that it has, and
    /// without activating it. \param corner  Pixels.
    void ShowAt(POINT corner) noexcept;

protected:
    /// \param resource  The dialog's id in the module's resources.
    OptionPage(int resource, TabTexture texture) noexcept
        : resource_(resource), texture_(texture) {}
    ~OptionPage() = default;

    /// WM_INITDIALOG: the controls are there, the settings are not.
    virtual void OnInit() noexcept = 0;
    /// Controls from record. There is a window.
    virtual void Show(ConversionSettings& settings) noexcept = 0;
    /// Record from controls. There is a window.
    virtual void Store(ConversionSettings& settings) noexcept = 0;
    /// WM_COMMAND of a control. \return false to have it reflected to the control.
    virtual bool OnCommand(int id, UINT code) noexcept;

    /// Hides the control that stands for a panel. \return its upper left corner in this page's
    /// client area, in pixels.
    [[nodiscard]] POINT TakePlaceHolder(int id) noexcept;

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam,
                                      LPARAM lParam) noexcept;
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    const int resource_;
    const TabTexture texture_;
    ConversionSettings* settings_ = nullptr;
};
