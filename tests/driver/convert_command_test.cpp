#include "driver/convert_command.h"

#include <gtest/gtest.h>

#include "driver/module_folder.h"
#include "driver/protected_mode.h"
#include "foundation/memory_testing.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "platform/testing.h"
#include "tests/driver/fake_browser.h"
#include "tests/driver/module_support.h"
#include "tests/driver/shared_reader.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using platform::testing::MessageBoxRecorder;
using platform::testing::SaveDialogScript;
using test_support::Exists;
using test_support::WriteWholeFile;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");
constexpr WCHAR kMissingConverter[] =
    TEXT("PageRender application could not be found - please reinstall.");

/// The captures that the command calls, and what they were called with.
struct {
    bool pageWorks = false;
    WideString pagePath;
    bool selectionWorks = false;
    int pageCalls = 0;
    int selectionCalls = 0;
} captures;

bool CapturePage(IHTMLDocument2*, AUX::WStringView, AUX::WString& path) noexcept {
    ++captures.pageCalls;
    return captures.pageWorks && path.Assign(AUX::WStringView(captures.pagePath));
}
bool CaptureSelectionMarkup(IWebBrowser2*, AUX::WString& markup) noexcept {
    ++captures.selectionCalls;
    return captures.selectionWorks && markup.Assign(TEXT("<b>s</b>"));
}
constexpr CaptureOperations kCaptures{CapturePage, CaptureSelectionMarkup};

WideString Wide(const AUX::WString& text) { return WideString(AUX::WStringView(text)); }

std::string Utf16Bytes(const WideString& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

class ConvertCommandTest : public testing::Test {
protected:
    void SetUp() override {
        captures = {};
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer("0");
        ASSERT_TRUE(browserModule_ && module_);
        ASSERT_TRUE(AttachModule(module_.Get()));
        // A file of that name which is no program: it is there, and its launch fails.
        ASSERT_TRUE(WriteWholeFile(converter_, "no program"));
        page_.title = TEXT("A-B.c: d");
        page_.rootHeight = 2000;
    }
    void TearDown() override {
        DetachModule();
        driver_test::SetProtectedAnswer(nullptr);
        ForgetProtectedModeAnswer();
    }

    LRESULT Run(int selectionOnly = 0) {
        return ConvertCommand(browser_.Get(), nullptr, nullptr, settings_, job_, kCaptures)
            .Run(selectionOnly, TEXT("http://h/p"));
    }
    void StoreLoadDelay(DWORD delay) {
        platform::RegistryKey key;
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  0x2001F, nullptr, key.Put(), nullptr),
                  ERROR_SUCCESS);
        ASSERT_EQ(RegSetValueExW(key.Get(), TEXT("LoadDelay"), 0, REG_DWORD,
                                 reinterpret_cast<const BYTE*>(&delay), sizeof delay),
                  ERROR_SUCCESS);
    }

    test_support::TestProfile profile_;
    const WideString converter_ = profile_.Path(TEXT("PageRenderApp.x86.exe"));
    const WideString output_ = profile_.Path(TEXT("out.pdf"));
    platform::ModuleHandle browserModule_ = driver_test::LoadBrowserModule();
    platform::ModuleHandle module_ = driver_test::LoadModuleIn(profile_.Folder());
    fake::Page page_;
    platform::ComPtr<fake::Browser> browser_ = platform::MakeObject<fake::Browser>(page_);
    ConversionSettings settings_{kKey};
    ConversionJob job_;
};

TEST_F(ConvertCommandTest, WithoutABrowserNothingHappens) {
    ASSERT_TRUE(job_.AddItem());
    browser_.Reset();
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(job_.Items.Count(), 1u);
}

TEST_F(ConvertCommandTest, ACancelledDialogComesAfterLoadingAndBeforeEverythingElse) {
    ASSERT_TRUE(job_.PublishShared());
    ASSERT_TRUE(settings_.SharedDataName.Assign(TEXT("old")));
    ASSERT_TRUE(settings_.StorageFile.Assign(TEXT("kept")));
    settings_.WebPageTargetHeight = 77;
    StoreLoadDelay(123);
    std::uint32_t delayAtTitle = 0;
    page_.onTitle = [&] { delayAtTitle = settings_.LoadDelay; };
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));  // Nobody looks for it yet.

    SaveDialogScript dialog(std::nullopt);
    MessageBoxRecorder messages;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(delayAtTitle, 500u) << "the title is asked for before loading";
    EXPECT_EQ(settings_.LoadDelay, 123u);
    EXPECT_TRUE(settings_.SharedDataName.IsEmpty());
    EXPECT_EQ(settings_.StorageFile, TEXT("kept"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);
    EXPECT_TRUE(driver_test::ReadShared(1).empty()) << "the last job's block is still open";
    EXPECT_EQ(page_.documentCalls, 1);
    EXPECT_TRUE(messages.Shown().empty());
    EXPECT_TRUE(test_support::ListFolder(profile_.TempFolder()).empty());

    ASSERT_EQ(dialog.Asked().size(), 1u);
    const auto& asked = dialog.Asked()[0];
    EXPECT_EQ(asked.suggestedName, TEXT("ABc d"));
    EXPECT_EQ(asked.filter, WideString(TEXT("PDF Documents (*.pdf)\0*.pdf\0"), 28));
    EXPECT_EQ(asked.flags & 0x880022, 0x880022u);
}

TEST_F(ConvertCommandTest, AMissingConverterIsToldAfterTheDialog) {
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));
    for (const bool isProtected : {false, true}) {
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer(isProtected ? "1" : "0");
        SaveDialogScript dialog(output_);
        MessageBoxRecorder messages;
        EXPECT_EQ(Run(1), 1);
        EXPECT_EQ(dialog.Asked().size(), isProtected ? 0u : 1u);
        ASSERT_EQ(messages.Shown().size(), 1u);
        EXPECT_EQ(messages.Shown()[0].text, kMissingConverter);
        EXPECT_EQ(messages.Shown()[0].caption, TEXT(""));
        EXPECT_EQ(messages.Shown()[0].type, 0x10u);
        EXPECT_TRUE(job_.Items.IsEmpty());
        EXPECT_EQ(captures.selectionCalls, 0);
        EXPECT_EQ(job_.AskOutputFile, isProtected);
    }
}

TEST_F(ConvertCommandTest, WithoutASelectionItSaysSoAndStops) {
    settings_.WebPageTargetHeight = 77;
    SaveDialogScript dialog(output_);
    MessageBoxRecorder messages;
    EXPECT_EQ(Run(1), 1);
    ASSERT_EQ(messages.Shown().size(), 1u);
    EXPECT_EQ(messages.Shown()[0].text, TEXT("No selection"));
    EXPECT_EQ(messages.Shown()[0].caption, TEXT(""));
    EXPECT_EQ(messages.Shown()[0].type, 0x30u);
    EXPECT_FALSE(Exists(output_));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);
    EXPECT_EQ(captures.pageCalls, 0);
    EXPECT_FALSE(job_.Security) << "stopped too late";
}

TEST_F(ConvertCommandTest, ASelectionGoesWithItsPageAndTheHeightMeasuredBefore) {
    captures.selectionWorks = true;
    settings_.WebPageTargetHeight = 1234;
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(1), 0);
    ASSERT_EQ(job_.Items.Count(), 1u);
    EXPECT_EQ(job_.Items[0]->SelectionHtml, TEXT("<b>s</b>"));
    EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 1234u);
    EXPECT_EQ(captures.pageCalls, 0);
}

TEST_F(ConvertCommandTest, APageGoesByItsAddressWhenItCannotBeCaptured) {
    SaveDialogScript dialog(output_);
    MessageBoxRecorder messages;
    EXPECT_EQ(Run(2), 0);  // Only 1 means the selection.
    EXPECT_EQ(captures.pageCalls, 1);
    EXPECT_EQ(captures.selectionCalls, 0);
    EXPECT_TRUE(messages.Shown().empty());
    ASSERT_EQ(job_.Items.Count(), 1u);
    EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
    EXPECT_EQ(Wide(job_.Items[0]->OutputFile), output_);
    EXPECT_FALSE(job_.Items[0]->SourceIsTemporary);
    EXPECT_EQ(settings_.WebPageTargetHeight, 2000u);
    EXPECT_EQ(job_.Security.Get(), settings_.Security.Get());
    EXPECT_EQ(job_.RunApp.Get(), settings_.RunApp.Get());
    EXPECT_FALSE(job_.AskOutputFile);
    // The launch failed, which nobody is told; the block stays.
    EXPECT_EQ(settings_.SharedDataName, TEXT("QVD:IEP:HTMLData"));
    EXPECT_FALSE(driver_test::ReadShared(1).empty());
}

TEST_F(ConvertCommandTest, CaptureIsAskedForOnlyWithADocumentAndTheSetting) {
    const struct {
        bool useCopy, hasDocument, isHtml;
        int calls;
        std::uint32_t height;
    } kCases[] = {
        {true, true, true, 1, 2000},
        {false, true, true, 0, 2000},
        {true, false, true, 0, 55},
        {true, true, false, 0, 55},
    };
    for (const auto& c : kCases) {
        captures = {};
        settings_.UseWebPageCopy = c.useCopy;
        settings_.WebPageTargetHeight = 55;
        page_.hasDocument = c.hasDocument;
        page_.isHtml = c.isHtml;
        SaveDialogScript dialog(output_);
        EXPECT_EQ(Run(), 0);
        EXPECT_EQ(captures.pageCalls, c.calls);
        EXPECT_EQ(settings_.WebPageTargetHeight, c.height);
        EXPECT_EQ(dialog.Asked()[0].suggestedName.empty(), !c.hasDocument || !c.isHtml);
    }
}

TEST_F(ConvertCommandTest, AFailedLaunchRemovesWhatWasWritten) {
    for (const bool isProtected : {false, true}) {
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer(isProtected ? "1" : "0");
        captures.pageWorks = true;
        captures.pagePath = profile_.TempFolder() + TEXT("qvd_1.html");
        ASSERT_TRUE(WriteWholeFile(captures.pagePath, "page"));
        SaveDialogScript dialog(output_);
        MessageBoxRecorder messages;
        EXPECT_EQ(Run(), 0);
        EXPECT_TRUE(messages.Shown().empty());
        EXPECT_TRUE(job_.Items[0]->SourceIsTemporary);
        EXPECT_EQ(Wide(job_.Items[0]->Source), captures.pagePath);
        EXPECT_TRUE(test_support::ListFolder(profile_.TempFolder()).empty());
        EXPECT_TRUE(settings_.StorageFile.IsEmpty());
        EXPECT_EQ(driver_test::ReadShared(1).empty(), isProtected);
    }
    EXPECT_TRUE(job_.AskOutputFile);
    EXPECT_EQ(job_.SuggestedName, TEXT("ABc d"));
    EXPECT_TRUE(job_.Items[0]->OutputFile.IsEmpty());
}

TEST_F(ConvertCommandTest, AStartedConverterFindsTheJobAndOwnsItsFiles) {
    // Another process, started from the folder of the tests' modules.
    ASSERT_TRUE(AttachModule(browserModule_.Get()));
    const WideString fetched = profile_.Path(TEXT("fetched"));
    platform::testing::SetEnvironment("QUVADA_FETCHED_BLOCK", platform::ToUtf8(fetched).c_str());
    for (const bool isProtected : {false, true}) {
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer(isProtected ? "1" : "0");
        captures.pageWorks = true;
        captures.pagePath = profile_.TempFolder() + TEXT("qvd_1.html");
        ASSERT_TRUE(WriteWholeFile(captures.pagePath, "page"));
        SaveDialogScript dialog(output_);
        EXPECT_EQ(Run(), 0);
        ASSERT_EQ(platform::testing::WaitForStartedPrograms(60000, nullptr),
                  platform::testing::Programs::Ended);
        const std::string block = test_support::ReadWholeFile(fetched);
        ASSERT_GT(block.size(), 70u);
        EXPECT_EQ(block[4], 12);
        const std::string source = Utf16Bytes(captures.pagePath);
        EXPECT_NE(block.find(source + std::string(4, '\0')), std::string::npos);
        EXPECT_EQ(block.find(Utf16Bytes(output_)) != std::string::npos, !isProtected);
        EXPECT_TRUE(Exists(captures.pagePath));
        EXPECT_EQ(Exists(settings_.StorageFile.Text()), isProtected);
        ASSERT_TRUE(DeleteFileW(fetched.c_str()));
    }
    platform::testing::SetEnvironment("QUVADA_FETCHED_BLOCK", nullptr);
}

TEST_F(ConvertCommandTest, AFailedStorageRemovesTheCapturedPage) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    const struct {
        const char* call;
        bool isProtected;
    } kCases[] = {{"CreateFileMappingW", false}, {"MapViewOfFile", false}, {"WriteFile", true}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.call);
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer(c.isProtected ? "1" : "0");
        ASSERT_TRUE(settings_.StorageFile.Assign(TEXT("kept")));
        captures.pageWorks = true;
        captures.pagePath = profile_.TempFolder() + TEXT("qvd_1.html");
        ASSERT_TRUE(WriteWholeFile(captures.pagePath, "page"));
        SaveDialogScript dialog(output_);
        MessageBoxRecorder messages;
        const platform::testing::InjectedFault fault(c.call, 1, ERROR_DISK_FULL);
        EXPECT_EQ(Run(), 1);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_FALSE(Exists(captures.pagePath));
        EXPECT_TRUE(messages.Shown().empty());
        EXPECT_EQ(settings_.StorageFile, TEXT("kept"));
        EXPECT_TRUE(settings_.SharedDataName.IsEmpty());
    }
}

TEST_F(ConvertCommandTest, SettingsThatCannotBeHadWholeEndTheCommand) {
    StoreLoadDelay(1);
    settings_.Security.Reset();
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(dialog.Asked().empty());
}

TEST_F(ConvertCommandTest, EachFailedAllocationEndsOrGoesOnWithoutLeaks) {
    captures.selectionWorks = true;
    std::uint64_t n = 0;
    for (bool wasReached = true; wasReached && n < 200;) {
        job_.Reset();
        settings_.ResetToDefaults();
        SaveDialogScript dialog(output_);
        MessageBoxRecorder messages;
        AUX::testing::AllocationWatch watch;
        watch.FailOnce(++n);
        const LRESULT result = Run(1);
        wasReached = watch.Failures() > 0;
        if (result == 0) {
            ASSERT_EQ(job_.Items.Count(), 1u);
            EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p")) << n;
            EXPECT_EQ(Wide(job_.Items[0]->OutputFile), output_) << n;
        }
        EXPECT_TRUE(wasReached || result == 0);
    }
    EXPECT_GT(n, 10u);
    EXPECT_LT(n, 200u);
}

}  // namespace
