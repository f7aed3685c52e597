#include "browser/band_window.h"

#include "tests/driver/command_test.h"

namespace {

using platform::WideString;
using platform::testing::SaveDialogScript;

class BandWindowTest : public driver_test::CommandTest {
protected:
    WideString Address() const { return WideString(AUX::WStringView(band_.Job.Items[0]->Source)); }

    BandWindow band_;
    SaveDialogScript dialog_{output_};
};

TEST_F(BandWindowTest, TheWholeIdChoosesTheCommand) {
    bool handled = true;
    EXPECT_EQ(band_.OnCommand(1, handled), 1) << "no browser yet";
    band_.Browser = platform::ComPtr<IWebBrowser2>(browser_.Get());
    EXPECT_EQ(band_.OnCommand(1, handled), 0);
    EXPECT_EQ(Address(), WideString()) << "an address that cannot be read travels empty";
    page_.address = TEXT("http://h/p");
    const struct {
        WPARAM id;
        LRESULT result;
        std::size_t dialogs, messages;
    } kCases[] = {
        {1, 0, 1, 0},
        {0x8011, 0, 1, 0},
        {0x8015, 1, 1, 1},
        {0, 1, 0, 0},
        {0x10001, 1, 0, 0},
        {0x18011, 1, 0, 0},
        {(WPARAM{1} << 32) + 1, 1, 0, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.id);
        const std::size_t dialogs = dialog_.Asked().size();
        const std::size_t messages = messages_.Shown().size();
        handled = true;
        EXPECT_EQ(band_.OnCommand(c.id, handled), c.result);
        EXPECT_FALSE(handled);
        EXPECT_EQ(dialog_.Asked().size() - dialogs, c.dialogs);
        EXPECT_EQ(messages_.Shown().size() - messages, c.messages);
        EXPECT_EQ(Address(), page_.address);
    }
}

TEST_F(BandWindowTest, ACommandUnderWayIsNotDisturbed) {
    band_.Browser = platform::ComPtr<IWebBrowser2>(browser_.Get());
    LRESULT nested = -1;
    page_.onTitle = [&] { nested = band_.Convert(0, TEXT("nested")); };
    EXPECT_EQ(band_.Convert(0, TEXT("outer")), 0);
    EXPECT_EQ(nested, 1);
    ASSERT_EQ(band_.Job.Items.Count(), 1u);
    EXPECT_EQ(Address(), TEXT("outer"));
    page_.onTitle = [] {};
    EXPECT_EQ(band_.Convert(0, TEXT("next")), 0);
}

}  // namespace
