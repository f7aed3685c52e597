#include "options/advanced_tab.h"

#include "platform/testing.h"
#include "settings/vocabularies.h"
#include "tests/options/dialog_support.h"

namespace {

using namespace options_test;

class AdvancedTabTest : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        ASSERT_TRUE(tab_.Create(frame_));
        panel_ = PageWith(tab_.Window, {1030});
        ASSERT_TRUE(panel_);
    }
    /// What OK would store after the controls have shown the record.
    void StoreWhatIsShown() {
        tab_.Bind(settings_);
        tab_.WriteBack();
    }
    [[nodiscard]] bool IsOn(int id) const { return IsDlgButtonChecked(panel_, id) == BST_CHECKED; }

    ConversionSettings settings_{nullptr};
    AdvancedTab tab_;
    HWND panel_ = nullptr;
};

TEST_F(AdvancedTabTest, ChecksAndRadiosAreTheirFields) {
    for (const bool isOn : {true, false, true}) {
        settings_.UseWebPageCopy = isOn;
        settings_.RunPDFApp = !isOn;
        settings_.RunApp->UseCustomApp = isOn;
        tab_.Bind(settings_);
        EXPECT_EQ(IsDlgButtonChecked(tab_.Window, 1028) == BST_CHECKED, isOn);
        EXPECT_EQ(IsOn(206), !isOn);
        EXPECT_EQ(IsOn(207), !isOn);
        EXPECT_EQ(IsOn(208), isOn);
        Press(tab_.Window, 1028);
        Press(panel_, 206);
        EnableWindow(GetDlgItem(panel_, isOn ? 207 : 208), TRUE);
        Press(panel_, isOn ? 207 : 208);
        tab_.WriteBack();
        EXPECT_EQ(settings_.UseWebPageCopy, !isOn);
        EXPECT_EQ(settings_.RunPDFApp, isOn);
        EXPECT_EQ(settings_.RunApp->UseCustomApp, !isOn);
    }
}

TEST_F(AdvancedTabTest, TextsAreStoredAsTheyStand) {
    EXPECT_EQ(settings_.RunApp->AppParameters, TEXT("%f"));
    ASSERT_TRUE(settings_.RunApp->AppPath.Assign(TEXT("C:\\no such <file>")));
    tab_.Bind(settings_);
    EXPECT_EQ(TextOf(panel_, 209), "C:\\no such <file>");
    EXPECT_EQ(TextOf(panel_, 210), "%f");
    Type(panel_, 209, "");
    Type(panel_, 210, "-x \"%f\"");
    tab_.WriteBack();
    EXPECT_TRUE(settings_.RunApp->AppPath.IsEmpty());
    EXPECT_EQ(settings_.RunApp->AppParameters, TEXT("-x \"%f\""));
    SetDlgItemTextW(panel_, 210, platform::WideString(3000, TEXT('x')).c_str());
    tab_.WriteBack();
    EXPECT_EQ(settings_.RunApp->AppParameters.Length(), 1023u);
}

TEST_F(AdvancedTabTest, ListsShowCodesAndLevels) {
    constexpr struct {
        std::uint32_t code;
        LRESULT row;
        std::uint32_t stored;
    } kCases[] = {{0x10003, 0, 0x10003}, {0x10005, 2, 0x10005}, {0x10007, 4, 0x10007},
                  {0x10002, 4, 0x10007}, {0x10008, 4, 0x10007}, {0, 4, 0x10007}};
    for (const auto& c : kCases) {
        settings_.PDFSpecification = c.code;
        StoreWhatIsShown();
        EXPECT_EQ(RowOf(panel_, 1030), c.row);
        EXPECT_EQ(settings_.PDFSpecification, c.stored);
    }
    for (std::uint32_t row = 0; row < std::size(PdfVersionTable); ++row) {
        Choose(panel_, 1030, row);
        tab_.WriteBack();
        EXPECT_EQ(settings_.PDFSpecification, PdfVersionTable[row].code);
    }
    for (const std::uint32_t level : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
        settings_.CompressionLevel = level;
        StoreWhatIsShown();
        EXPECT_EQ(RowOf(panel_, 1031), level < 3 ? static_cast<LRESULT>(level) : -1);
        EXPECT_EQ(settings_.CompressionLevel, level) << "a number that cannot be shown stays";
    }
    Choose(panel_, 1031, 2);
    tab_.WriteBack();
    EXPECT_EQ(settings_.CompressionLevel, 2u);
    // However often it is filled.
    EXPECT_EQ(SendMessageW(GetDlgItem(panel_, 1030), CB_GETCOUNT, 0, 0), 5);
    EXPECT_EQ(SendMessageW(GetDlgItem(panel_, 1031), CB_GETCOUNT, 0, 0), 3);
}

TEST_F(AdvancedTabTest, TheWidthIsAWholeNumberInItsRange) {
    constexpr struct {
        const char* typed;
        std::uint32_t stored;
        const char* shownAfterwards;
    } kCases[] = {{"1280.4", 1280, "1280.0"}, {"0", 0, "0.0"},       {"6000", 5000, "5000.0"},
                  {"-3", 0, "0.0"},           {"900", 900, "900.0"}, {"nine", 900, "900.0"}};
    for (const auto& c : kCases) {
        Type(panel_, 1020, c.typed);
        tab_.WriteBack();
        EXPECT_EQ(settings_.WebPageTargetWidth, c.stored) << c.typed;
        EXPECT_EQ(TextOf(panel_, 1020), c.typed);
        tab_.Bind(settings_);
        EXPECT_EQ(TextOf(panel_, 1020), c.shownAfterwards);
    }
    Click(panel_, 1025, true);
    EXPECT_EQ(TextOf(panel_, 1020), "901.0");
    settings_.WebPageTargetWidth = 0xFFFFFFFF;
    StoreWhatIsShown();
    EXPECT_EQ(settings_.WebPageTargetWidth, 5000u);
}

TEST_F(AdvancedTabTest, EnablingFollowsTheRunOptions) {
    for (const bool runs : {false, true}) {
        for (const bool isCustom : {false, true}) {
            SCOPED_TRACE(testing::Message() << runs << isCustom);
            settings_.RunPDFApp = runs;
            settings_.RunApp->UseCustomApp = isCustom;
            tab_.Bind(settings_);
            const auto expect = [&](bool choice, bool application) {
                for (const int id : {207, 208}) EXPECT_EQ(IsEnabled(panel_, id), choice) << id;
                for (const int id : {209, 210, 211}) {
                    EXPECT_EQ(IsEnabled(panel_, id), application) << id;
                }
                EXPECT_TRUE(IsEnabled(panel_, 206) && IsEnabled(tab_.Window, 1028));
            };
            expect(runs, runs && isCustom);
            if (!runs) continue;
            Press(panel_, isCustom ? 207 : 208);
            expect(true, !isCustom);
            Press(panel_, 206);
            expect(false, false);
            tab_.WriteBack();
            EXPECT_EQ(settings_.RunApp->UseCustomApp, !isCustom) << "stored, though it is greyed";
        }
    }
}

TEST_F(AdvancedTabTest, BrowsingPutsTheProgramIntoThePath) {
    settings_.RunApp->UseCustomApp = true;
    ASSERT_TRUE(settings_.RunApp->AppPath.Assign(TEXT("old")));
    tab_.Bind(settings_);
    {
        const platform::testing::SaveDialogScript cancelled(std::nullopt);
        Press(panel_, 211);
        ASSERT_EQ(cancelled.Asked().size(), 1u);
        const platform::testing::SaveDialogRequest& asked = cancelled.Asked()[0];
        EXPECT_EQ(asked.owner, panel_);
        EXPECT_TRUE(asked.filter.starts_with(TEXT("Applications (*.exe)")));
        EXPECT_EQ(asked.defaultExtension, TEXT("exe"));
        EXPECT_EQ(asked.flags & 0x880020u, 0x880020u);
        EXPECT_TRUE(asked.suggestedName.empty());
        EXPECT_EQ(asked.maxFile, 260u);
    }
    EXPECT_EQ(TextOf(panel_, 209), "old");
    const platform::WideString program = profile_.Path(TEXT("viewer.exe"));
    ASSERT_TRUE(test_support::WriteWholeFile(program, "MZ"));
    const platform::testing::SaveDialogScript chosen(program);
    Press(panel_, 211);
    EXPECT_EQ(TextOf(GetDlgItem(panel_, 209)), program);
}

}  // namespace
