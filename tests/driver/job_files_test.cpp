#include "driver/job_files.h"

#include <gtest/gtest.h>

#include "foundation/file_removal.h"
#include "platform/files.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using test_support::Exists;

class JobFilesTest : public testing::Test {
protected:
    WideString File(const WideString& name) {
        const WideString path = profile_.Path(name);
        EXPECT_TRUE(test_support::WriteWholeFile(path, "x"));
        return path;
    }
    WideString Folder(const WideString& name) {
        const WideString path = profile_.Path(name);
        EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
        return path;
    }
    static AUX::WString Text(const WideString& text) {
        AUX::WString copy;
        EXPECT_TRUE(copy.Assign(AUX::WStringView(text)));
        return copy;
    }

    test_support::TestProfile profile_;
};

TEST_F(JobFilesTest, ACapturedPageGoesWithTheFolderOfItsParts) {
    const WideString page = File(TEXT("qvd_1.html"));
    ASSERT_TRUE(SetFileAttributesW(page.c_str(), FILE_ATTRIBUTE_READONLY));
    const WideString parts = Folder(TEXT("qvd_1_files"));
    File(TEXT("qvd_1_files\\c1.tmp"));
    Folder(TEXT("qvd_1_files\\deep"));
    File(TEXT("qvd_1_files\\deep\\c2.tmp"));
    const WideString other = Folder(TEXT("qvd_1.files"));
    DeleteCapturedPage(Text(page));
    EXPECT_FALSE(Exists(page));
    EXPECT_FALSE(Exists(parts));
    EXPECT_TRUE(Exists(other)) << "counts only when the first is not there";

    DeleteCapturedPage(Text(page));  // The page is gone already.
    EXPECT_FALSE(Exists(other));
    DeleteCapturedPage({});
}

TEST_F(JobFilesTest, TheFirstHtmlInThePathIsCutOut) {
    Folder(TEXT("x.html"));
    Folder(TEXT("x"));
    const WideString page = File(TEXT("x.html\\a.html"));
    const WideString parts = Folder(TEXT("x\\a.html_files"));
    const WideString beside = Folder(TEXT("x.html\\a_files"));
    DeleteCapturedPage(Text(page));
    EXPECT_FALSE(Exists(page));
    EXPECT_FALSE(Exists(parts));
    EXPECT_TRUE(Exists(beside));

    // Without ".html", in these letters, the path stays whole.
    const WideString capital = File(TEXT("b.HTML"));
    const WideString capitalParts = Folder(TEXT("b.HTML_files"));
    DeleteCapturedPage(Text(capital));
    EXPECT_FALSE(Exists(capital));
    EXPECT_FALSE(Exists(capitalParts));
}

TEST_F(JobFilesTest, AFolderTreeKeepsWhatBeginsWithAPoint) {
    EXPECT_EQ(AUX::DeleteFolderTree(profile_.Path(TEXT("none")).c_str()), 0u);
    const WideString folder = Folder(TEXT("t"));
    const WideString kept = File(TEXT("t\\.keep"));
    const WideString gone = File(TEXT("t\\a.keep"));
    EXPECT_EQ(AUX::DeleteFolderTree(folder.c_str()), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_TRUE(Exists(kept));
    EXPECT_FALSE(Exists(gone));
}

TEST_F(JobFilesTest, OnlyWhatIsMarkedTemporaryIsRemoved) {
    const WideString page = File(TEXT("p.html"));
    const WideString attachment = File(TEXT("a.txt"));
    ConversionJob job;
    JobItem* item = job.AddItem();
    ASSERT_TRUE(item);
    item->Source = Text(page);
    ASSERT_TRUE(item->Attachments.Add(new AUX::WString(Text(attachment))));
    RemoveJobFiles(job);
    EXPECT_TRUE(Exists(page) && Exists(attachment));
    item->AttachmentsAreTemporary = true;
    RemoveJobFiles(job);
    EXPECT_TRUE(Exists(page) && !Exists(attachment));
    item->SourceIsTemporary = true;
    RemoveJobFiles(job);
    EXPECT_FALSE(Exists(page));
}

}  // namespace
