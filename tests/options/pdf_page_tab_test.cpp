#include "options/pdf_page_tab.h"

#include "resources/resource_ids.h"
#include "settings/vocabularies.h"
#include "tests/options/dialog_support.h"

namespace {

using namespace options_test;

class PdfPageTabTest : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        ASSERT_TRUE(tab_.Create(frame_));
    }
    std::string Text(int id) const { return TextOf(tab_.Window, id); }

    ConversionSettings settings_{nullptr};
    PdfPageTab tab_;
};

struct LengthCase {
    int edit, upDown;
    double ConversionSettings::*field;
    double most;
};
constexpr LengthCase kLengths[] = {
    {1003, 1004, &ConversionSettings::PageWidth, 10000},
    {1005, 1007, &ConversionSettings::PageHeight, 10000},
    {1010, 1011, &ConversionSettings::MarginTop, 1000},
    {1014, 1015, &ConversionSettings::MarginBottom, 1000},
    {1012, 1013, &ConversionSettings::MarginLeft, 1000},
    {1016, 1017, &ConversionSettings::MarginRight, 1000},
};

TEST_F(PdfPageTabTest, EachLengthGoesThroughItsOwnControls) {
    settings_.PaperSize = 0;
    double points = 12.5;
    for (const LengthCase& length : kLengths) settings_.*length.field = points++;
    tab_.Bind(settings_);
    points = 12.5;
    for (const LengthCase& length : kLengths) {
        SCOPED_TRACE(length.edit);
        EXPECT_EQ(std::stod(Text(length.edit)), points);
        Click(tab_.Window, length.upDown, true);
        EXPECT_EQ(std::stod(Text(length.edit)), points + 1);
        tab_.WriteBack();
        EXPECT_EQ(settings_.*length.field, points + 1);
        Type(tab_.Window, length.edit, "99999");
        tab_.WriteBack();
        EXPECT_EQ(settings_.*length.field, length.most);
        EXPECT_EQ(Text(length.edit), "99999") << "shown at the next change only";
        Click(tab_.Window, length.upDown, false);
        EXPECT_EQ(std::stod(Text(length.edit)), length.most - 1);
        Type(tab_.Window, length.edit, "");
        tab_.WriteBack();
        EXPECT_EQ(settings_.*length.field, length.most > 1000 ? 0.005 : 0.0);
        settings_.*length.field = 4294967.295;  // the largest of the registry
        tab_.Bind(settings_);
        EXPECT_EQ(std::stod(Text(length.edit)), length.most);
        settings_.*length.field = points++;
        tab_.Bind(settings_);
    }
    settings_.MarginTop = 1.001;  // whose thousandfold is a little less than 1001
    for (int i = 0; i < 3; ++i) {
        tab_.Bind(settings_);
        tab_.WriteBack();
    }
    EXPECT_EQ(settings_.MarginTop, 1.001);
}

TEST_F(PdfPageTabTest, PapersGiveTheSizeAndCustomLeavesIt) {
    settings_.PageWidth = 612.5;
    settings_.PageHeight = 800.25;
    const LRESULT papers = SendMessageW(GetDlgItem(tab_.Window, 1029), CB_GETCOUNT, 0, 0);
    ASSERT_EQ(papers, static_cast<LRESULT>(std::size(PaperSizeTable)));
    for (std::uint32_t row = 0; row < std::size(PaperSizeTable); ++row) {
        SCOPED_TRACE(row);
        settings_.PaperSize = 0;
        settings_.PageWidth = 612.5;
        settings_.PageHeight = 800.25;
        tab_.Bind(settings_);
        EXPECT_EQ(Text(1003), "612.5");
        Choose(tab_.Window, 1029, row);
        EXPECT_EQ(IsEnabled(tab_.Window, 1003), row == 0);
        EXPECT_EQ(IsEnabled(tab_.Window, 1005), row == 0);
        EXPECT_TRUE(IsEnabled(tab_.Window, 1004) && IsEnabled(tab_.Window, 1007));
        tab_.WriteBack();
        EXPECT_EQ(settings_.PaperSize, row);
        EXPECT_EQ(settings_.PageWidth, row == 0 ? 612.5 : PaperSizeTable[row].width);
        EXPECT_EQ(settings_.PageHeight, row == 0 ? 800.25 : PaperSizeTable[row].height);
    }
    Choose(tab_.Window, 1029, 3);
    EXPECT_EQ(Text(1005), "492.0") << "as it is in the list";
    // Some systems' arrows do not take the mouse beside a disabled edit; what they send counts.
    const HWND upDown = GetDlgItem(tab_.Window, 1004);
    NMUPDOWN click{{upDown, 1004, UDN_DELTAPOS}, 5, -1};
    SendMessageW(tab_.Window, WM_NOTIFY, 1004, reinterpret_cast<LPARAM>(&click));
    EXPECT_EQ(click.iDelta, 0);
    EXPECT_EQ(click.iPos, 1223000);
    EXPECT_EQ(Text(1003), "1223.0") << "the arrows move what cannot be typed";
    Choose(tab_.Window, 1029, 0);
    EXPECT_EQ(Text(1003), "1223.0");
}

TEST_F(PdfPageTabTest, UnitsChangeWhatIsShownOnly) {
    tab_.Bind(settings_);
    EXPECT_EQ(Text(1003), "595.0") << "A4 is the list's, not the record's 595.3";
    EXPECT_EQ(Text(1005), "842.0");
    constexpr struct {
        WPARAM unit;
        const char* width;
    } kCases[] = {{1, "8.264"}, {2, "210.0"}, {0, "595.0"},
                  {2, "210.0"}, {1, "8.264"}, {0, "595.0"}};
    for (const auto& c : kCases) {
        Choose(tab_.Window, 1028, c.unit);
        EXPECT_EQ(Text(1003), c.width);
        tab_.WriteBack();
        EXPECT_EQ(settings_.Units, c.unit);
        EXPECT_EQ(settings_.PageWidth, 595.0);
    }
    Choose(tab_.Window, 1028, 1);
    Type(tab_.Window, 1010, "1.5");
    Choose(tab_.Window, 1028, 0);
    EXPECT_EQ(Text(1010), "108.0") << "taken in as inches";
    Choose(tab_.Window, 1028, 2);
    Click(tab_.Window, 1011, true);
    tab_.WriteBack();
    EXPECT_EQ(settings_.MarginTop, 110.833);
}

TEST_F(PdfPageTabTest, NumbersBeyondTheListsAreNotLost) {
    constexpr struct {
        std::uint32_t paper, units, storedPaper;
    } kCases[] = {{18, 3, 18}, {0xFFFFFFFF, 7, 0xFFFFFFFF}, {0x80000000, 0xFFFFFFFF, 0x80000000}};
    for (const auto& c : kCases) {
        settings_.ResetToDefaults();
        settings_.PaperSize = c.paper;
        settings_.Units = c.units;
        settings_.LandscapeOrientation = true;
        tab_.Bind(settings_);
        EXPECT_EQ(RowOf(tab_.Window, 1029), CB_ERR);
        EXPECT_EQ(RowOf(tab_.Window, 1028), 0);
        EXPECT_FALSE(IsEnabled(tab_.Window, 1003) || IsEnabled(tab_.Window, 1005));
        EXPECT_EQ(Text(1003), "595.3") << "no paper replaces it";
        Press(tab_.Window, QVD_RADIO_PORTRAIT);
        tab_.WriteBack();
        EXPECT_EQ(settings_.PaperSize, c.storedPaper);
        EXPECT_EQ(settings_.Units, 0u);
        EXPECT_EQ(settings_.PageWidth, 595.3);
        EXPECT_FALSE(settings_.LandscapeOrientation);
    }
    for (const bool isLandscape : {true, false}) {
        settings_.LandscapeOrientation = isLandscape;
        tab_.Bind(settings_);
        Press(tab_.Window, isLandscape ? QVD_RADIO_PORTRAIT : QVD_RADIO_LANDSCAPE);
        tab_.WriteBack();
        EXPECT_EQ(settings_.LandscapeOrientation, !isLandscape);
    }
}

TEST_F(PdfPageTabTest, WithoutItsWindowItChangesNothing) {
    DestroyWindow(tab_.Window);
    EXPECT_EQ(tab_.Window, nullptr);
    settings_.Units = 2;
    tab_.Bind(settings_);
    tab_.WriteBack();
    EXPECT_EQ(settings_.Units, 2u);
    EXPECT_EQ(settings_.PageWidth, 595.3);
    ASSERT_TRUE(tab_.Create(frame_)) << "and can be used again";
    tab_.Bind(settings_);
    EXPECT_EQ(Text(1003), "210.0");
}

}  // namespace
