#pragma once

#include "options/spin_number.h"
#include "platform/user.h"

/// A field for one number: an edit control and the up-down control that belongs to it. It lives on
/// the thread of the windows, and may end before or after them. Nothing takes in what was typed but
/// the operations that say so. Without an edit it is a number only.
class NumericSpinEdit {
public:
    NumericSpinEdit() noexcept = default;
    ~NumericSpinEdit();
    NumericSpinEdit(const NumericSpinEdit&) = delete;
    NumericSpinEdit& operator=(const NumericSpinEdit&) = delete;

    /// Has this object see what is sent to the edit, so that the up-down's clicks reach it.
    void Attach(HWND edit) noexcept;
    /// \param id  By which the up-down's clicks are told from others.
    void SetUpDown(HWND upDown, UINT id) noexcept;

    /// Sets the range, the value within it and how it is shown, and shows it. See SpinNumber.
    void Configure(std::int32_t minimum, std::int32_t maximum, std::int32_t value,
                   std::int32_t numerator, std::int32_t denominator,
                   std::uint32_t decimals) noexcept;
    /// Shows another value, brought into the range.
    void SetValue(std::int32_t value) noexcept;
    /// Takes in the text as it was meant, then shows the value in another unit.
    void SetRatio(std::int32_t numerator, std::int32_t denominator,
                  std::uint32_t decimals) noexcept;

    /// Makes the value that of the text, which stays. When memory does not suffice for the text the
    /// value stays, too.
    void TakeInText() noexcept;
    [[nodiscard]] std::int32_t Value() const noexcept { return number_.Value; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR id, DWORD_PTR self) noexcept;
    /// \param notification  An NMUPDOWN. \return whether the click was this object's.
    bool OnClick(LPARAM notification) noexcept;
    void Show() noexcept;
    void SetPosition() const noexcept;

    HWND Edit = nullptr;
    HWND UpDown = nullptr;
    UINT UpDownId = 0;
    SpinNumber number_;
};
