#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include "driver/conversion_job.h"
#include "foundation/memory_testing.h"
#include "platform/files.h"
#include "platform/testing.h"
#include "tests/driver/shared_reader.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
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

TEST_F(JobStorageTest, PublishingSurvivesEachFailedAllocation) {
    AUX::testing::AllocationWatch watch;
    std::uint64_t n = 0;
    for (bool done = false; !done && n < 100;) {
        ConversionJob job;
        const std::uint64_t before = watch.Failures();
        watch.FailOnce(++n);
        done = job.PublishShared();
        EXPECT_EQ(done, watch.Failures() == before) << n;
        AUX::WString name;
        watch.FailNone();
        job.SharedName(name);
        EXPECT_EQ(name.IsEmpty(), !done);
        EXPECT_EQ(HasShared(), done);
    }
    EXPECT_GT(n, 3u);  // Block's object, stream's store, its bytes.
    EXPECT_LT(n, 100u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

TEST_F(JobStorageTest, AFailedSecondPublicationEndsTheFirst) {
    ConversionJob job;
    ASSERT_TRUE(job.PublishShared());
    AUX::WString name;
    {
        AUX::testing::AllocationWatch watch;
        watch.FailFrom(1);
        EXPECT_FALSE(job.PublishShared());
    }
    job.SharedName(name);
    EXPECT_TRUE(name.IsEmpty());
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

TEST_F(JobStorageTest, AFailedStorageFileLeavesNoPath) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    const ConversionJob job;
    for (const char* call : {"GetTempPathW", "CreateFileW", "WriteFile"}) {
        SCOPED_TRACE(call);
        AUX::WString path;
        ASSERT_TRUE(path.Assign(TEXT("before")));
        const platform::testing::InjectedFault fault(call, 1, ERROR_DISK_FULL);
        EXPECT_FALSE(job.WriteToFile(path));
        EXPECT_TRUE(fault.HasFired());
        EXPECT_TRUE(path.IsEmpty());
    }
    // Of the three only the failed write left a file, which is empty.
    const auto names = test_support::ListFolder(profile_.TempFolder());
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(test_support::ReadWholeFile(profile_.TempFolder() + names[0]), "");
}

TEST_F(JobStorageTest, WritingSurvivesEachFailedAllocation) {
    const ConversionJob job;
    AUX::testing::AllocationWatch watch;
    std::uint64_t n = 0;
    for (bool wasReached = true; wasReached && n < 100;) {
        AUX::WString path;
        const std::uint64_t before = watch.Failures();
        watch.FailOnce(++n);
        const bool done = job.WriteToFile(path);
        wasReached = watch.Failures() > before;
        EXPECT_EQ(path.IsEmpty(), !done) << n;
        EXPECT_TRUE(done || wasReached) << n;
    }
    EXPECT_GT(n, 6u);  // Folder, name, block's store and bytes, file's store and path.
    EXPECT_LT(n, 100u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

TEST_F(JobStorageTest, ResetForgetsAllButFiles) {
    ConversionJob job;
    ASSERT_TRUE(job.AddItem());
    job.AttachSettings(SharedRef<SecuritySettings>::Make(), SharedRef<RunAppSettings>::Make());
    job.NameFlag = job.AskOutputFile = job.OptionFlag = job.ExtraFlag = true;
    job.OptionValue = 5;
    for (AUX::WString* text :
         {&job.SuggestedName, &job.ExtraText1, &job.ExtraText2, &job.ExtraText3}) {
        ASSERT_TRUE(text->Assign(TEXT("x")));
    }
    AUX::WString path;
    ASSERT_TRUE(job.WriteToFile(path));
    job.Reset();
    EXPECT_TRUE(test_support::Exists(path.Text()));
    ASSERT_TRUE(job.PublishShared());
    EXPECT_EQ(driver_test::ReadShared(4), kEmptyJob.substr(0, 4));
    EXPECT_FALSE(job.Security || job.RunApp || job.NameFlag || job.OptionFlag || job.ExtraFlag);
    EXPECT_TRUE(job.SuggestedName.IsEmpty() && job.ExtraText1.IsEmpty());
}

}  // namespace
