#include "options/security_tab.h"

#include "options/bindings.h"
#include "options/security_rules.h"
#include "platform/controls.h"
#include "platform/scope_exit.h"
#include "resources/resource_ids.h"
#include "settings/password_text.h"
#include "settings/vocabularies.h"

namespace {

using Security = SecuritySettings;

constexpr CheckBinding kChecks[] = {
    {QVD_CHECK_SECURITY, SettingFieldOf<&Security::Enabled>},
    {QVD_CHECK_USER_PASSWORD, SettingFieldOf<&Security::HasUserPassword>},
    {QVD_CHECK_OWNER_PASSWORD, SettingFieldOf<&Security::HasOwnerPassword>},
};
constexpr TextBinding kPasswords[] = {
    {QVD_EDIT_USER_PASSWORD, SettingFieldOf<&Security::UserPassword>},
    {QVD_EDIT_OWNER_PASSWORD, SettingFieldOf<&Security::OwnerPassword>},
};
constexpr ListBinding kLevel = {QVD_LIST_LEVEL, SettingFieldOf<&Security::Type>};

}  // namespace

SecurityTab::SecurityTab() noexcept : OptionPage(QVD_DIALOG_SECURITY, TabTexture::Yes) {}

void SecurityTab::OnInit() noexcept {
    FillList(Window, kLevel.id, EncryptionLevelTable);
    LimitTexts(Window, kPasswords);
    panelPlace_ = TakePlaceHolder(QVD_PLACE_HOLDER);
    // Without a panel its settings stay as they are.
    (void)permissions40_.Create(Window);
    (void)permissions128_.Create(Window);
    permissions40_.ShowAt(panelPlace_);
}

void SecurityTab::Show(ConversionSettings& settings) noexcept {
    permissions40_.Bind(settings);
    permissions128_.Bind(settings);
    ShowFields(Window, kChecks, settings);
    ShowFields(Window, kPasswords, settings);
    SelectRow(Window, kLevel.id, kLevel.field(settings));
    ShowPanel();
    ApplyEnabling();
}

void SecurityTab::Store(ConversionSettings& settings) noexcept {
    permissions40_.WriteBack();
    permissions128_.WriteBack();
    StoreFields(Window, kChecks, settings);
    StoreFields(Window, kPasswords, settings);
    kLevel.field(settings) = SelectedRow(Window, kLevel.id, 0);
}

bool SecurityTab::OnCommand(int id, UINT code) noexcept {
    if (id == kLevel.id && code == CBN_SELCHANGE) {
        ShowPanel();
        return true;
    }
    if (code == BN_CLICKED && (id == QVD_CHECK_SECURITY || id == QVD_CHECK_OWNER_PASSWORD)) {
        ApplyEnabling();
        return true;
    }
    return false;
}

void SecurityTab::ShowPanel() noexcept {
    const bool isLevel0 = SelectedRow(Window, kLevel.id, 0) == 0;
    OptionPage& shown = isLevel0 ? static_cast<OptionPage&>(permissions40_) : permissions128_;
    const OptionPage& hidden =
        isLevel0 ? static_cast<OptionPage&>(permissions128_) : permissions40_;
    if (hidden.Window) ShowWindow(hidden.Window, SW_HIDE);
    if (shown.Window) shown.ShowAt(panelPlace_);
}

void SecurityTab::ApplyEnabling() noexcept {
    const bool isSecure = IsChecked(Window, QVD_CHECK_SECURITY);
    const bool isProtected = isSecure && IsChecked(Window, QVD_CHECK_OWNER_PASSWORD);
    permissions40_.Enable(isProtected);
    permissions128_.Enable(isSecure, isProtected);
    // The edits do not follow their check boxes: what is in them is kept.
    constexpr int kRest[] = {QVD_CHECK_USER_PASSWORD, QVD_CHECK_OWNER_PASSWORD,
                             QVD_EDIT_USER_PASSWORD, QVD_EDIT_OWNER_PASSWORD, QVD_LIST_LEVEL};
    EnableControls(Window, kRest, isSecure);
}

bool SecurityTab::Validate() noexcept {
    AUX::WString user;
    AUX::WString owner;
    const platform::ScopeExit wiped([&]() noexcept {
        WipeText(user);
        WipeText(owner);
    });
    (void)ReadText(Window, QVD_EDIT_USER_PASSWORD, user);
    (void)ReadText(Window, QVD_EDIT_OWNER_PASSWORD, owner);
    const WCHAR* fault = FindSecurityFault(
        {IsChecked(Window, QVD_CHECK_SECURITY), IsChecked(Window, QVD_CHECK_USER_PASSWORD),
         IsChecked(Window, QVD_CHECK_OWNER_PASSWORD), user, owner});
    if (!fault) return true;
    MessageBoxW(Window, fault, TEXT(""), MB_OK);
    return false;
}
