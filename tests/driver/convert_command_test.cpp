#include "driver/convert_command.h"

#include "driver/clean_title.h"
#include "platform/files.h"
#include "tests/driver/command_test.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using driver_test::ReadShared;
using driver_test::SetProtectedAnswer;
using platform::ToUtf8;
using platform::WideString;
using platform::testing::SaveDialogScript;
using platform::testing::SetEnvironment;
using test_support::Exists;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

/// What the captures that the command calls give; empty: they fail.
WideString capturedPage;
const WCHAR* selectedMarkup;
int pageCaptures;

bool CapturePage(IHTMLDocument2*, AUX::WStringView, AUX::WString& path) noexcept {
    ++pageCaptures;
    return !capturedPage.empty() && path.Assign(AUX::WStringView(capturedPage));
}
bool CaptureSelectionMarkup(IWebBrowser2*, AUX::WString& markup) noexcept {
    return selectedMarkup && markup.Assign(selectedMarkup);
}
constexpr CaptureOperations kCaptures{CapturePage, CaptureSelectionMarkup};

WideString Wide(const AUX::WString& text) { return WideString(AUX::WStringView(text)); }

class ConvertCommandTest : public driver_test::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        capturedPage.clear();
        selectedMarkup = nullptr;
        page_.title = TEXT("A-B.c: d");
        settings_.WebPageTargetHeight = 77;
        ConversionSettings saved(kKey);
        saved.LoadDelay = 123;
        ASSERT_EQ(saved.Save(), S_OK);
    }

    LRESULT Run(int selectionOnly, ConversionSettings& settings, ConversionJob& job) {
        return ConvertCommand(browser_.Get(), nullptr, nullptr, settings, job, kCaptures)
            .Run(selectionOnly, TEXT("http://h/p"));
    }
    LRESULT Run(int selectionOnly = 0) { return Run(selectionOnly, settings_, job_); }
    void MakeCapturedPage() {
        capturedPage = profile_.TempFolder() + TEXT("qvd_1.html");
        ASSERT_TRUE(test_support::WriteWholeFile(capturedPage, "page"));
    }
    void ExpectMessages(std::size_t count, const char* text, UINT type) {
        ASSERT_EQ(messages_.Shown().size(), count);
        EXPECT_EQ(ToUtf8(messages_.Shown().back().text), text);
        EXPECT_EQ(messages_.Shown().back().caption, TEXT(""));
        EXPECT_EQ(messages_.Shown().back().type, type);
    }

    ConversionSettings settings_{kKey};
    ConversionJob job_;
};

TEST_F(ConvertCommandTest, ACancelledDialogComesAfterLoadingAndBeforeEverythingElse) {
    ASSERT_TRUE(job_.PublishShared() && settings_.SharedDataName.Assign(TEXT("old")) &&
                settings_.StorageFile.Assign(TEXT("kept")));
    page_.onTitle = [&] { EXPECT_EQ(settings_.LoadDelay, 500u) << "too early"; };
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));  // Nobody looks for it yet.
    SaveDialogScript dialog(std::nullopt);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(settings_.LoadDelay, 123u);
    EXPECT_TRUE(settings_.SharedDataName.IsEmpty() && settings_.StorageFile == TEXT("kept"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);
    EXPECT_EQ(ReadShared(1), "") << "the last job's block is still open";
    EXPECT_TRUE(messages_.Shown().empty());
    const auto asked = dialog.Asked().at(0);
    EXPECT_EQ(asked.suggestedName, TEXT("ABc d"));
    EXPECT_EQ(asked.filter, WideString(TEXT("PDF Documents (*.pdf)\0*.pdf\0"), 28));
    EXPECT_EQ(asked.flags & 0x880022, 0x880022u);
    page_.onTitle = [] {};
    settings_.Security.Reset();
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(dialog.Asked().size(), 1u) << "goes on without the settings";
}

TEST_F(ConvertCommandTest, ASelectionGoesWithItsPageOrSaysWhyNot) {
    SaveDialogScript dialog(output_);
    EXPECT_EQ(Run(1), 1);
    ExpectMessages(1, "No selection", 0x30);
    EXPECT_FALSE(Exists(output_) || job_.Security);
    selectedMarkup = TEXT("<b>s</b>");
    EXPECT_EQ(Run(1), 0);
    EXPECT_EQ(job_.Items[0]->SelectionHtml, TEXT("<b>s</b>"));
    EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
    EXPECT_EQ(settings_.WebPageTargetHeight, 77u);

    // A missing converter is told after the dialog, which a protected process has not.
    ASSERT_TRUE(DeleteFileW(converter_.c_str()));
    for (const std::size_t isProtected : {0u, 1u}) {
        SetProtectedAnswer(isProtected ? "1" : "0");
        EXPECT_EQ(Run(1), 1);
        ExpectMessages(2 + isProtected,
                       "PageRender application could not be found - please reinstall.", 0x10);
        EXPECT_EQ(dialog.Asked().size(), 3u);
        EXPECT_TRUE(job_.Items.IsEmpty());
    }
}

TEST_F(ConvertCommandTest, APageGoesByItsAddressWithItsHeightWhenItIsNotCaptured) {
    const struct {
        bool useCopy, hasDocument;
        std::optional<LONG> root, body;
        IID refused;
        int captures;
        std::uint32_t height;
    } kCases[] = {
        {true, true, 2000, 1500, {}, 1, 2000},
        {false, true, 1500, 2000, {}, 0, 2000},
        {true, false, 9, 9, {}, 0, 77},
        {true, true, 9, 9, platform::InterfaceId<IHTMLDocument2>(), 0, 77},
        {true, true, 5000, 700, platform::InterfaceId<IHTMLDocument3>(), 1, 700},
        {true, true, 9, 9, platform::InterfaceId<IHTMLElement2>(), 1, 800},
        {true, true, {}, 3, {}, 1, 3},
        {true, true, 3, {}, {}, 1, 3},
        {true, true, 0, 0, {}, 1, 800},
        {true, true, -5, -7, {}, 1, 800},
    };
    SaveDialogScript dialog(output_);
    for (const auto& c : kCases) {
        settings_.UseWebPageCopy = c.useCopy;
        ASSERT_EQ(settings_.Save(), S_OK);
        settings_.WebPageTargetHeight = 77;
        page_.hasDocument = c.hasDocument;
        page_.rootHeight = c.root;
        page_.bodyHeight = c.body;
        page_.refused = c.refused;
        pageCaptures = 0;
        EXPECT_EQ(Run(2), 0);  // Only 1 means the selection; a failed launch is 0, too.
        EXPECT_EQ(pageCaptures, c.captures);
        EXPECT_EQ(settings_.WebPageTargetHeight, c.height);
        EXPECT_EQ(dialog.Asked().back().suggestedName.empty(), c.height == 77);
        ASSERT_EQ(job_.Items.Count(), 1u);
        EXPECT_EQ(job_.Items[0]->Source, TEXT("http://h/p"));
        EXPECT_FALSE(job_.Items[0]->SourceIsTemporary || job_.AskOutputFile);
        EXPECT_EQ(job_.Security.Get(), settings_.Security.Get());
    }
    EXPECT_TRUE(messages_.Shown().empty());
}

TEST_F(ConvertCommandTest, FilesAreTheConvertersOnceItStartsAndRemovedIfItDoesNot) {
    const WideString report = profile_.Path(TEXT("report"));
    SetEnvironment("QUVADA_TEST_REPORT", ToUtf8(report).c_str());
    SaveDialogScript dialog(output_);
    for (const std::size_t run : {0u, 1u, 2u, 3u}) {
        const bool starts = run >= 2;
        const std::size_t isProtected = run % 2;
        if (run == 2) {
            std::filesystem::copy_file(STARTED_PROGRAM, test_support::LocalPath(converter_),
                                       std::filesystem::copy_options::overwrite_existing);
        }
        SetProtectedAnswer(isProtected ? "1" : "0");
        MakeCapturedPage();
        (void)DeleteFileW(report.c_str());
        SetEnvironment("QUVADA_TEST_OPEN", ToUtf8(capturedPage).c_str());
        EXPECT_EQ(Run(), 0);
        EXPECT_TRUE(job_.Items[0]->SourceIsTemporary);
        EXPECT_EQ(Wide(job_.Items[0]->Source), capturedPage);
        EXPECT_EQ(ReadShared(1).empty(), isProtected == 1);
        EXPECT_EQ(settings_.StorageFile.IsEmpty(), run != 3);
        job_.Reset();  // The tab goes; what a converter was started for does not.
        (void)platform::testing::WaitForStartedPrograms(20000, nullptr);
        EXPECT_EQ(test_support::ReadWholeFile(report).ends_with("\n0\n"), starts) << "opened";
        EXPECT_EQ(Exists(capturedPage), starts);
        EXPECT_EQ(test_support::ListFolder(profile_.TempFolder()).size(), run < 2 ? 0 : run - 1);
    }
    EXPECT_TRUE(messages_.Shown().empty());
}

TEST_F(ConvertCommandTest, AFailedStorageRemovesTheCapturedPage) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    SaveDialogScript dialog(output_);
    for (const std::string call :
         {"CreateFileMappingW", "MapViewOfFile", "GetTempPathW", "CreateFileW", "WriteFile"}) {
        SCOPED_TRACE(call);
        SetProtectedAnswer(call.find("Map") != call.npos ? "0" : "1");
        ASSERT_TRUE(settings_.StorageFile.Assign(TEXT("kept")));
        MakeCapturedPage();
        const platform::testing::InjectedFault fault(call.c_str(), 1, ERROR_DISK_FULL);
        EXPECT_EQ(Run(), 1);
        EXPECT_TRUE(fault.HasFired() && messages_.Shown().empty());
        EXPECT_FALSE(Exists(capturedPage));
        EXPECT_TRUE(settings_.SharedDataName.IsEmpty() && settings_.StorageFile == TEXT("kept"));
    }
    EXPECT_TRUE(job_.AskOutputFile && job_.SuggestedName == TEXT("ABc d"));
}

TEST_F(ConvertCommandTest, EachFailedAllocationEndsTheCommandOrLeavesTheJobWhole) {
    selectedMarkup = TEXT("<b>s</b>");
    SaveDialogScript dialog(output_);
    for (const char* answer : {"0", "1"}) {
        SetProtectedAnswer(answer);
        const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
            ConversionSettings settings(kKey);
            ConversionJob job;
            const bool isDone = Run(1, settings, job) == 0;
            EXPECT_TRUE(isDone || hasFailed());
            EXPECT_EQ(ReadShared(1).empty(), !isDone || *answer == '1');
            EXPECT_TRUE(!isDone || job.Items[0]->Source == TEXT("http://h/p"));
            EXPECT_TRUE(!isDone || *answer == '1' || Wide(job.Items[0]->OutputFile) == output_);
        });
        EXPECT_GT(failures, 10u);
    }
}

TEST_F(ConvertCommandTest, AsksUntilTheBrowserKnowsWhetherItIsProtected) {
    const struct {
        const char* answer;
        HRESULT result;
        BOOL flag;
        bool isKept;
    } kCases[] = {
        {"1", S_OK, TRUE, true},           {"0", S_OK, FALSE, true},
        {nullptr, E_NOTIMPL, FALSE, true}, {"fail:80070005", E_ACCESSDENIED, FALSE, false},
        {"fail:1", S_FALSE, FALSE, false},
    };
    for (const auto& c : kCases) {
        SetProtectedAnswer(c.answer);
        BOOL flag = 7;
        EXPECT_EQ(IsProtectedMode(flag), c.result);
        EXPECT_EQ(flag, c.flag);
        // Another answer shows whether the first was kept.
        SetEnvironment("QUVADA_TEST_PROTECTED", c.flag ? "0" : "1");
        EXPECT_EQ(IsProtectedMode(flag), c.isKept ? c.result : S_OK);
        EXPECT_EQ(flag, c.isKept ? c.flag : TRUE);
    }
    browserModule_.Reset();
    EXPECT_FALSE(GetModuleHandleW(TEXT("ieframe.dll"))) << "a use was not given back";
}

TEST(CleanTitle, KeepsWhatAFileNameMayHoldOfTheFirst41Characters) {
    for (const auto& row : test_support::ReadCases(DRIVER_CASES "clean_titles.tsv", 2)) {
        AUX::WString name;
        CleanTitle(row[0].data(), static_cast<std::uint32_t>(row[0].size()), name);
        EXPECT_EQ(Wide(name), row[1]) << ToUtf8(row[0]);
    }
}

}  // namespace
