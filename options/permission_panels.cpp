#include "options/permission_panels.h"

#include "options/bindings.h"
#include "resources/resource_ids.h"
#include "settings/vocabularies.h"

namespace {

using Security = SecuritySettings;

constexpr CheckBinding kChecks40[] = {
    {QVD_CHECK_PRINTING_40, SettingFieldOf<&Security::Allow40Printing>},
    {QVD_CHECK_CHANGING_40, SettingFieldOf<&Security::Allow40Changing>},
    {QVD_CHECK_COPYING_40, SettingFieldOf<&Security::Allow40Copying>},
    {QVD_CHECK_COMMENTS_40, SettingFieldOf<&Security::Allow40Comments>},
};
constexpr CheckBinding kChecks128[] = {
    {QVD_CHECK_ACCESS_128, SettingFieldOf<&Security::Allow128ContentAccess>},
    {QVD_CHECK_COPYING_128, SettingFieldOf<&Security::Allow128Copying>},
    {QVD_CHECK_METADATA_128, SettingFieldOf<&Security::EncryptMetadata128>},
};
constexpr ListBinding kLists128[] = {
    {QVD_LIST_CHANGES_128, SettingFieldOf<&Security::Changes128>},
    {QVD_LIST_PRINTING_128, SettingFieldOf<&Security::Printing128>},
};

}  // namespace

Permissions40Panel::Permissions40Panel() noexcept
    : OptionPage(QVD_DIALOG_PERMISSIONS_40, TabTexture::No) {}

void Permissions40Panel::Show(ConversionSettings& settings) noexcept {
    ShowFields(Window, kChecks40, settings);
}

void Permissions40Panel::Store(ConversionSettings& settings) noexcept {
    StoreFields(Window, kChecks40, settings);
}

void Permissions40Panel::Enable(bool isProtected) noexcept {
    for (const CheckBinding& row : kChecks40) EnableWindow(GetDlgItem(Window, row.id), isProtected);
}

Permissions128Panel::Permissions128Panel() noexcept
    : OptionPage(QVD_DIALOG_PERMISSIONS_128, TabTexture::No) {}

void Permissions128Panel::Show(ConversionSettings& settings) noexcept {
    ShowFields(Window, kChecks128, settings);
    FillList(Window, QVD_LIST_CHANGES_128, ChangesAllowedTable);
    FillList(Window, QVD_LIST_PRINTING_128, PrintingAllowedTable);
    ShowFields(Window, kLists128, settings);
}

void Permissions128Panel::Store(ConversionSettings& settings) noexcept {
    StoreFields(Window, kChecks128, settings);
    for (const ListBinding& row : kLists128) row.field(settings) = SelectedRow(Window, row.id, 0);
}

void Permissions128Panel::Enable(bool isSecure, bool isProtected) noexcept {
    constexpr int kPermissions[] = {QVD_LIST_CHANGES_128, QVD_LIST_PRINTING_128,
                                    QVD_CHECK_ACCESS_128, QVD_CHECK_COPYING_128};
    EnableControls(Window, kPermissions, isProtected);
    constexpr int kMetadata[] = {QVD_CHECK_METADATA_128};
    EnableControls(Window, kMetadata, isSecure);
}
