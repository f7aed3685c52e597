#pragma once

#include "options/advanced_options_panel.h"

/// The page of what a conversion does besides: its own check box, and the panel with the rest.
class AdvancedTab final : public OptionPage {
public:
    AdvancedTab() noexcept;

private:
    void OnInit() noexcept override;
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;

    AdvancedOptionsPanel panel_;
};
