#pragma once

#include "options/numeric_spin_edit.h"
#include "options/option_page.h"

/// The page of paper size, orientation, margins and the unit in which they are shown. Its lengths
/// are whole thousandths of a point, whatever the unit. A paper of the list gives width and height,
/// in place of those of the record; the up-downs move them all the same.
///
/// A record whose paper is beyond the list keeps that number, unless the user chooses one; width
/// and height stay as they are then, and their edits are disabled. A unit beyond the list is shown,
/// and stored, as points.
class PdfPageTab final : public OptionPage {
public:
    PdfPageTab() noexcept;

private:
    static constexpr int kLengths = 6;

    void OnInit() noexcept override;
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;
    bool OnCommand(int id, UINT code) noexcept override;

    void ApplyPaper() noexcept;
    void ApplyUnit() noexcept;

    NumericSpinEdit lengths_[kLengths];
};
