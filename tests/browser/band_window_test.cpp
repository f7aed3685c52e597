#include "browser/band_window.h"

#include <gtest/gtest.h>

#include "browser/addin_entry.h"
#include "driver/module_folder.h"
#include "driver/protected_mode.h"
#include "platform/files.h"
#include "platform/testing.h"
#include "tests/driver/fake_browser.h"
#include "tests/driver/module_support.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using platform::testing::MessageBoxRecorder;
using platform::testing::SaveDialogScript;

WideString Address(const BandWindow& band) {
    return WideString(AUX::WStringView(band.Job.Items[0]->Source));
}

class BandWindowTest : public testing::Test {
protected:
    void SetUp() override {
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer("0");
        ASSERT_TRUE(browserModule_);
        // There, but no program: commands come as far as its launch, which fails.
        ASSERT_TRUE(
            test_support::WriteWholeFile(profile_.Path(TEXT("PageRenderApp.x86.exe")), "x"));
    }
    void TearDown() override {
        DetachModule();
        driver_test::SetProtectedAnswer(nullptr);
        ForgetProtectedModeAnswer();
    }

    test_support::TestProfile profile_;
    platform::ModuleHandle browserModule_ = driver_test::LoadBrowserModule();
    fake::Page page_;
    platform::ComPtr<fake::Browser> browser_ = platform::MakeObject<fake::Browser>(page_);
    SaveDialogScript dialog_{profile_.Path(TEXT("o.pdf"))};
    MessageBoxRecorder messages_;
};

TEST_F(BandWindowTest, TheWholeIdChoosesTheCommand) {
    const platform::ModuleHandle module = driver_test::LoadModuleIn(profile_.Folder());
    ASSERT_TRUE(module && AttachModule(module.Get()));
    const struct {
        WPARAM id;
        LRESULT result;
        std::size_t dialogs, messages;
    } kCases[] = {
        {1, 0, 1, 0}, {0x8011, 0, 1, 0},  {0x8015, 1, 1, 1},  {0x8014, 1, 0, 0},
        {0, 1, 0, 0}, {0x10001, 1, 0, 0}, {0x18011, 1, 0, 0}, {(WPARAM{1} << 32) + 1, 1, 0, 0},
    };
    page_.address = TEXT("http://h/p");
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.id);
        const std::size_t dialogs = dialog_.Asked().size();
        const std::size_t messages = messages_.Shown().size();
        BandWindow band;
        band.Browser = platform::ComPtr<IWebBrowser2>(browser_.Get());
        bool handled = true;
        EXPECT_EQ(band.OnCommand(c.id, handled), c.result);
        EXPECT_FALSE(handled);
        EXPECT_EQ(dialog_.Asked().size() - dialogs, c.dialogs);
        EXPECT_EQ(messages_.Shown().size() - messages, c.messages);
        EXPECT_TRUE(!c.dialogs || Address(band) == page_.address);
    }
}

TEST_F(BandWindowTest, AnAddressThatCannotBeReadTravelsEmpty) {
    const platform::ModuleHandle module = driver_test::LoadModuleIn(profile_.Folder());
    ASSERT_TRUE(module && AttachModule(module.Get()));
    BandWindow band;
    bool handled = true;
    EXPECT_EQ(band.OnCommand(1, handled), 1) << "no browser yet";
    band.Browser = platform::ComPtr<IWebBrowser2>(browser_.Get());
    EXPECT_EQ(band.OnCommand(1, handled), 0);
    EXPECT_EQ(Address(band), WideString());
}

TEST_F(BandWindowTest, ACommandUnderWayIsNotDisturbed) {
    const platform::ModuleHandle module = driver_test::LoadModuleIn(profile_.Folder());
    ASSERT_TRUE(module && AttachModule(module.Get()));
    BandWindow band;
    band.Browser = platform::ComPtr<IWebBrowser2>(browser_.Get());
    LRESULT nested = -1;
    page_.onTitle = [&] { nested = band.Convert(0, TEXT("nested")); };
    page_.title = TEXT("t");
    EXPECT_EQ(band.Convert(0, TEXT("outer")), 0);
    EXPECT_EQ(nested, 1);
    EXPECT_EQ(Address(band), TEXT("outer"));
    ASSERT_EQ(band.Job.Items.Count(), 1u);
    page_.onTitle = [] {};
    EXPECT_EQ(band.Convert(0, TEXT("next")), 0);
}

/// The module as it is shipped, loaded from a folder of its own.
class ModuleTest : public BandWindowTest {
protected:
    void SetUp() override {
        BandWindowTest::SetUp();
        WCHAR path[MAX_PATH];
        WideString shipped(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
        shipped.resize(shipped.rfind(TEXT('\\')) + 1);
        shipped += TEXT("QVDIEaddin.x64.dll");
        const WideString copy = profile_.Path(TEXT("QVDIEaddin.x64.dll"));
        ASSERT_TRUE(test_support::WriteWholeFile(copy, test_support::ReadWholeFile(shipped)));
        module_ = platform::ModuleHandle(LoadLibraryW(copy.c_str()));
        ASSERT_TRUE(module_) << GetLastError();
        create_ = platform::ProcedureOf<std::remove_pointer_t<QvdCreateBandFunction>>(
            module_.Get(), "QvdCreateBand");
        ASSERT_TRUE(create_);
    }

    platform::ModuleHandle module_;
    QvdCreateBandFunction create_ = nullptr;
};

TEST_F(ModuleTest, ItsBandRunsCommandsOnTheConverterBesideIt) {
    EXPECT_EQ(create_(browser_.Get(), nullptr, nullptr), E_POINTER);
    platform::ComPtr<IAddinBand> band;
    ASSERT_EQ(create_(browser_.Get(), nullptr, band.Put()), S_OK);
    EXPECT_TRUE(band.As<IUnknown>());
    EXPECT_EQ(band->OnCommand(0x8014), 1);
    EXPECT_EQ(band->OnCommand(1), 0);
    EXPECT_EQ(band->OnCommand(0x8015), 1);
    ASSERT_EQ(messages_.Shown().size(), 1u);
    EXPECT_EQ(messages_.Shown()[0].text, TEXT("No selection"));

    ASSERT_TRUE(DeleteFileW(profile_.Path(TEXT("PageRenderApp.x86.exe")).c_str()));
    EXPECT_EQ(band->OnCommand(0x8011), 1);
    EXPECT_EQ(messages_.Shown().size(), 2u);

    platform::ComPtr<IAddinBand> lonely;
    ASSERT_EQ(create_(nullptr, nullptr, lonely.Put()), S_OK);
    EXPECT_EQ(lonely->OnCommand(1), 1);
}

TEST_F(ModuleTest, ABandMayBeGivenUpWhileItWorks) {
    platform::ComPtr<IAddinBand> band;
    ASSERT_EQ(create_(browser_.Get(), nullptr, band.Put()), S_OK);
    page_.title = TEXT("t");
    page_.onTitle = [&] { band.Reset(); };
    IAddinBand* const borrowed = band.Get();
    EXPECT_EQ(borrowed->OnCommand(1), 0);
    browser_->AddRef();
    EXPECT_EQ(browser_->Release(), 1u) << "the band is still there";
}

}  // namespace
