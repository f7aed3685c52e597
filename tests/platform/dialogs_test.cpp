#include "platform/dialogs.h"

#include <gtest/gtest.h>
#include <vector>

#include "platform/files.h"
#include "platform/testing.h"
#include "platform/user.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::TestProfile;
using testing::MessageBoxRecorder;
using testing::SaveDialogScript;

TEST(MessageBox, IsAnsweredAndNoted) {
    const MessageBoxRecorder outer;
    {
        const MessageBoxRecorder inner(IDOK);
        EXPECT_EQ(MessageBoxW(nullptr, TEXT("No selection"), TEXT(""), MB_ICONEXCLAMATION), IDOK);
        EXPECT_EQ(MessageBoxW(nullptr, TEXT("two\nlines"), TEXT("cap"), MB_ICONERROR), IDOK);
        ASSERT_EQ(inner.Shown().size(), 2u);
        EXPECT_TRUE(inner.Shown()[0].text == TEXT("No selection"));
        EXPECT_TRUE(inner.Shown()[1].text == TEXT("two\nlines"));
        EXPECT_TRUE(inner.Shown()[1].caption == TEXT("cap"));
        EXPECT_EQ(inner.Shown()[1].type, MB_ICONERROR);
    }
    EXPECT_TRUE(outer.Shown().empty());
    EXPECT_EQ(MessageBoxW(nullptr, TEXT("a"), TEXT(""), MB_OK), IDOK);
    EXPECT_EQ(outer.Shown().size(), 1u);
}

UINT_PTR CALLBACK DoNothing(HWND, UINT, WPARAM, LPARAM) { return 0; }

/// A dialog as the Convert command asks it.
class SaveDialog : public ::testing::Test {
protected:
    bool Ask(WideView suggestion, DWORD size = MAX_PATH) {
        file_.assign(MAX_PATH + 1, 0);
        suggestion.copy(file_.data(), suggestion.size());
        OPENFILENAMEW dialog{};
        dialog.lStructSize = sizeof dialog;
        dialog.lpstrFilter = TEXT("PDF Documents (*.pdf)\0*.pdf\0");
        dialog.lpstrFile = file_.data();
        dialog.nMaxFile = size;
        dialog.lpstrFileTitle = title_;
        dialog.nMaxFileTitle = 256;
        dialog.lpstrDefExt = TEXT("pdf");
        dialog.Flags = OFN_ENABLESIZING | OFN_EXPLORER | OFN_ENABLEHOOK | OFN_OVERWRITEPROMPT;
        dialog.lpfnHook = DoNothing;
        return GetSaveFileNameW(&dialog) != FALSE;
    }
    [[nodiscard]] WideString File() const { return file_.data(); }

    TestProfile profile_;
    std::vector<WCHAR> file_;
    WCHAR title_[256] = {};
};

TEST_F(SaveDialog, GivesTheChosenPathAndNotesTheRequest) {
    const SaveDialogScript script(profile_.Path(TEXT("out file.pdf")));
    ASSERT_TRUE(Ask(TEXT("abc d")));
    EXPECT_EQ(ToUtf8(File()), ToUtf8(profile_.Path(TEXT("out file.pdf"))));
    ASSERT_EQ(script.Asked().size(), 1u);
    const testing::SaveDialogRequest& asked = script.Asked()[0];
    EXPECT_EQ(ToUtf8(asked.suggestedName), "abc d");
    EXPECT_EQ(ToUtf8(asked.filter), std::string("PDF Documents (*.pdf)\0*.pdf\0", 28));
    EXPECT_EQ(ToUtf8(asked.defaultExtension), "pdf");
    EXPECT_EQ(asked.flags, 0x880022u);
    EXPECT_EQ(asked.maxFile, 260u);
}

TEST_F(SaveDialog, AddsTheExtensionAndTakesAnExistingFileAfterTheQuestion) {
    const MessageBoxRecorder recorder;
    ASSERT_TRUE(test_support::WriteWholeFile(profile_.Path(TEXT("old.pdf")), "x"));
    const SaveDialogScript script(profile_.Path(TEXT("old")));
    ASSERT_TRUE(Ask(TEXT("")));
    EXPECT_EQ(ToUtf8(File()), ToUtf8(profile_.Path(TEXT("old.pdf"))));
    EXPECT_TRUE(recorder.Shown().empty()) << "the dialog's own question is not a message";
}

TEST_F(SaveDialog, GivesFalseWhenCancelledOrTooLong) {
    {
        const SaveDialogScript script(std::nullopt);
        EXPECT_FALSE(Ask(TEXT("name")));
        EXPECT_EQ(script.Asked().size(), 1u);
        EXPECT_EQ(ToUtf8(File()), "name");
    }
    const SaveDialogScript script(profile_.Path(TEXT("far too long a name.pdf")));
    EXPECT_FALSE(Ask(TEXT("n"), 12));
}

TEST_F(SaveDialog, TakesThePathOfTheEnvironmentInTheHostsForm) {
    if (!testing::kOwnsTheSystem) GTEST_SKIP() << "Windows asks the user";
    const std::pair<const char*, const char*> kCases[] = {
        {"/tmp/a b.pdf", "Z:\\tmp\\a b.pdf"},
        {"/tmp/x/../b", "Z:\\tmp\\b.pdf"},
        {"C:\\out.pdf", "C:\\out.pdf"},
        {"/tmp/", "n"},
        {"q:\\a.pdf", "n"},
        {"/tmp/a:b.pdf", "n"},
    };
    for (const auto& [set, path] : kCases) {
        testing::SetEnvironment("QUVADA_SAVE_AS", set);
        const bool asked = Ask(TEXT("n"));
        EXPECT_EQ(asked, ToUtf8(File()) != "n") << set;
        EXPECT_EQ(ToUtf8(File()), path) << set;
    }
    testing::SetEnvironment("QUVADA_SAVE_AS", nullptr);
}

}  // namespace
}  // namespace platform
