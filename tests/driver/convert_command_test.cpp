#include "driver/convert_command.h"

#include "driver/protected_mode.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "tests/driver/command_test.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using driver_test::ReadShared;
using driver_test::SetFreshProtectedAnswer;
using platform::WideString;
using platform::testing::SaveDialogScript;
using test_support::Exists;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

/// The captures that the command calls, and what they were called with.
struct {
    WideString pagePath;  // empty: the page cannot be captured
    bool hasSelection = false;
    int pageCalls = 0;
    int selectionCalls = 0;
} captures;

bool CapturePage(IHTMLDocument2*, AUX::WStringView, AUX::WString& path) noexcept {
    ++captures.pageCalls;
    return !captures.pagePath.empty() && path.Assign(AUX::WStringView(captures.pagePath));
}
bool CaptureSelectionMarkup(IWebBrowser2*, AUX::WString& markup) noexcept {
    ++captures.selectionCalls;
    return captures.hasSelection && markup.Assign(TEXT("<b>s</b>"));
}
constexpr CaptureOperations kCaptures{CapturePage, CaptureSelectionMarkup};

WideString Wide(const AUX::WString& text) { return WideString(AUX::WStringView(text)); }

class ConvertCommandTest : public driver_test::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        captures = {};
        page_.title = TEXT("A-B.c: d");
        page_.rootHeight = 2000;
        settings_.WebPageTargetHeight = 77;
        platform::RegistryKey key;
        const DWORD delay = 123;
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  0x2001F, nullptr, key.Put(), nullptr),
                  ERROR_SUCCESS);
        ASSERT_EQ(RegSetValueExW(key.Get(), TEXT("LoadDelay"), 0, REG_DWORD,
                                 reinterpret_cast<const BYTE*>(&delay), sizeof delay),
                  ERROR_SUCCESS);
    }

    LRESULT Run(int selectionOnly = 0) {
        return ConvertCommand(browser_.Get(), nullptr, nullptr, settings_, job_, kCaptures)
            .Run(selectionOnly, TEXT("http://h/p"));
    }
    void MakeCapturedPage() {
        captures.pagePath = profile_.TempFolder() + TEXT("qvd_1.html");
        ASSERT_TRUE(test_support::WriteWholeFile(captures.pagePath, "page"));
    }
    void ExpectMessage(const WCHAR* text, UINT type) {
        ASSERT_EQ(messages_.Shown().size(), 1u);
        EXPECT_EQ(messages_.Shown()[0].text, text);
        EXPECT_EQ(messages_.Shown()[0].caption, TEXT(""));
        EXPECT_EQ(messages_.Shown()[0].type, type);
    }

    ConversionSettings settings_{kKey};
    ConversionJob job_;
};

TEST_F(ConvertCommandTest, ACancelledDialogComesAfterLoadingAndBeforeEverythingElse) {
    ASSERT_TRUE(job_.PublishShared() && settings_.SharedDataName.Assign(TEXT("old")) &&
                settings_.StorageFile.Assign(TEXT("kept")));
    std::uint32_t delayAtTitle = 0;
    page_.onTitle = [&] { delayAtTitle = settings_.LoadDelay; };
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));  // Nobody looks for it yet.
    SaveDialogScript dialog(std::nullopt);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(delayAtTitle, 500u) << "the title is asked for before loading";
    EXPECT_EQ(settings_.LoadDelay, 123u);
    EXPECT_TRUE(settings_.SharedDataName.IsEmpty());
    EXPECT_EQ(settings_.StorageFile, TEXT("kept"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);
    EXPECT_TRUE(ReadShared(1).empty()) << "the last job's block is still open";
    EXPECT_TRUE(messages_.Shown().empty());
    EXPECT_TRUE(test_support::ListFolder(profile_.TempFolder()).empty());
    ASSERT_EQ(dialog.Asked().size(), 1u);
    const auto& asked = dialog.Asked()[0];
    EXPECT_EQ(asked.suggestedName, TEXT("ABc d"));
    EXPECT_EQ(asked.filter, WideString(TEXT("PDF Documents (*.pdf)\0*.pdf\0"), 28));
    EXPECT_EQ(asked.flags & 0x880022, 0x880022u);
}

TEST_F(ConvertCommandTest, AMissingConverterIsToldAfterTheDialogAndBeforeTheCapture) {
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(1), 1);
    EXPECT_EQ(dialog.Asked().size(), 1u);
    ExpectMessage(TEXT("PageRender application could not be found - please reinstall."), 0x10);
    EXPECT_TRUE(job_.Items.IsEmpty());
    EXPECT_EQ(captures.selectionCalls, 0);
    SetFreshProtectedAnswer("1");
    EXPECT_EQ(Run(1), 1);
    EXPECT_EQ(dialog.Asked().size(), 1u) << "a protected process has no dialog";
    EXPECT_EQ(messages_.Shown().size(), 2u);
}

TEST_F(ConvertCommandTest, ASelectionGoesWithItsPageOrIsToldToBeMissing) {
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(1), 1);
    ExpectMessage(TEXT("No selection"), 0x30);
    EXPECT_FALSE(Exists(output_));
    EXPECT_FALSE(job_.Security) << "stopped too late";
    captures.hasSelection = true;
    EXPECT_EQ(Run(1), 0);
    ASSERT_EQ(job_.Items.Count(), 1u);
    EXPECT_EQ(job_.Items[0]->SelectionHtml, TEXT("<b>s</b>"));
    EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);
    EXPECT_EQ(captures.pageCalls, 0);
}

TEST_F(ConvertCommandTest, APageGoesByItsAddressWhenItIsNotCaptured) {
    const struct {
        bool useCopy, hasDocument;
        IID refused;
        int captureCalls;
        std::uint32_t height;
    } kCases[] = {
        {true, true, {}, 1, 2000},
        {false, true, {}, 0, 2000},
        {true, false, {}, 0, 77},
        {true, true, platform::InterfaceId<IHTMLDocument2>(), 0, 77},
    };
    SaveDialogScript dialog(output_);
    for (const auto& c : kCases) {
        captures = {};
        settings_.UseWebPageCopy = c.useCopy;
        settings_.WebPageTargetHeight = 77;
        page_.hasDocument = c.hasDocument;
        page_.refused = c.refused;
        EXPECT_EQ(Run(2), 0);  // Only 1 means the selection; a failed launch is 0, too.
        EXPECT_EQ(captures.pageCalls, c.captureCalls);
        EXPECT_EQ(settings_.WebPageTargetHeight, c.height);
        EXPECT_EQ(dialog.Asked().back().suggestedName.empty(), c.height == 77);
        ASSERT_EQ(job_.Items.Count(), 1u);
        EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
        EXPECT_EQ(Wide(job_.Items[0]->OutputFile), output_);
        EXPECT_FALSE(job_.Items[0]->SourceIsTemporary || job_.AskOutputFile);
        EXPECT_EQ(job_.Security.Get(), settings_.Security.Get());
        EXPECT_EQ(job_.RunApp.Get(), settings_.RunApp.Get());
        EXPECT_EQ(settings_.SharedDataName, TEXT("QVD:IEP:HTMLData"));
    }
    EXPECT_TRUE(messages_.Shown().empty());
}

TEST_F(ConvertCommandTest, AFailedLaunchRemovesWhatWasWrittenButTheSharedBlock) {
    for (const bool isProtected : {false, true}) {
        SetFreshProtectedAnswer(isProtected ? "1" : "0");
        MakeCapturedPage();
        SaveDialogScript dialog(output_);
        EXPECT_EQ(Run(), 0);
        EXPECT_TRUE(messages_.Shown().empty());
        EXPECT_TRUE(job_.Items[0]->SourceIsTemporary);
        EXPECT_EQ(Wide(job_.Items[0]->Source), captures.pagePath);
        EXPECT_TRUE(test_support::ListFolder(profile_.TempFolder()).empty());
        EXPECT_TRUE(settings_.StorageFile.IsEmpty());
        EXPECT_EQ(ReadShared(1).empty(), isProtected);
    }
    EXPECT_TRUE(job_.AskOutputFile);
    EXPECT_EQ(job_.SuggestedName, TEXT("ABc d"));
    EXPECT_TRUE(job_.Items[0]->OutputFile.IsEmpty());
}

TEST_F(ConvertCommandTest, AFailedStorageRemovesTheCapturedPage) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    for (const char* call : {"CreateFileMappingW", "MapViewOfFile", "WriteFile"}) {
        SCOPED_TRACE(call);
        SetFreshProtectedAnswer(*call == 'W' ? "1" : "0");
        ASSERT_TRUE(settings_.StorageFile.Assign(TEXT("kept")));
        MakeCapturedPage();
        SaveDialogScript dialog(output_);
        const platform::testing::InjectedFault fault(call, 1, ERROR_DISK_FULL);
        EXPECT_EQ(Run(), 1);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_FALSE(Exists(captures.pagePath));
        EXPECT_TRUE(messages_.Shown().empty());
        EXPECT_EQ(settings_.StorageFile, TEXT("kept"));
        EXPECT_TRUE(settings_.SharedDataName.IsEmpty());
    }
}

TEST_F(ConvertCommandTest, SettingsThatCannotBeHadWholeEndTheCommand) {
    settings_.Security.Reset();
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(dialog.Asked().empty());
}

TEST_F(ConvertCommandTest, EachFailedAllocationEndsTheCommandOrLeavesTheJobWhole) {
    captures.hasSelection = true;
    SaveDialogScript dialog(output_);
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        ConversionSettings settings(kKey);
        ConversionJob job;
        const LRESULT result =
            ConvertCommand(browser_.Get(), nullptr, nullptr, settings, job, kCaptures)
                .Run(1, TEXT("http://h/p"));
        EXPECT_TRUE(result == 0 || hasFailed());
        EXPECT_EQ(ReadShared(1).empty(), result != 0);
        if (result != 0) return;
        ASSERT_EQ(job.Items.Count(), 1u);
        EXPECT_EQ(job.Items[0]->Source, TEXT("http://h/p"));
        EXPECT_EQ(Wide(job.Items[0]->OutputFile), output_);
    });
    EXPECT_GT(failures, 10u);
}

}  // namespace
