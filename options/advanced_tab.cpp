#include "options/advanced_tab.h"

#include "options/bindings.h"
#include "resources/resource_ids.h"

namespace {

constexpr CheckBinding kChecks[] = {
    {QVD_CHECK_PAGE_COPY, SettingFieldOf<&ConversionSettings::UseWebPageCopy>},
};

}  // namespace

AdvancedTab::AdvancedTab() noexcept : OptionPage(QVD_DIALOG_ADVANCED, TabTexture::Yes) {}

void AdvancedTab::OnInit() noexcept {
    const POINT place = TakePlaceHolder(QVD_PLACE_HOLDER);
    // Without the panel its settings stay as they are.
    if (panel_.Create(Window)) panel_.ShowAt(place);
}

void AdvancedTab::Show(ConversionSettings& settings) noexcept {
    ShowFields(Window, kChecks, settings);
    panel_.Bind(settings);
}

void AdvancedTab::Store(ConversionSettings& settings) noexcept {
    StoreFields(Window, kChecks, settings);
    panel_.WriteBack();
}
