#include "settings/conversion_settings.h"

#include "foundation/file_removal.h"
#include "platform/registry.h"
#include "settings/password_text.h"
#include "settings/registry_values.h"
#include "settings/setting_rows.h"
#include "settings/thousandths.h"

namespace {

// Reading and writing together: a key that can only be read counts as missing.
constexpr REGSAM kAccess = 0x2001F;

// PDF versions were once kept as 16 to 23, for the minor versions 0 to 7.
constexpr std::uint32_t kOldVersionFirst = 16;
constexpr std::uint32_t kOldVersionEnd = 24;
constexpr std::uint32_t kVersionBase = 0x10000;

void SetInitialText(AUX::WString& text, const WCHAR* initial) noexcept {
    if (!text.Assign(initial)) text.Clear();
}

void TakeLegacyLength(HKEY key, ConversionSettings& settings, const LengthForm& form) noexcept {
    std::uint32_t tenths = 0;
    if (!ReadDwordValue(key, form.legacyName, tenths)) return;
    form.field(settings) = tenths / 10.0;
    (void)RegDeleteValueW(key, form.legacyName);  // If it stays, it is taken again next time.
}

/// \return false if the row's value is there and memory does not suffice for it.
bool LoadRow(HKEY key, ConversionSettings& settings, const SettingRow& row) noexcept {
    const SettingVisitor load{
        [&](const FlagForm& form) {
            std::uint32_t value = 0;
            if (ReadDwordValue(key, row.name, value)) form.field(settings) = value != 0;
            return true;
        },
        [&](const NumberForm& form) {
            (void)ReadDwordValue(key, row.name, form.field(settings));  // Missing: stays.
            return true;
        },
        [&](const LengthForm& form) {
            std::uint32_t value = 0;
            if (ReadDwordValue(key, row.name, value)) form.field(settings) = value / 1000.0;
            return true;
        },
        [&](const TextForm& form) { return ReadStringValue(key, row.name, form.field(settings)); },
        [&](const PasswordForm& form) {
            return ReadPasswordValue(key, row.name, form.field(settings));
        },
    };
    return std::visit(load, row.form);
}

void SaveRow(HKEY key, ConversionSettings& settings, const SettingRow& row) noexcept {
    const SettingVisitor save{
        [&](const FlagForm& form) { WriteDwordValue(key, row.name, form.field(settings) ? 1 : 0); },
        [&](const NumberForm& form) { WriteDwordValue(key, row.name, form.field(settings)); },
        [&](const LengthForm& form) {
            WriteDwordValue(key, row.name, ThousandthsOf(form.field(settings)));
        },
        [&](const TextForm& form) { WriteStringValue(key, row.name, form.field(settings)); },
        [&](const PasswordForm& form) { WritePasswordValue(key, row.name, form.field(settings)); },
    };
    std::visit(save, row.form);
}

void ResetRow(ConversionSettings& settings, const SettingRow& row) noexcept {
    const SettingVisitor reset{
        [&](const FlagForm& form) { form.field(settings) = form.initial; },
        [&](const NumberForm& form) { form.field(settings) = form.initial; },
        [&](const LengthForm& form) { form.field(settings) = form.initial; },
        [&](const TextForm& form) { SetInitialText(form.field(settings), form.initial); },
        [&](const PasswordForm& form) { WipeText(form.field(settings)); },
    };
    std::visit(reset, row.form);
}

bool HasOwner(const ConversionSettings& settings, SettingOwner owner) noexcept {
    if (owner == SettingOwner::Security) return static_cast<bool>(settings.Security);
    if (owner == SettingOwner::RunApp) return static_cast<bool>(settings.RunApp);
    return true;
}

bool IsComplete(const ConversionSettings& settings) noexcept {
    return settings.Security && settings.RunApp;
}

}  // namespace

SecuritySettings::~SecuritySettings() {
    WipeText(UserPassword);
    WipeText(OwnerPassword);
}

ConversionSettings::ConversionSettings(const WCHAR* keyPath) noexcept
    : Security(SharedRef<SecuritySettings>::Make()), RunApp(SharedRef<RunAppSettings>::Make()) {
    // A key that is there but cannot be named must not pass for settings that were never saved.
    if (!KeyPath.Assign(keyPath)) Security.Reset();
    ResetToDefaults();
}

void ConversionSettings::ResetToDefaults() noexcept {
    for (const SettingRow& row : SettingRows()) {
        if (HasOwner(*this, row.owner)) ResetRow(*this, row);
    }
    HiddenRun = false;
    WebPageTargetHeight = 800;
    SharedDataName.Clear();
    StorageFile.Clear();
    CeArgument.Clear();
}

HRESULT ConversionSettings::Load() noexcept {
    if (!IsComplete(*this)) return E_FAIL;
    if (KeyPath.IsEmpty()) return S_OK;
    platform::RegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, KeyPath.Text(), 0, kAccess, key.Put()) != ERROR_SUCCESS) {
        return S_OK;
    }
    for (const SettingRow& row : SettingRows()) {
        if (const auto* length = std::get_if<LengthForm>(&row.form)) {
            TakeLegacyLength(key.Get(), *this, *length);
        }
    }
    bool isWhole = true;
    for (const SettingRow& row : SettingRows()) {
        if (!LoadRow(key.Get(), *this, row)) isWhole = false;
    }
    key.Reset();

    if (PDFSpecification >= kOldVersionFirst && PDFSpecification < kOldVersionEnd) {
        PDFSpecification = kVersionBase + (PDFSpecification - kOldVersionFirst);
    }
    return isWhole ? S_OK : E_OUTOFMEMORY;
}

HRESULT ConversionSettings::Save() noexcept {
    if (!IsComplete(*this)) return E_FAIL;
    if (KeyPath.IsEmpty()) return S_OK;
    platform::RegistryKey key;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, KeyPath.Text(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        kAccess, nullptr, key.Put(), nullptr) != ERROR_SUCCESS) {
        return S_OK;
    }
    for (const SettingRow& row : SettingRows()) SaveRow(key.Get(), *this, row);
    return S_OK;
}

void ConversionSettings::DeleteStorageFile() noexcept {
    if (StorageFile.IsEmpty()) return;
    // Nobody could act on the error; the file lies in the temporary folder.
    (void)AUX::DeleteFileForced(StorageFile.Text());
    StorageFile.Clear();
}
