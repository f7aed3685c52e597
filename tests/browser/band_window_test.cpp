#include "browser/band_window.h"

#include "browser/addin_entry.h"
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
        {1, 0, 1, 0}, {0x8011, 0, 1, 0},  {0x8015, 1, 1, 1},  {0x8014, 1, 0, 0},
        {0, 1, 0, 0}, {0x10001, 1, 0, 0}, {0x18011, 1, 0, 0}, {(WPARAM{1} << 32) + 1, 1, 0, 0},
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

TEST_F(BandWindowTest, TheModulesBandMayBeGivenUpWhileItWorks) {
    WCHAR path[MAX_PATH];
    WideString shipped(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    shipped.resize(shipped.rfind(TEXT('\\')) + 1);
    const platform::ModuleHandle module(
        LoadLibraryW((shipped + TEXT("QVDIEaddin.x64.dll")).c_str()));
    ASSERT_TRUE(module) << GetLastError();
    const QvdCreateBandFunction create =
        platform::ProcedureOf<std::remove_pointer_t<QvdCreateBandFunction>>(module.Get(),
                                                                            "QvdCreateBand");
    ASSERT_TRUE(create);
    EXPECT_EQ(create(browser_.Get(), nullptr, nullptr), E_POINTER);
    const SaveDialogScript cancelled(std::nullopt);
    platform::ComPtr<IAddinBand> band;
    ASSERT_EQ(create(browser_.Get(), nullptr, band.Put()), S_OK);
    page_.onTitle = [&] { band.Reset(); };
    IAddinBand* const borrowed = band.Get();
    EXPECT_EQ(borrowed->OnCommand(1), 1);
    EXPECT_EQ(cancelled.Asked().size(), 1u);
    browser_->AddRef();
    EXPECT_EQ(browser_->Release(), 1u) << "the band is still there";
}

}  // namespace
