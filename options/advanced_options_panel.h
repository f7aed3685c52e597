#pragma once

#include "options/numeric_spin_edit.h"
#include "options/option_page.h"

/// Width of the layout, PDF version, compression, and what runs after a conversion. Neither path
/// nor parameters are examined: the converter gets them as they are.
///
/// A compression in the record that no row has selects none, and stays unless the user chooses one.
/// A version that the list does not have shows, and becomes, the newest.
class AdvancedOptionsPanel final : public OptionPage {
public:
    AdvancedOptionsPanel() noexcept;

private:
    void OnInit() noexcept override;
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;
    bool OnCommand(int id, UINT code) noexcept override;

    void ApplyEnabling() noexcept;
    void Browse() noexcept;

    NumericSpinEdit targetWidth_;
};
