#include "settings/conversion_settings.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "platform/registry.h"
#include "platform/testing.h"
#include "settings/setting_rows.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using Bytes = std::vector<BYTE>;
using C = ConversionSettings;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

struct StoredValue {
    DWORD type = REG_NONE;
    Bytes data;
    friend bool operator==(const StoredValue&, const StoredValue&) = default;
};

StoredValue Dword(std::uint32_t value) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    return {REG_DWORD, Bytes(bytes, bytes + 4)};
}
StoredValue Text(const WideString& text, DWORD type = REG_SZ) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {type, Bytes(bytes, bytes + (text.size() + 1) * 2)};
}
StoredValue Ascii(const std::string& text, DWORD type = REG_BINARY) {
    return {type, Bytes(text.begin(), text.end())};
}

std::string Shown(const WideString& text) { return platform::ToUtf8(text); }
std::string Shown(const AUX::WString& text) { return platform::ToUtf8(AUX::WStringView(text)); }

/// A row as administrators and other versions know it, and where it lies in the record.
struct RowCase {
    const WCHAR* name;
    StoredValue byDefault;
    StoredValue other;  // Another value, and how it shows in the record
    std::string shown;
    std::function<std::string(const ConversionSettings&)> show;
};

template <class Owner, class Field>
auto Show(Field Owner::*field) {
    return [field](const ConversionSettings& settings) {
        const Owner* owner = nullptr;
        if constexpr (std::is_same_v<Owner, SecuritySettings>) owner = settings.Security.Get();
        if constexpr (std::is_same_v<Owner, RunAppSettings>) owner = settings.RunApp.Get();
        if constexpr (std::is_same_v<Owner, ConversionSettings>) owner = &settings;
        if constexpr (std::is_same_v<Field, AUX::WString>) return Shown(owner->*field);
        if constexpr (!std::is_same_v<Field, AUX::WString>) return std::to_string(owner->*field);
    };
}

std::vector<RowCase> AllRows() {
    using S = SecuritySettings;
    using R = RunAppSettings;
    const StoredValue off = Dword(0);
    const StoredValue on = Dword(1);
    const StoredValue trueToo = Dword(0x80000000);
    return {
        {TEXT("WebPageTargetWidth"), Dword(1280), Dword(0xFFFFFFFF), "4294967295",
         Show(&C::WebPageTargetWidth)},
        {TEXT("LoadDelay"), Dword(500), off, "0", Show(&C::LoadDelay)},
        {TEXT("PaperSize"), Dword(11), Dword(99), "99", Show(&C::PaperSize)},
        {TEXT("PDFSpecification"), Dword(65540), Dword(0x10007), "65543",
         Show(&C::PDFSpecification)},
        {TEXT("CompressionLevel"), on, Dword(2), "2", Show(&C::CompressionLevel)},
        {TEXT("Units"), off, Dword(7), "7", Show(&C::Units)},
        {TEXT("LandscapeOrienatation"), off, trueToo, "1", Show(&C::LandscapeOrientation)},
        {TEXT("UseWebPageBackgroundColor"), on, off, "0", Show(&C::UseWebPageBackgroundColor)},
        {TEXT("GenerateLinks"), on, off, "0", Show(&C::GenerateLinks)},
        {TEXT("RunPDFApp"), on, off, "0", Show(&C::RunPDFApp)},
        {TEXT("UseWebPageCopy"), on, off, "0", Show(&C::UseWebPageCopy)},
        {TEXT("ConvertAttachments"), on, off, "0", Show(&C::ConvertAttachments)},
        {TEXT("PageWidth2"), Dword(595300), Dword(612001), "612.001000", Show(&C::PageWidth)},
        {TEXT("PageHeight2"), Dword(841900), Dword(0xFFFFFFFF), "4294967.295000",
         Show(&C::PageHeight)},
        {TEXT("MarginTop2"), off, Dword(1), "0.001000", Show(&C::MarginTop)},
        {TEXT("MarginBottom2"), off, Dword(14170), "14.170000", Show(&C::MarginBottom)},
        {TEXT("MarginLeft2"), off, Dword(1001), "1.001000", Show(&C::MarginLeft)},
        {TEXT("MarginRight2"), off, Dword(1009), "1.009000", Show(&C::MarginRight)},
        {TEXT("RunCustPDFApp"), off, on, "1", Show(&R::UseCustomApp)},
        {TEXT("RunPDFPath"), Text({}), Text(TEXT("C:\\a b\\c.exe")), "C:\\a b\\c.exe",
         Show(&R::AppPath)},
        {TEXT("RunPDFParams"), Text(TEXT("%f")), Text(TEXT("/p \"%f\"")), "/p \"%f\"",
         Show(&R::AppParameters)},
        {TEXT("secEnabled"), off, on, "1", Show(&S::Enabled)},
        {TEXT("secHasUserPassword"), off, on, "1", Show(&S::HasUserPassword)},
        {TEXT("secHasOwnerPassword"), off, on, "1", Show(&S::HasOwnerPassword)},
        {TEXT("secUserPassword"), Ascii(""), Ascii("YQBiAA=="), "ab", Show(&S::UserPassword)},
        {TEXT("secOwnerPassword"), Ascii(""), Ascii("PdgA3g=="), "\xF0\x9F\x98\x80",
         Show(&S::OwnerPassword)},
        {TEXT("secType"), off, Dword(4), "4", Show(&S::Type)},
        {TEXT("sec40AllowPrinting"), off, on, "1", Show(&S::Allow40Printing)},
        {TEXT("sec40AllowChanging"), off, on, "1", Show(&S::Allow40Changing)},
        {TEXT("sec40AllowCopying"), off, on, "1", Show(&S::Allow40Copying)},
        {TEXT("sec40AllowComments"), off, on, "1", Show(&S::Allow40Comments)},
        {TEXT("sec128ContentAccess"), off, on, "1", Show(&S::Allow128ContentAccess)},
        {TEXT("sec128AllowCopying"), off, on, "1", Show(&S::Allow128Copying)},
        {TEXT("sec128Changes"), off, Dword(3), "3", Show(&S::Changes128)},
        {TEXT("sec128Printing"), off, Dword(2), "2", Show(&S::Printing128)},
        {TEXT("sec128EncryptMeta"), on, off, "0", Show(&S::EncryptMetadata128)},
    };
}

class ConversionSettingsTest : public testing::Test {
protected:
    void MakeKey() {
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  0x2001F, nullptr, key_.Put(), nullptr),
                  ERROR_SUCCESS);
    }
    void Store(const WCHAR* name, const StoredValue& value) {
        if (!key_) MakeKey();
        ASSERT_EQ(RegSetValueExW(key_.Get(), name, 0, value.type, value.data.data(),
                                 static_cast<DWORD>(value.data.size())),
                  ERROR_SUCCESS);
    }
    StoredValue Stored(const WCHAR* name) {
        if (!key_) MakeKey();
        StoredValue value{REG_NONE, Bytes(4096)};
        DWORD size = static_cast<DWORD>(value.data.size());
        if (RegQueryValueExW(key_.Get(), name, nullptr, &value.type, value.data.data(), &size) !=
            ERROR_SUCCESS) {
            return {};
        }
        value.data.resize(size);
        return value;
    }

    test_support::TestProfile profile_;
    platform::RegistryKey key_;
};

TEST_F(ConversionSettingsTest, EachRowIsSavedAndLoadedUnderItsNameAndType) {
    const std::vector<RowCase> rows = AllRows();
    ASSERT_EQ(SettingRows().size(), rows.size());
    ConversionSettings settings(kKey);
    ASSERT_EQ(settings.Save(), S_OK);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(Shown(rows[i].name));
        EXPECT_EQ(WideString(SettingRows()[i].name), rows[i].name) << "the order has changed";
        EXPECT_EQ(Stored(rows[i].name), rows[i].byDefault);
        Store(rows[i].name, rows[i].other);
    }
    for (const WCHAR* name : {TEXT("PageWidth"), TEXT("HiddenRun"), TEXT("WebPageTargetHeight")}) {
        EXPECT_EQ(Stored(name), StoredValue{}) << Shown(name);
    }

    ASSERT_EQ(settings.Load(), S_OK);
    ConversionSettings fresh(kKey);
    for (const RowCase& row : rows) {
        SCOPED_TRACE(Shown(row.name));
        EXPECT_EQ(row.show(settings), row.shown);
        EXPECT_NE(row.show(fresh), row.shown) << "shows nothing";
    }

    // Saving what was loaded changes nothing but a flag's form.
    ASSERT_EQ(settings.Save(), S_OK);
    for (const RowCase& row : rows) {
        const bool isFlag = row.other == Dword(0x80000000);
        EXPECT_EQ(Stored(row.name), isFlag ? Dword(1) : row.other) << Shown(row.name);
    }

    const SecuritySettings* const security = settings.Security.Get();
    settings.HiddenRun = true;
    settings.WebPageTargetHeight = 4000;
    for (auto text : {&C::SharedDataName, &C::StorageFile, &C::CeArgument}) {
        ASSERT_TRUE((settings.*text).Assign(TEXT("x")));
    }
    settings.ResetToDefaults();
    for (const RowCase& row : rows) EXPECT_EQ(row.show(settings), row.show(fresh));
    EXPECT_FALSE(settings.HiddenRun);
    EXPECT_EQ(settings.WebPageTargetHeight, 800u);
    EXPECT_TRUE(settings.SharedDataName.IsEmpty() && settings.StorageFile.IsEmpty() &&
                settings.CeArgument.IsEmpty());
    EXPECT_EQ(settings.KeyPath, kKey);
    EXPECT_EQ(settings.Security.Get(), security);
}

TEST_F(ConversionSettingsTest, MissingAndWrongValuesLeaveTheirFieldsButPasswordsAreEmptied) {
    for (const RowCase& row : AllRows()) {
        const bool isNumber = row.byDefault.type == REG_DWORD;
        Store(row.name, isNumber ? Text(TEXT("7")) : Dword(7));
    }
    Store(TEXT("LoadDelay"), {REG_DWORD, {1, 2}});  // Too short for its type.
    Store(TEXT("PaperSize"), {REG_DWORD, {1, 2, 3, 4, 5}});
    ConversionSettings settings(kKey);
    settings.LoadDelay = settings.PaperSize = 77;
    settings.MarginTop = 12.5;
    ASSERT_TRUE(settings.RunApp->AppPath.Assign(TEXT("mine")));
    ASSERT_TRUE(settings.Security->UserPassword.Assign(TEXT("mine")));
    ASSERT_EQ(settings.Load(), S_OK);
    EXPECT_EQ(settings.LoadDelay, 77u);
    EXPECT_EQ(settings.PaperSize, 77u);
    EXPECT_EQ(settings.MarginTop, 12.5);
    EXPECT_TRUE(settings.RunPDFApp);
    EXPECT_EQ(settings.RunApp->AppPath, TEXT("mine"));
    EXPECT_EQ(settings.RunApp->AppParameters, TEXT("%f"));
    EXPECT_TRUE(settings.Security->UserPassword.IsEmpty());

    Store(TEXT("secUserPassword"), Ascii("YQBiAA==", REG_SZ));
    ASSERT_TRUE(settings.Security->UserPassword.Assign(TEXT("mine")));
    ASSERT_EQ(settings.Load(), S_OK);
    EXPECT_TRUE(settings.Security->UserPassword.IsEmpty());
}

TEST_F(ConversionSettingsTest, OldLengthsAreTakenOverOnceAndLoseAgainstNewOnes) {
    Store(TEXT("PageWidth"), Dword(6120));
    Store(TEXT("PageHeight"), Dword(7920));
    Store(TEXT("PageHeight2"), Dword(595000));
    Store(TEXT("MarginTop"), Dword(0xFFFFFFFF));
    Store(TEXT("MarginLeft"), Text(TEXT("6120")));
    ConversionSettings settings(kKey);
    ASSERT_EQ(settings.Load(), S_OK);
    EXPECT_EQ(settings.PageWidth, 612.0);
    EXPECT_EQ(settings.PageHeight, 595.0);
    EXPECT_EQ(settings.MarginTop, 429496729.5);
    EXPECT_EQ(settings.MarginLeft, 0.0);
    for (const WCHAR* name : {TEXT("PageWidth"), TEXT("PageHeight"), TEXT("MarginTop")}) {
        EXPECT_EQ(Stored(name), StoredValue{}) << Shown(name);
    }
    EXPECT_EQ(Stored(TEXT("MarginLeft")), Text(TEXT("6120"))) << "is none of ours";
}

TEST_F(ConversionSettingsTest, OldPdfVersionsAreMigratedInMemoryOnly) {
    const struct {
        std::uint32_t stored, loaded;
    } kCases[] = {{0, 0}, {15, 15}, {16, 0x10000}, {20, 0x10004}, {23, 0x10007}, {24, 24}};
    for (const auto& c : kCases) {
        Store(TEXT("PDFSpecification"), Dword(c.stored));
        ConversionSettings settings(kKey);
        ASSERT_EQ(settings.Load(), S_OK);
        EXPECT_EQ(settings.PDFSpecification, c.loaded);
        EXPECT_EQ(Stored(TEXT("PDFSpecification")), Dword(c.stored));
    }
    // Without a key nothing changes, the version neither.
    ConversionSettings settings(TEXT("Software\\No such key"));
    settings.PDFSpecification = 20;
    ASSERT_EQ(settings.Load(), S_OK);
    EXPECT_EQ(settings.PDFSpecification, 20u);
}

TEST_F(ConversionSettingsTest, LengthsAreCutToThousandthsWithinTheirRange) {
    const struct {
        const WCHAR* name;
        double ConversionSettings::*field;
        double points;
        std::uint32_t stored;
    } kCases[] = {
        {TEXT("PageWidth2"), &ConversionSettings::PageWidth, 612.0009, 612000},
        {TEXT("PageHeight2"), &ConversionSettings::PageHeight, 4294967.2959, 0xFFFFFFFF},
        {TEXT("MarginTop2"), &ConversionSettings::MarginTop, 0.0019999, 1},
        {TEXT("MarginBottom2"), &ConversionSettings::MarginBottom, -3, 0},
        {TEXT("MarginLeft2"), &ConversionSettings::MarginLeft, 1e300, 0xFFFFFFFF},
        {TEXT("MarginRight2"), &ConversionSettings::MarginRight,
         std::numeric_limits<double>::quiet_NaN(), 0},
    };
    ConversionSettings settings(kKey);
    for (const auto& c : kCases) settings.*c.field = c.points;
    ASSERT_EQ(settings.Save(), S_OK);
    for (const auto& c : kCases) EXPECT_EQ(Stored(c.name), Dword(c.stored)) << c.points;
}

TEST_F(ConversionSettingsTest, ARecordWithoutAKeyTouchesNoRegistry) {
    for (const WCHAR* path : {static_cast<const WCHAR*>(nullptr), TEXT("")}) {
        ConversionSettings settings(path);
        EXPECT_TRUE(settings.KeyPath.IsEmpty());
        settings.LoadDelay = 7;
        ASSERT_EQ(settings.Save(), S_OK);
        ASSERT_EQ(settings.Load(), S_OK);
        EXPECT_EQ(settings.LoadDelay, 7u);
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExW(HKEY_CURRENT_USER, TEXT("LoadDelay"), nullptr, nullptr, nullptr,
                                   &size),
                  ERROR_FILE_NOT_FOUND);
    }
}

TEST_F(ConversionSettingsTest, ARecordThatIsNotWholeIsNeitherLoadedNorSaved) {
    Store(TEXT("LoadDelay"), Dword(9));
    Store(TEXT("PageWidth"), Dword(6120));
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        ConversionSettings settings(kKey);
        EXPECT_EQ(settings.PDFSpecification, 0x10004u);
        if (settings.Security && settings.RunApp) return;
        EXPECT_TRUE(hasFailed());
        EXPECT_EQ(settings.Load(), E_FAIL);
        EXPECT_EQ(settings.Save(), E_FAIL);
        EXPECT_EQ(settings.LoadDelay, 500u);
    });
    EXPECT_GT(failures, 3u);  // Two records and two texts.
    EXPECT_EQ(Stored(TEXT("LoadDelay")), Dword(9));
    EXPECT_EQ(Stored(TEXT("PageWidth")), Dword(6120));
}

TEST_F(ConversionSettingsTest, LoadingTellsOfTextsThatMemoryDoesNotSufficeFor) {
    Store(TEXT("RunPDFPath"), Text(TEXT("C:\\app.exe")));
    Store(TEXT("secUserPassword"), Ascii("YQBiAA=="));
    Store(TEXT("sec128EncryptMeta"), Dword(0));
    int lost = 0;
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        ConversionSettings settings(kKey);
        if (hasFailed()) return;
        const HRESULT loaded = settings.Load();
        EXPECT_EQ(loaded, hasFailed() ? E_OUTOFMEMORY : S_OK);
        EXPECT_FALSE(settings.Security->EncryptMetadata128) << "the rest was not loaded";
        if (hasFailed()) ++lost;
        EXPECT_TRUE(hasFailed() || settings.Security->UserPassword == TEXT("ab"));
    });
    EXPECT_GE(lost, 3);  // A path, a password and its text.
    EXPECT_GT(failures, 6u);
}

TEST_F(ConversionSettingsTest, RefusedKeysAndWritesArePassedOver) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    ConversionSettings settings(kKey);
    {
        platform::testing::InjectedFault fault("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
        EXPECT_EQ(settings.Save(), S_OK);
        EXPECT_TRUE(fault.HasFired());
    }
    {
        platform::testing::InjectedFault fault("RegSetValueExW", 2, ERROR_DISK_FULL);
        EXPECT_EQ(settings.Save(), S_OK);
        EXPECT_TRUE(fault.HasFired());
    }
    EXPECT_EQ(Stored(TEXT("WebPageTargetWidth")), Dword(1280));
    EXPECT_EQ(Stored(TEXT("LoadDelay")), StoredValue{});
    EXPECT_EQ(Stored(TEXT("sec128EncryptMeta")), Dword(1));
    {
        platform::testing::InjectedFault fault("RegOpenKeyExW", 1, ERROR_ACCESS_DENIED);
        settings.LoadDelay = 3;
        EXPECT_EQ(settings.Load(), S_OK);
        EXPECT_TRUE(fault.HasFired());
    }
    EXPECT_EQ(settings.LoadDelay, 3u);
}

}  // namespace
