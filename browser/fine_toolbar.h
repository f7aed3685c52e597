#pragma once

#include "platform/browser.h"
#include "platform/com_ptr.h"
#include "platform/controls.h"

class BandWindow;

/// The toolbar control of one band: a button that is drawn from a picture, with an arrow that opens
/// a menu. Belongs to the tab's user-interface thread, and outlives its window.
class FineToolbar {
public:
    HWND Window = nullptr;  ///< Ends with its parent.
    platform::BitmapHandle Picture;
    platform::ComPtr<IWebBrowser2> Browser;  ///< Asked for the selection when the menu opens.
    BandWindow* Band = nullptr;              ///< The one that this belongs to.
    platform::MenuHandle Menu;

    FineToolbar() noexcept = default;
    FineToolbar(const FineToolbar&) = delete;
    FineToolbar& operator=(const FineToolbar&) = delete;

    /// Makes the control, empty and of no size. \return false, with no window, if it cannot be
    /// made.
    [[nodiscard]] bool Create(HWND parent) noexcept;

    /// Has the control lay itself out and paint itself again. Nothing without a window.
    void Relayout() noexcept;

    /// The bottom of the last button, in pixels of the control; 0 without a window.
    [[nodiscard]] LONG ButtonsBottom() const noexcept;

private:
    static bool Register() noexcept;
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam,
                                      LPARAM lParam) noexcept;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT Send(UINT message, WPARAM wParam, const void* data) const noexcept;
    void SetUp() noexcept;
    /// \return false for a stage that is left to the control; `result` is 0 then.
    [[nodiscard]] bool OnCustomDraw(const NMCUSTOMDRAW& draw, LRESULT& result) const noexcept;
    void DrawPicture(const NMCUSTOMDRAW& draw) const noexcept;
    void OnDropDown(int command) noexcept;
    [[nodiscard]] bool HasSelection() const noexcept;
};

/// Where the button's picture goes.
/// \param item    The button's rectangle in pixels. \param state  Its CDIS_ flags.
/// \param margin  ScreenScale::Margin. \param height  That of the picture in pixels.
[[nodiscard]] RECT PicturePlace(const RECT& item, UINT state, int margin, LONG height) noexcept;
