#include "options/advanced_options_panel.h"

#include <algorithm>
#include <iterator>

#include "foundation/module_folder.h"
#include "options/bindings.h"
#include "platform/controls.h"
#include "platform/dialogs.h"
#include "resources/resource_ids.h"
#include "settings/vocabularies.h"

namespace {

constexpr std::int32_t kWidest = 5000;  // Pixels.
constexpr std::int32_t kFirstWidth = 10;

constexpr CheckBinding kChecks[] = {
    {QVD_CHECK_RUN, SettingFieldOf<&ConversionSettings::RunPDFApp>},
    {QVD_RADIO_CUSTOM_APP, SettingFieldOf<&RunAppSettings::UseCustomApp>},
};
constexpr TextBinding kTexts[] = {
    {QVD_EDIT_APP_PATH, SettingFieldOf<&RunAppSettings::AppPath>},
    {QVD_EDIT_APP_PARAMETERS, SettingFieldOf<&RunAppSettings::AppParameters>},
};
constexpr ListBinding kLists[] = {
    {QVD_LIST_COMPRESSION, SettingFieldOf<&ConversionSettings::CompressionLevel>},
};

/// Does nothing: its presence alone keeps the dialog in the form that hooks are for.
UINT_PTR CALLBACK PassOver(HWND, UINT, WPARAM, LPARAM) noexcept { return 0; }

}  // namespace

AdvancedOptionsPanel::AdvancedOptionsPanel() noexcept
    : OptionPage(QVD_DIALOG_ADVANCED_PANEL, TabTexture::Yes) {}

void AdvancedOptionsPanel::OnInit() noexcept {
    targetWidth_.Attach(GetDlgItem(Window, QVD_EDIT_TARGET_WIDTH));
    targetWidth_.SetUpDown(GetDlgItem(Window, QVD_UP_DOWN_TARGET_WIDTH), QVD_UP_DOWN_TARGET_WIDTH);
    targetWidth_.Configure(0, kWidest, kFirstWidth, 1, 1, 1);
    LimitTexts(Window, kTexts);
}

void AdvancedOptionsPanel::Show(ConversionSettings& settings) noexcept {
    ShowFields(Window, kChecks, settings);
    SetChecked(Window, QVD_RADIO_DEFAULT_APP, !settings.RunApp->UseCustomApp);
    ShowFields(Window, kTexts, settings);
    targetWidth_.SetValue(
        static_cast<std::int32_t>(std::min(settings.WebPageTargetWidth, std::uint32_t{kWidest})));
    FillListFrom(Window, QVD_LIST_SPECIFICATION, PdfVersionTable);
    SelectRow(Window, QVD_LIST_SPECIFICATION,
              static_cast<std::uint32_t>(PdfVersionRowOf(settings.PDFSpecification)));
    FillList(Window, QVD_LIST_COMPRESSION, CompressionLevelTable);
    ShowFields(Window, kLists, settings);
    ApplyEnabling();
}

void AdvancedOptionsPanel::Store(ConversionSettings& settings) noexcept {
    StoreFields(Window, kChecks, settings);
    StoreFields(Window, kTexts, settings);
    targetWidth_.TakeInText();
    settings.WebPageTargetWidth = static_cast<std::uint32_t>(targetWidth_.Value());
    const std::uint32_t version = SelectedRow(Window, QVD_LIST_SPECIFICATION, 0xFFFFFFFF);
    if (version < std::size(PdfVersionTable)) {
        settings.PDFSpecification = PdfVersionTable[version].code;
    }
    StoreFields(Window, kLists, settings);
}

bool AdvancedOptionsPanel::OnCommand(int id, UINT code) noexcept {
    if (code != BN_CLICKED) return false;
    switch (id) {
        case QVD_CHECK_RUN:
        case QVD_RADIO_DEFAULT_APP:
        case QVD_RADIO_CUSTOM_APP:
            ApplyEnabling();
            return true;
        case QVD_BUTTON_BROWSE:
            Browse();
            return true;
        default:
            return false;
    }
}

void AdvancedOptionsPanel::ApplyEnabling() noexcept {
    const bool runs = IsChecked(Window, QVD_CHECK_RUN);
    constexpr int kChoice[] = {QVD_RADIO_DEFAULT_APP, QVD_RADIO_CUSTOM_APP};
    EnableControls(Window, kChoice, runs);
    constexpr int kApplication[] = {QVD_EDIT_APP_PATH, QVD_EDIT_APP_PARAMETERS, QVD_BUTTON_BROWSE};
    EnableControls(Window, kApplication, runs && !IsChecked(Window, QVD_RADIO_DEFAULT_APP));
}

void AdvancedOptionsPanel::Browse() noexcept {
    WCHAR path[MAX_PATH] = {};
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = Window;
    dialog.hInstance = ModuleInstance();
    dialog.lpstrFilter = TEXT("Applications (*.exe)\0*.exe\0");
    dialog.lpstrFile = path;
    dialog.nMaxFile = static_cast<DWORD>(std::size(path));
    dialog.lpstrDefExt = TEXT("exe");
    dialog.Flags = OFN_EXPLORER | OFN_ENABLESIZING | OFN_ENABLEHOOK;
    dialog.lpfnHook = PassOver;
    if (GetOpenFileNameW(&dialog)) SetDlgItemTextW(Window, QVD_EDIT_APP_PATH, path);
}
