#include "settings/conversion_settings.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "platform/testing.h"
#include "settings/password_text.h"
#include "settings/registry_values.h"
#include "settings/setting_rows.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using platform::ToUtf8;
using platform::WideString;
using Record = ConversionSettings;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

using StoredValue = std::pair<DWORD, std::string>;  // type and bytes

StoredValue Value(DWORD type, const void* bytes, std::size_t count) {
    return {type, {static_cast<const char*>(bytes), count}};
}
StoredValue Dword(std::uint32_t value) { return Value(REG_DWORD, &value, sizeof value); }
StoredValue Text(const WideString& text) {
    return Value(REG_SZ, text.c_str(), (text.size() + 1) * 2);
}
std::uint32_t Number(const WideString& digits) {
    return static_cast<std::uint32_t>(std::stoull(ToUtf8(digits)));
}
/// The value of a cell: its kind, a colon, and what it holds.
StoredValue CellValue(const WideString& cell) {
    const WideString content = cell.substr(cell.find(':') + 1);
    if (cell[0] == 's') return Text(content);
    if (cell[0] == 'b') return {REG_BINARY, ToUtf8(content)};
    return Dword(Number(content));
}

std::string Shown(const AUX::WString& text) { return ToUtf8(AUX::WStringView(text)); }
std::string Shown(auto number) { return std::to_string(number); }
std::vector<std::string> ShowAll(const auto&... fields) { return {Shown(fields)...}; }

/// What of the record is kept, in the order of saving.
std::vector<std::string> Fields(const Record& s) {
    const RunAppSettings& app = *s.RunApp;
    const SecuritySettings& pdf = *s.Security;
    return ShowAll(s.WebPageTargetWidth, s.LoadDelay, s.PaperSize, s.PDFSpecification,
                   s.CompressionLevel, s.Units, s.LandscapeOrientation, s.UseWebPageBackgroundColor,
                   s.GenerateLinks, s.RunPDFApp, s.UseWebPageCopy, s.ConvertAttachments,
                   s.PageWidth, s.PageHeight, s.MarginTop, s.MarginBottom, s.MarginLeft,
                   s.MarginRight, app.UseCustomApp, app.AppPath, app.AppParameters, pdf.Enabled,
                   pdf.HasUserPassword, pdf.HasOwnerPassword, pdf.UserPassword, pdf.OwnerPassword,
                   pdf.Type, pdf.Allow40Printing, pdf.Allow40Changing, pdf.Allow40Copying,
                   pdf.Allow40Comments, pdf.Allow128ContentAccess, pdf.Allow128Copying,
                   pdf.Changes128, pdf.Printing128, pdf.EncryptMetadata128);
}

class ConversionSettingsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  0x2001F, nullptr, key_.Put(), nullptr),
                  ERROR_SUCCESS);
    }
    void Store(const WideString& name, const StoredValue& value) {
        ASSERT_EQ(RegSetValueExW(key_.Get(), name.c_str(), 0, value.first,
                                 reinterpret_cast<const BYTE*>(value.second.data()),
                                 static_cast<DWORD>(value.second.size())),
                  ERROR_SUCCESS);
    }
    /// Nothing if there is no such value.
    StoredValue Stored(const WideString& name) {
        BYTE bytes[64];
        DWORD type = REG_NONE;
        DWORD size = sizeof bytes;
        const LSTATUS read =
            RegQueryValueExW(key_.Get(), name.c_str(), nullptr, &type, bytes, &size);
        return read == ERROR_SUCCESS ? Value(type, bytes, size) : StoredValue{};
    }

    test_support::TestProfile profile_;
    platform::RegistryKey key_;
    Record settings_{kKey};
};

TEST_F(ConversionSettingsTest, EachRowIsSavedLoadedKeptAndResetUnderItsNameAndType) {
    const auto rows = test_support::ReadCases(SETTINGS_CASES "setting_rows.tsv", 4);
    ASSERT_EQ(SettingRows().size(), rows.size());
    const std::vector<std::string> defaults = Fields(settings_);
    ASSERT_EQ(settings_.Save(), S_OK);
    for (const auto& row : rows) {
        EXPECT_EQ(Stored(row[0]), CellValue(row[1])) << ToUtf8(row[0]);
        Store(row[0], CellValue(row[2]));
    }
    Store(TEXT("LandscapeOrienatation"), Dword(0x80000000));  // Saved as 1 again.
    for (const WCHAR* name : {TEXT("PageWidth"), TEXT("HiddenRun"), TEXT("WebPageTargetHeight")}) {
        EXPECT_EQ(Stored(name), StoredValue{}) << ToUtf8(name);
    }
    ASSERT_EQ(settings_.Load(), S_OK);
    const std::vector<std::string> loaded = Fields(settings_);
    ASSERT_EQ(settings_.Save(), S_OK);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(ToUtf8(rows[i][0]));
        EXPECT_EQ(loaded[i], ToUtf8(rows[i][3]));
        EXPECT_NE(loaded[i], defaults[i]) << "shows nothing";
        EXPECT_EQ(Stored(rows[i][0]), CellValue(rows[i][2]));
        // In four bytes too: the type counts.
        Store(rows[i][0], rows[i][1][0] == 'd' ? Text(TEXT("7")) : Dword(7));
    }

    // What is missing, or of the wrong type or size, leaves its field; passwords are emptied.
    Store(TEXT("LoadDelay"), Value(REG_DWORD, "ab", 2));
    Store(TEXT("PaperSize"), Value(REG_DWORD, "abcde", 5));
    Store(TEXT("secUserPassword"), {REG_SZ, "YQBiAA=="});
    EXPECT_EQ(RegDeleteValueW(key_.Get(), TEXT("secOwnerPassword")), ERROR_SUCCESS);
    std::vector<std::string> kept = loaded;
    kept[24] = kept[25] = "";
    ASSERT_EQ(settings_.Load(), S_OK);
    EXPECT_EQ(Fields(settings_), kept);

    const SecuritySettings* const security = settings_.Security.Get();
    settings_.ResetToDefaults();
    EXPECT_EQ(Fields(settings_), defaults);
    EXPECT_EQ(settings_.Security.Get(), security);
}

TEST_F(ConversionSettingsTest, LengthsAreCutAndOldLengthsAndVersionsTakenOver) {
    Store(TEXT("PageWidth"), Dword(6120));
    Store(TEXT("PageHeight"), Dword(7920));
    Store(TEXT("PageHeight2"), Dword(595000));
    Store(TEXT("MarginTop"), Dword(0xFFFFFFFF));
    Store(TEXT("MarginLeft"), Text(TEXT("6")));
    ASSERT_EQ(settings_.Load(), S_OK);
    EXPECT_EQ(settings_.PageWidth, 612.0);
    EXPECT_EQ(settings_.PageHeight, 595.0);
    EXPECT_EQ(settings_.MarginTop, 429496729.5);
    for (const WCHAR* name : {TEXT("PageWidth"), TEXT("PageHeight"), TEXT("MarginTop")}) {
        EXPECT_EQ(Stored(name), StoredValue{}) << ToUtf8(name);
    }
    EXPECT_EQ(Stored(TEXT("MarginLeft")), Text(TEXT("6"))) << "is none of ours";

    // Cut on saving, within what a value can hold.
    constexpr std::pair<double, std::uint32_t> kLengths[] = {
        {612.0009, 612000},  {4294967.2959, 0xFFFFFFFF},
        {0.0019999, 1},      {-3, 0},
        {1e300, 0xFFFFFFFF}, {std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (const auto& [points, stored] : kLengths) {
        settings_.MarginLeft = points;
        ASSERT_EQ(settings_.Save(), S_OK);
        EXPECT_EQ(Stored(TEXT("MarginLeft2")), Dword(stored)) << points;
    }

    constexpr std::uint32_t kVersions[][2] = {{0, 0},        {15, 15},      {16, 0x10000},
                                              {20, 0x10004}, {23, 0x10007}, {24, 24}};
    for (const auto& [stored, loaded] : kVersions) {
        Store(TEXT("PDFSpecification"), Dword(stored));
        ASSERT_EQ(settings_.Load(), S_OK);
        EXPECT_EQ(settings_.PDFSpecification, loaded);
        EXPECT_EQ(Stored(TEXT("PDFSpecification")), Dword(stored));
    }
    // Without a key, or without the name of one, nothing changes and nothing is written.
    for (const WCHAR* path : {TEXT("Software\\No such key"), TEXT(""), LPCWSTR{}}) {
        Record bare(path);
        bare.PDFSpecification = 20;
        ASSERT_EQ(bare.Load(), S_OK);
        EXPECT_EQ(bare.PDFSpecification, 20u);
        EXPECT_EQ(bare.Save(), S_OK);
    }
}

TEST_F(ConversionSettingsTest, LackOfMemoryNeverPassesForSettingsThatWereNotSaved) {
    Store(TEXT("RunPDFPath"), Text(TEXT("C:\\app.exe")));
    Store(TEXT("secUserPassword"), {REG_BINARY, "YQBiAA=="});
    Store(TEXT("sec128EncryptMeta"), Dword(0));
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        Record settings(kKey);
        const bool isWhole = settings.Security && settings.RunApp;
        const bool wasMade = !hasFailed();
        const HRESULT loaded = settings.Load();
        EXPECT_EQ(loaded, !isWhole ? E_FAIL : wasMade && hasFailed() ? E_OUTOFMEMORY : S_OK);
        EXPECT_TRUE(isWhole || settings.Save() == E_FAIL);
        const bool goesOn = settings.Security && !settings.Security->EncryptMetadata128;
        EXPECT_EQ(goesOn, isWhole) << "what does not fit keeps the rest from being loaded";
        EXPECT_TRUE(loaded != S_OK || settings.Security->UserPassword == TEXT("ab"));
    });
    EXPECT_GT(failures, 6u);  // Two records and two texts, then a path, a password and its text.
    EXPECT_EQ(Stored(TEXT("LoadDelay")), StoredValue{}) << "saved without a record";
}

TEST_F(ConversionSettingsTest, RefusedWritesArePassedOver) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    for (const char* call : {"RegCreateKeyExW", "RegSetValueExW"}) {
        const platform::testing::InjectedFault fault(call, 1, ERROR_DISK_FULL);
        EXPECT_EQ(settings_.Save(), S_OK);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(Stored(TEXT("WebPageTargetWidth")), StoredValue{});
    }
    EXPECT_EQ(Stored(TEXT("sec128EncryptMeta")), Dword(1));
}

TEST_F(ConversionSettingsTest, TextsAreReadOnlyWhenTheyAreWholeTexts) {
    for (const auto& row : test_support::ReadCases(SETTINGS_CASES "stored_texts.tsv", 4)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        // Not from a copy of just these bytes: Windows looks behind them for a terminator.
        const auto* const bytes = reinterpret_cast<const BYTE*>(row[2].c_str());
        RegSetValueExW(key_.Get(), TEXT("v"), 0, Number(row[0]), bytes, Number(row[1]));
        AUX::WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        EXPECT_TRUE(ReadStringValue(key_.Get(), TEXT("v"), text));
        EXPECT_EQ(text, row[3].c_str());
    }
}

void ExpectLine(const Record& settings, const char* expected, const WCHAR* first = TEXT(""),
                const WCHAR* second = TEXT("")) {
    AUX::WString line;
    ASSERT_TRUE(line.Assign(TEXT("what stood here before")));
    settings.BuildCommandLine(first, second, line);
    EXPECT_EQ(Shown(line), expected);
}

TEST(BuildCommandLine, HasEveryPieceInItsPlace) {
    Record settings(nullptr);
    settings.WebPageTargetHeight = 2000;
    ASSERT_TRUE(settings.SharedDataName.Assign(TEXT("QVD:IEP:HTMLData")));
    ExpectLine(settings,
               R"("" "" \b \h \r \iw 1280 \ih 2000 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
               R"(\mt 0 \mb 0 \ml 0 \mr 0 \sm QVD:IEP:HTMLData )");
    settings.LandscapeOrientation = true;
    settings.GenerateLinks = false;
    // Wins over the shared name.
    ASSERT_TRUE(settings.StorageFile.Assign(TEXT("C:\\Temp\\qvdstg_34bf15.bin")));
    ExpectLine(settings,
               R"("" "" \l \b \r \iw 1280 \ih 2000 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
               R"(\mt 0 \mb 0 \ml 0 \mr 0 \bp C:\Temp\qvdstg_34bf15.bin )");

    // Numbers are the low 32 bits read as signed ones, lengths in tenths, cut and not rounded.
    settings.GenerateLinks = settings.HiddenRun = true;
    settings.WebPageTargetWidth = 0x7FFFFFFF;
    settings.WebPageTargetHeight = 0x80000000;
    settings.LoadDelay = 0xFFFFFFFF;
    settings.PageWidth = 429496729.5;   // The largest that the registry can hold, in tenths.
    settings.PageHeight = 429496729.7;  // One tenth beyond 32 bits.
    settings.MarginTop = 14.17;
    settings.MarginBottom = -0.19;
    settings.MarginLeft = std::numeric_limits<double>::quiet_NaN();
    settings.MarginRight = std::numeric_limits<double>::infinity();
    ASSERT_TRUE(settings.StorageFile.Assign(TEXT("C:\\My Temp\\q.bin")) &&
                settings.CeArgument.Assign(TEXT("a \"b\"")));
    ExpectLine(settings,
               R"("one" "two "2"" \l \b \h \r \hi \iw 2147483647 \ih -2147483648 \ld -1 \is 65540 )"
               R"(\ic 1 \pw -1 \ph 1 \mt 141 \mb -1 \ml 0 \mr 0 \bp C:\My Temp\q.bin \ce a "b" )",
               TEXT("one"), TEXT("two \"2\""));

    // Fresh again, with all that belonged to the job; every flag off.
    settings.ResetToDefaults();
    settings.UseWebPageBackgroundColor = settings.GenerateLinks = settings.RunPDFApp = false;
    ExpectLine(settings, R"("" "" \iw 1280 \ih 800 \ld 500 \is 65540 \ic 1 \pw 5953 \ph 8419 )"
                         R"(\mt 0 \mb 0 \ml 0 \mr 0 )");
}

std::string Encoded(const WideString& password) {
    AUX::AString text;
    EXPECT_TRUE(EncodePasswordText(AUX::WStringView(password), text));
    EXPECT_EQ(EncodedPasswordSize(static_cast<std::uint32_t>(password.size())), text.Length());
    return {text.Text(), text.Length()};
}

void ExpectDecoded(const std::string& text, const WideString& expected,
                   AUX::Status status = AUX::kStatusOk) {
    AUX::WString password;
    ASSERT_TRUE(password.Assign(TEXT("left from before")));
    EXPECT_EQ(DecodePasswordText(AUX::AStringView(text), password), status);
    EXPECT_EQ(WideString(AUX::WStringView(password)), expected);
}

TEST(PasswordText, IsWrittenAndReadToTheByte) {
    for (const auto& row : test_support::ReadCases(SETTINGS_CASES "password_text.tsv", 3)) {
        SCOPED_TRACE(ToUtf8(row[1]));
        const bool isRefused = row[0] == TEXT("X");
        EXPECT_TRUE(row[0] != TEXT("W") || Encoded(row[2]) == ToUtf8(row[1]));
        ExpectDecoded(ToUtf8(row[1]), row[2],
                      isRefused ? AUX::kStatusInvalidArgument : AUX::kStatusOk);
    }
    std::mt19937 random(20110407);
    for (std::size_t length = 0; length < 130; ++length) {
        WideString password(length, 0);
        for (WCHAR& unit : password) unit = static_cast<WCHAR>(random());
        SCOPED_TRACE(length);
        ExpectDecoded(Encoded(password), password);
    }
}

TEST(WipeText, OverwritesTheWholeBlock) {
    AUX::WString text;
    ASSERT_TRUE(text.Append(TEXT("a long secret")));
    ASSERT_TRUE(text.SetLength(4));  // The rest still lies behind the end.
    const std::uint32_t capacity = text.Capacity();
    WipeText(text);
    EXPECT_TRUE(text.IsEmpty());
    ASSERT_EQ(text.Capacity(), capacity);
    for (std::uint32_t i = 0; i < 14; ++i) EXPECT_EQ(text.Data()[i], 0) << i;
}

}  // namespace
