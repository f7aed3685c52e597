#include "settings/setting_rows.h"

#include "settings/setting_field.h"

namespace {

template <auto Member>
constexpr SettingOwner OwnerOf() noexcept {
    using Owner = typename SettingMember<decltype(Member)>::Owner;
    if (std::is_same_v<Owner, SecuritySettings>) return SettingOwner::Security;
    if (std::is_same_v<Owner, RunAppSettings>) return SettingOwner::RunApp;
    return SettingOwner::Page;
}

template <auto Member, class Form, class... Rest>
constexpr SettingRow Row(const WCHAR* name, Rest... rest) noexcept {
    return {name, OwnerOf<Member>(), Form{&SettingFieldOf<Member>, rest...}};
}

template <auto Member>
constexpr SettingRow Flag(const WCHAR* name, bool initial) noexcept {
    return Row<Member, FlagForm>(name, initial);
}
template <auto Member>
constexpr SettingRow Number(const WCHAR* name, std::uint32_t initial) noexcept {
    return Row<Member, NumberForm>(name, initial);
}
template <auto Member>
constexpr SettingRow Length(const WCHAR* name, double initial, const WCHAR* legacyName) noexcept {
    return Row<Member, LengthForm>(name, initial, legacyName);
}
template <auto Member>
constexpr SettingRow Text(const WCHAR* name, const WCHAR* initial) noexcept {
    return Row<Member, TextForm>(name, initial);
}
template <auto Member>
constexpr SettingRow Password(const WCHAR* name) noexcept {
    return Row<Member, PasswordForm>(name);
}

using Page = ConversionSettings;
using RunApp = RunAppSettings;
using Security = SecuritySettings;

constexpr SettingRow kRows[] = {
    Number<&Page::WebPageTargetWidth>(TEXT("WebPageTargetWidth"), 1280),
    Number<&Page::LoadDelay>(TEXT("LoadDelay"), 500),
    Number<&Page::PaperSize>(TEXT("PaperSize"), 11),
    Number<&Page::PDFSpecification>(TEXT("PDFSpecification"), 0x10004),
    Number<&Page::CompressionLevel>(TEXT("CompressionLevel"), 1),
    Number<&Page::Units>(TEXT("Units"), 0),
    // The value's name is misspelt on every machine that has one.
    Flag<&Page::LandscapeOrientation>(TEXT("LandscapeOrienatation"), false),
    Flag<&Page::UseWebPageBackgroundColor>(TEXT("UseWebPageBackgroundColor"), true),
    Flag<&Page::GenerateLinks>(TEXT("GenerateLinks"), true),
    Flag<&Page::RunPDFApp>(TEXT("RunPDFApp"), true),
    Flag<&Page::UseWebPageCopy>(TEXT("UseWebPageCopy"), true),
    Flag<&Page::ConvertAttachments>(TEXT("ConvertAttachments"), true),
    Length<&Page::PageWidth>(TEXT("PageWidth2"), 595.3, TEXT("PageWidth")),
    Length<&Page::PageHeight>(TEXT("PageHeight2"), 841.9, TEXT("PageHeight")),
    Length<&Page::MarginTop>(TEXT("MarginTop2"), 0, TEXT("MarginTop")),
    Length<&Page::MarginBottom>(TEXT("MarginBottom2"), 0, TEXT("MarginBottom")),
    Length<&Page::MarginLeft>(TEXT("MarginLeft2"), 0, TEXT("MarginLeft")),
    Length<&Page::MarginRight>(TEXT("MarginRight2"), 0, TEXT("MarginRight")),
    Flag<&RunApp::UseCustomApp>(TEXT("RunCustPDFApp"), false),
    Text<&RunApp::AppPath>(TEXT("RunPDFPath"), TEXT("")),
    Text<&RunApp::AppParameters>(TEXT("RunPDFParams"), TEXT("%f")),
    Flag<&Security::Enabled>(TEXT("secEnabled"), false),
    Flag<&Security::HasUserPassword>(TEXT("secHasUserPassword"), false),
    Flag<&Security::HasOwnerPassword>(TEXT("secHasOwnerPassword"), false),
    Password<&Security::UserPassword>(TEXT("secUserPassword")),
    Password<&Security::OwnerPassword>(TEXT("secOwnerPassword")),
    Number<&Security::Type>(TEXT("secType"), 0),
    Flag<&Security::Allow40Printing>(TEXT("sec40AllowPrinting"), false),
    Flag<&Security::Allow40Changing>(TEXT("sec40AllowChanging"), false),
    Flag<&Security::Allow40Copying>(TEXT("sec40AllowCopying"), false),
    Flag<&Security::Allow40Comments>(TEXT("sec40AllowComments"), false),
    Flag<&Security::Allow128ContentAccess>(TEXT("sec128ContentAccess"), false),
    Flag<&Security::Allow128Copying>(TEXT("sec128AllowCopying"), false),
    Number<&Security::Changes128>(TEXT("sec128Changes"), 0),
    Number<&Security::Printing128>(TEXT("sec128Printing"), 0),
    Flag<&Security::EncryptMetadata128>(TEXT("sec128EncryptMeta"), true),
};

}  // namespace

std::span<const SettingRow> SettingRows() noexcept { return kRows; }
