#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include "driver/conversion_job.h"
#include "driver/job_files.h"
#include "platform/files.h"
#include "platform/testing.h"
#include "tests/driver/command_test.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using test_support::Exists;
using Bytes = std::string;

/// A block of this many bytes that says so.
Bytes BlockOf(std::uint32_t size, char fill) {
    Bytes block(size, fill);
    std::memcpy(block.data(), &size, std::min<std::size_t>(size, 4));
    return block;
}

bool Publish(SharedJobBlock& block, const Bytes& bytes) {
    return block.Publish(bytes.data(), static_cast<std::int64_t>(bytes.size()));
}

// The block of a job that was just reset.
const Bytes kEmptyJob = Bytes("\x17\0\0\0\x0C", 5) + Bytes(18, '\0');

bool HasShared() { return !driver_test::ReadShared(1).empty(); }

class JobStorageTest : public testing::Test {
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

TEST_F(JobStorageTest, ABlockThatDisagreesWithItsSizeIsNotPublished) {
    SharedJobBlock block;
    EXPECT_FALSE(Publish(block, Bytes("\3\0\0", 3)));
    EXPECT_FALSE(block.Publish(nullptr, 23));
    EXPECT_FALSE(block.Publish("\4\0\0\0", -4));
    EXPECT_FALSE(Publish(block, BlockOf(23, 'a') + 'b'));
    EXPECT_FALSE(block.IsOpen());
    EXPECT_FALSE(HasShared());
    const Bytes smallest = BlockOf(4, 0);
    EXPECT_TRUE(Publish(block, smallest));
    EXPECT_EQ(driver_test::ReadShared(4), smallest);

    // A refused block ends the one before, too.
    EXPECT_FALSE(Publish(block, "x"));
    EXPECT_FALSE(block.IsOpen());
    EXPECT_FALSE(HasShared());
}

TEST_F(JobStorageTest, TwoTabsShareOneObject) {
    SharedJobBlock first;
    SharedJobBlock second;
    ASSERT_TRUE(Publish(first, BlockOf(40, 'a')));
    ASSERT_TRUE(Publish(second, BlockOf(30, 'b')));
    EXPECT_EQ(driver_test::ReadShared(40), BlockOf(30, 'b') + Bytes(10, 'a'));
    // The object keeps its size, rounded up to whole pages.
    EXPECT_FALSE(Publish(second, BlockOf(100000, 'c')));
    EXPECT_FALSE(second.IsOpen());
    first.Close();
    first.Close();
    EXPECT_FALSE(HasShared()) << "outlives its last holder";
    EXPECT_TRUE(Publish(second, BlockOf(100000, 'c')));
    EXPECT_EQ(driver_test::ReadShared(100000), BlockOf(100000, 'c'));
}

TEST_F(JobStorageTest, APublishedJobHasANameUntilItIsReset) {
    ConversionJob job;
    AUX::WString name;
    ASSERT_TRUE(name.Assign(TEXT("before")));
    job.SharedName(name);
    EXPECT_TRUE(name.IsEmpty());
    ASSERT_TRUE(job.PublishShared());
    job.SharedName(name);
    EXPECT_EQ(name, TEXT("QVD:IEP:HTMLData"));
    EXPECT_EQ(driver_test::ReadShared(23), kEmptyJob);
    job.Reset();
    job.SharedName(name);
    EXPECT_TRUE(name.IsEmpty());
    EXPECT_FALSE(HasShared());
}

TEST_F(JobStorageTest, ALongSelectionIsReservedOnceAndExactly) {
    ConversionJob job;
    JobItem* item = job.AddItem();
    ASSERT_TRUE(item && item->SelectionHtml.AppendRepeated('x', 1 << 20));
    AUX::testing::AllocationWatch watch;
    ASSERT_TRUE(job.PublishShared());
    EXPECT_EQ(watch.Requests(), 3u) << "the block's object, the stream's store and its bytes";
}

TEST_F(JobStorageTest, AStorageFileHasTheBlockUnderItsOwnName) {
    const ConversionJob job;
    AUX::WString first;
    AUX::WString second;
    ASSERT_TRUE(first.Assign(TEXT("before")));
    ASSERT_TRUE(job.WriteToFile(first));
    ASSERT_TRUE(job.WriteToFile(second));
    EXPECT_NE(WideString(AUX::WStringView(first)), WideString(AUX::WStringView(second)));
    const WideString path(first.Text());
    const WideString start = profile_.TempFolder() + TEXT("qvdstg_");
    EXPECT_EQ(path.substr(0, start.size()), start);
    EXPECT_EQ(path.substr(path.size() - 4), TEXT(".bin"));
    EXPECT_EQ(path.find_first_not_of(TEXT("0123456789abcdef"), start.size()), path.size() - 4);
    EXPECT_EQ(test_support::ReadWholeFile(path), kEmptyJob);
}

TEST_F(JobStorageTest, AFailedWriteLeavesNoPath) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    for (const char* call : {"GetTempPathW", "CreateFileW", "WriteFile"}) {
        SCOPED_TRACE(call);
        AUX::WString path = Text(TEXT("before"));
        const platform::testing::InjectedFault fault(call, 1, ERROR_DISK_FULL);
        EXPECT_FALSE(ConversionJob().WriteToFile(path));
        EXPECT_TRUE(fault.HasFired());
        EXPECT_TRUE(path.IsEmpty());
    }
}

TEST_F(JobStorageTest, EachFailedAllocationLeavesNothingToFind) {
    const auto published = test_support::FailEachAllocation([](const auto& hasFailed) {
        ConversionJob job;
        const bool isFirstDone = job.PublishShared();
        const bool isDone = job.PublishShared();
        EXPECT_NE(isFirstDone && isDone, hasFailed());
        EXPECT_EQ(HasShared(), isDone) << "a failed publication ends the one before";
    });
    EXPECT_EQ(published, 5u);  // The block's object; twice the stream's store and its bytes.
    const auto written = test_support::FailEachAllocation([](const auto& hasFailed) {
        AUX::WString path;
        const bool isDone = ConversionJob().WriteToFile(path);
        EXPECT_TRUE(isDone || hasFailed());
        EXPECT_EQ(path.IsEmpty(), !isDone);
    });
    EXPECT_GT(written, 5u);  // Folder, name, block's store and bytes, file's store and path.
}

TEST_F(JobStorageTest, ResetForgetsAllButFiles) {
    ConversionJob job;
    ASSERT_TRUE(job.AddItem());
    job.AttachSettings(SharedRef<SecuritySettings>::Make(), SharedRef<RunAppSettings>::Make());
    job.NameFlag = job.AskOutputFile = job.OptionFlag = job.ExtraFlag = true;
    job.OptionValue = 5;
    AUX::WString path;
    ASSERT_TRUE(job.WriteToFile(path));
    job.Reset();
    EXPECT_TRUE(Exists(path.Text()));
    ASSERT_TRUE(job.PublishShared());
    EXPECT_EQ(driver_test::ReadShared(23), kEmptyJob);
}

TEST_F(JobStorageTest, ACapturedPageGoesWithTheFolderOfItsParts) {
    const WideString page = File(TEXT("qvd_1.html"));
    ASSERT_TRUE(SetFileAttributesW(page.c_str(), FILE_ATTRIBUTE_READONLY));
    const WideString parts = Folder(TEXT("qvd_1_files"));
    File(TEXT("qvd_1_files\\c1.tmp"));
    const WideString other = Folder(TEXT("qvd_1.files"));
    DeleteCapturedPage(Text(page));
    EXPECT_FALSE(Exists(page) || Exists(parts));
    EXPECT_TRUE(Exists(other)) << "counts only when the first is not there";
    DeleteCapturedPage(Text(page));  // The page is gone already.
    EXPECT_FALSE(Exists(other));
    DeleteCapturedPage({});

    // The first ".html" of the path is cut out, in these letters only.
    Folder(TEXT("x.html"));
    Folder(TEXT("x"));
    const WideString inner = File(TEXT("x.html\\a.html"));
    const WideString innerParts = Folder(TEXT("x\\a.html_files"));
    const WideString beside = Folder(TEXT("x.html\\a_files"));
    DeleteCapturedPage(Text(inner));
    EXPECT_FALSE(Exists(inner) || Exists(innerParts));
    EXPECT_TRUE(Exists(beside));
    const WideString capital = File(TEXT("b.HTML"));
    const WideString capitalParts = Folder(TEXT("b.HTML_files"));
    DeleteCapturedPage(Text(capital));
    EXPECT_FALSE(Exists(capital) || Exists(capitalParts));
}

TEST_F(JobStorageTest, OnlyWhatIsMarkedTemporaryIsRemoved) {
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
