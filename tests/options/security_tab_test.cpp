#include "options/security_tab.h"

#include "platform/testing.h"
#include "tests/options/dialog_support.h"

namespace {

using namespace options_test;
using Security = SecuritySettings;

/// A control is known by its page and its id there, since ids mean several controls.
enum class On { Tab, Panel40, Panel128 };

class SecurityTabTest : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        ASSERT_TRUE(tab_.Create(frame_));
    }
    [[nodiscard]] HWND Page(On page) const {
        return page == On::Tab ? tab_.Window
                               : PageWith(tab_.Window, {page == On::Panel40 ? 293 : 297});
    }
    [[nodiscard]] bool IsShown(On page) const {
        return (GetWindowLongPtrW(Page(page), GWL_STYLE) & static_cast<LONG_PTR>(WS_VISIBLE)) != 0;
    }
    Security& Record() { return *settings_.Security; }

    ConversionSettings settings_{nullptr};
    SecurityTab tab_;
};

TEST_F(SecurityTabTest, EachControlIsItsOwnField) {
    constexpr struct {
        On page;
        int id;
        bool Security::*field;
    } kChecks[] = {
        {On::Tab, 206, &Security::Enabled},
        {On::Tab, 285, &Security::HasUserPassword},
        {On::Tab, 286, &Security::HasOwnerPassword},
        {On::Panel40, 206, &Security::Allow40Printing},
        {On::Panel40, 293, &Security::Allow40Changing},
        {On::Panel40, 294, &Security::Allow40Copying},
        {On::Panel40, 295, &Security::Allow40Comments},
        {On::Panel128, 292, &Security::Allow128ContentAccess},
        {On::Panel128, 206, &Security::Allow128Copying},
        {On::Panel128, 296, &Security::EncryptMetadata128},
    };
    for (const auto& wanted : kChecks) {
        SCOPED_TRACE(wanted.id);
        // One is on, then off, and all others are otherwise: from the record, and by hand.
        for (const bool isOn : {true, false}) {
            for (const auto& row : kChecks) Record().*row.field = (&row == &wanted) == isOn;
            tab_.Bind(settings_);
            for (const auto& row : kChecks) {
                EXPECT_EQ(IsDlgButtonChecked(Page(row.page), row.id) == BST_CHECKED,
                          (&row == &wanted) == isOn);
                Record().*row.field = false;
                EnableWindow(GetDlgItem(Page(row.page), row.id), TRUE);
            }
            Press(Page(wanted.page), wanted.id);
            tab_.WriteBack();
            for (const auto& row : kChecks) {
                EXPECT_EQ(Record().*row.field, !isOn) << row.id;
            }
        }
    }
    constexpr struct {
        On page;
        int id;
        std::uint32_t Security::*field;
        std::uint32_t rows;
    } kLists[] = {{On::Tab, 290, &Security::Type, 5},
                  {On::Panel128, 297, &Security::Changes128, 5},
                  {On::Panel128, 298, &Security::Printing128, 3}};
    for (const auto& list : kLists) {
        SCOPED_TRACE(list.id);
        for (std::uint32_t row = 0; row < list.rows; ++row) {
            Record().*list.field = row;
            tab_.Bind(settings_);
            EXPECT_EQ(RowOf(Page(list.page), list.id), static_cast<LRESULT>(row));
            Choose(Page(list.page), list.id, (row + 1) % list.rows);
            tab_.WriteBack();
            EXPECT_EQ(Record().*list.field, (row + 1) % list.rows);
        }
        EXPECT_EQ(SendMessageW(GetDlgItem(Page(list.page), list.id), CB_GETCOUNT, 0, 0),
                  static_cast<LRESULT>(list.rows));
        for (const std::uint32_t beyond : {list.rows, 0x80000000u, 0xFFFFFFFFu}) {
            Record().*list.field = beyond;
            tab_.Bind(settings_);
            EXPECT_EQ(RowOf(Page(list.page), list.id), -1) << beyond;
            tab_.WriteBack();
            EXPECT_EQ(Record().*list.field, 0u);
        }
    }
    for (const auto& [id, field] :
         {std::pair(287, &Security::UserPassword), std::pair(288, &Security::OwnerPassword)}) {
        ASSERT_TRUE((Record().*field).Assign(TEXT("p\u00E4ss")));
        tab_.Bind(settings_);
        EXPECT_EQ(TextOf(tab_.Window, id), "p\xC3\xA4ss");
        Type(tab_.Window, id, "q");
        tab_.WriteBack();
        EXPECT_EQ(Record().*field, TEXT("q"));
    }
    // What does not fit is cut where it is stored.
    SetDlgItemTextW(tab_.Window, 287, platform::WideString(3000, TEXT('x')).c_str());
    tab_.WriteBack();
    EXPECT_EQ(Record().UserPassword.Length(), 1023u);
    EXPECT_EQ(Record().OwnerPassword, TEXT("q"));
}

TEST_F(SecurityTabTest, EnablingFollowsTheTwoBoxes) {
    // s: with security; o: with a password for the permissions as well.
    constexpr struct {
        On page;
        int id;
        const char* with;
    } kRules[] = {
        {On::Panel40, 206, "o"},  {On::Panel40, 293, "o"},  {On::Panel40, 294, "o"},
        {On::Panel40, 295, "o"},  {On::Panel128, 297, "o"}, {On::Panel128, 298, "o"},
        {On::Panel128, 292, "o"}, {On::Panel128, 206, "o"}, {On::Panel128, 296, "s"},
        {On::Tab, 285, "s"},      {On::Tab, 286, "s"},      {On::Tab, 287, "s"},
        {On::Tab, 288, "s"},      {On::Tab, 290, "s"},      {On::Tab, 206, ""},
    };
    const auto expect = [&](bool isSecure, bool hasOwner) {
        SCOPED_TRACE(testing::Message() << isSecure << hasOwner);
        for (const auto& rule : kRules) {
            const bool isOn = !*rule.with || (isSecure && (*rule.with == 's' || hasOwner));
            EXPECT_EQ(IsEnabled(Page(rule.page), rule.id), isOn) << rule.id;
        }
    };
    for (const bool isSecure : {false, true}) {
        for (const bool hasOwner : {false, true}) {
            Record().Enabled = isSecure;
            Record().HasOwnerPassword = hasOwner;
            tab_.Bind(settings_);
            expect(isSecure, hasOwner);
        }
    }
    Press(tab_.Window, 286);
    expect(true, false);
    // The other password has no part in it: a click does not even look.
    EnableWindow(GetDlgItem(tab_.Window, 287), FALSE);
    Press(tab_.Window, 285);
    EXPECT_FALSE(IsEnabled(tab_.Window, 287));
    Press(tab_.Window, 206);
    expect(false, false);
    Press(tab_.Window, 206);
    Press(tab_.Window, 286);
    expect(true, true);
}

TEST_F(SecurityTabTest, TheLevelChoosesThePanelAndBothKeepTheirContent) {
    const HWND placeHolder = GetDlgItem(tab_.Window, 291);
    EXPECT_FALSE(IsWindowVisible(placeHolder));
    tab_.Bind(settings_);
    CheckDlgButton(Page(On::Panel40), 293, BST_CHECKED);
    SendMessageW(GetDlgItem(Page(On::Panel128), 297), CB_SETCURSEL, 3, 0);
    RECT corner{};
    GetWindowRect(placeHolder, &corner);
    for (const WPARAM level : {1, 0, 2, 3, 4, 0, 4}) {
        Choose(tab_.Window, 290, level);
        EXPECT_EQ(IsShown(On::Panel40), level == 0);
        EXPECT_EQ(IsShown(On::Panel128), level != 0);
        RECT place{};
        GetWindowRect(Page(level == 0 ? On::Panel40 : On::Panel128), &place);
        EXPECT_EQ(place.left, corner.left);
        EXPECT_EQ(place.top, corner.top);
    }
    tab_.WriteBack();
    EXPECT_TRUE(Record().Allow40Changing);
    EXPECT_EQ(Record().Changes128, 3u);
    // A reset goes back to level 0.
    settings_.ResetToDefaults();
    tab_.Bind(settings_);
    EXPECT_TRUE(IsShown(On::Panel40) && !IsShown(On::Panel128));
    Record().Type = 9;
    tab_.Bind(settings_);
    EXPECT_TRUE(IsShown(On::Panel40)) << "as it would be stored";
}

TEST_F(SecurityTabTest, ValidateSaysWhatIsShownAndChangesNothing) {
    const platform::testing::MessageBoxRecorder messages;
    Record().Enabled = true;
    tab_.Bind(settings_);
    EXPECT_FALSE(tab_.Validate());
    Press(tab_.Window, 285);
    Press(tab_.Window, 286);
    Type(tab_.Window, 287, "same");
    EXPECT_FALSE(tab_.Validate());
    Type(tab_.Window, 288, "same");
    EXPECT_FALSE(tab_.Validate());
    ASSERT_EQ(messages.Shown().size(), 3u);
    for (const auto& message : messages.Shown()) {
        EXPECT_TRUE(message.owner == tab_.Window || message.owner == frame_);
        EXPECT_TRUE(message.caption.empty());
        EXPECT_EQ(message.type, static_cast<UINT>(MB_OK));
    }
    EXPECT_TRUE(messages.Shown()[2].text.starts_with(TEXT("The passwords to document open")));
    Type(tab_.Window, 288, "other");
    EXPECT_TRUE(tab_.Validate());
    EXPECT_EQ(messages.Shown().size(), 3u);
    EXPECT_FALSE(Record().HasUserPassword || Record().HasOwnerPassword);
    EXPECT_TRUE(Record().UserPassword.IsEmpty() && Record().OwnerPassword.IsEmpty());
}

}  // namespace
