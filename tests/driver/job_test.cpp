#include "driver/conversion_job.h"
#include "driver/job_block.h"
#include "driver/job_files.h"
#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "foundation/paths.h"
#include "settings/conversion_settings.h"
#include "tests/driver/command_test.h"
#include "tests/support/case_table.h"

namespace {

using driver_test::ReadShared;
using platform::WideString;
using test_support::Exists;

void Set(AUX::WString& text, AUX::WStringView value) { ASSERT_TRUE(text.Assign(value)); }

std::string Block(const ConversionJob& job) {
    AUX::DynMemStream stream;
    EXPECT_TRUE(stream.Open(0, -2) == 0 && job.Serialise(stream));
    EXPECT_EQ(MeasureJobBlock(job), static_cast<std::uint64_t>(stream.GetSize()));
    return {static_cast<const char*>(stream.GetData()), MeasureJobBlock(job)};
}

/// The block of this name in the table.
std::string Literal(const char* name) {
    std::string bytes;
    for (const auto& row : test_support::ReadCases(DRIVER_CASES "job_blocks.tsv", 2)) {
        if (platform::ToUtf8(row[0]) != name) continue;
        std::string digits = platform::ToUtf8(row[1]);
        std::erase(digits, ' ');
        for (std::size_t at = 0; at < digits.size(); at += 2) {
            bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
        }
    }
    return bytes;
}

/// Publishes a block of `size` bytes that says it has `claimed`.
bool Publish(SharedJobBlock& block, std::uint32_t size, char fill, std::uint32_t claimed) {
    std::string bytes(size + 4, fill);
    bytes.replace(0, 4, reinterpret_cast<const char*>(&claimed), 4);
    return block.Publish(bytes.data(), size);
}

class JobTest : public testing::Test {
protected:
    test_support::TestProfile profile_;
    ConversionSettings settings_{nullptr};
    ConversionJob job_;
};

TEST_F(JobTest, HasTheseBytes) {
    EXPECT_EQ(Block(job_), Literal("empty"));
    job_.AskOutputFile = true;
    EXPECT_EQ(Block(job_), Literal("asks, no name"));

    // Neither the name nor protection that is switched off travels.
    job_.AskOutputFile = false;
    Set(job_.SuggestedName, TEXT("name"));
    SecuritySettings& security = *settings_.Security;
    job_.AttachSettings(settings_.Security, settings_.RunApp);
    Set(security.UserPassword, TEXT("a"));
    JobItem* item = job_.AddItem();
    Set(item->Source, TEXT("u"));
    Set(item->OutputFile, TEXT("o.pdf"));
    EXPECT_EQ(Block(job_), Literal("page"));

    job_.Reset();
    job_.AttachSettings(settings_.Security, {});
    security.UserPassword.Clear();
    security.Enabled = security.HasOwnerPassword = true;
    security.Allow40Copying = security.Allow40Comments = security.Allow128Copying = true;
    EXPECT_EQ(Block(job_), Literal("no passwords"));
    security.HasOwnerPassword = security.EncryptMetadata128 = false;
    security.Allow40Copying = security.Allow128Copying = false;
    security.HasUserPassword = security.Allow40Changing = security.Allow128ContentAccess = true;
    Set(security.UserPassword, TEXT("a"));
    Set(security.OwnerPassword, TEXT("ab"));
    security.Type = 4;
    security.Changes128 = 3;
    security.Printing128 = 2;
    EXPECT_EQ(Block(job_), Literal("protected"));
}

TEST_F(JobTest, WhatTheAddInLeavesEmptyHasItsPlaceAndIsReset) {
    job_.NameFlag = job_.OptionFlag = job_.ExtraFlag = true;
    Set(job_.SuggestedName, TEXT("n"));
    job_.OptionValue = 0x0807060504030201;
    Set(job_.ExtraText1, TEXT("1"));
    Set(job_.ExtraText3, TEXT("3"));
    JobItem* item = job_.AddItem();
    Set(item->SelectionHtml, AUX::WStringView(TEXT("\0<"), 2));
    Set(item->ItemText, TEXT("t"));
    ASSERT_TRUE(item->Attachments.Add(new AUX::WString));
    Set(*item->Attachments[0], TEXT("a"));
    item->SourceIsTemporary = true;
    item->Details = SharedRef<ItemDetails>::Make();
    Set(item->Details->FirstTexts[6], TEXT("7"));
    Set(item->Details->LastTexts[0], TEXT("8"));
    item->Details->Number = 9;
    EXPECT_EQ(Block(job_), Literal("all the rest"));

    // All goes but the file; a name is there while the block is.
    AUX::WString path;
    AUX::WString name;
    Set(name, TEXT("before"));
    job_.SharedName(name);
    EXPECT_TRUE(name.IsEmpty());
    job_.AttachSettings(settings_.Security, settings_.RunApp);
    job_.AskOutputFile = true;
    ASSERT_TRUE(job_.WriteToFile(path) && job_.PublishShared());
    job_.SharedName(name);
    EXPECT_EQ(name, TEXT("QVD:IEP:HTMLData"));
    EXPECT_EQ(ReadShared(Block(job_).size()), Block(job_));
    job_.Reset();
    job_.SharedName(name);
    EXPECT_TRUE(name.IsEmpty() && ReadShared(1).empty() && Exists(path.Text()));
    EXPECT_EQ(Block(job_), Literal("empty"));
}

TEST_F(JobTest, BeginsAtTheStartOfItsStreamAndFillsIt) {
    AUX::DynMemStream stream;
    EXPECT_FALSE(job_.Serialise(stream)) << "not open";
    ASSERT_EQ(stream.Open(24, -2), 0);
    EXPECT_FALSE(job_.Serialise(stream)) << "a byte is left behind the block";
    ASSERT_EQ(stream.Open(23, -2), 0);
    EXPECT_TRUE(job_.Serialise(stream));
    EXPECT_FALSE(job_.Serialise(stream)) << "not at the start";
    // A stream whose bytes do not lie in memory will do.
    AUX::FileStream file;
    const WideString path = profile_.Path(TEXT("block"));
    ASSERT_EQ(file.Open(path.c_str(), CREATE_ALWAYS, AUX::kAccessMask, FILE_SHARE_READ, 0), 0);
    EXPECT_TRUE(job_.Serialise(file));
    ASSERT_EQ(file.Close(), 0);
    EXPECT_EQ(test_support::ReadWholeFile(path), Literal("empty"));
}

TEST_F(JobTest, IsPublishedWholeUnderItsOneNameOrNotAtAll) {
    SharedJobBlock first;
    SharedJobBlock second;
    EXPECT_FALSE(Publish(first, 3, 0, 3));
    EXPECT_FALSE(Publish(first, 24, 'a', 23));
    EXPECT_FALSE(first.Publish(nullptr, 23));
    EXPECT_EQ(ReadShared(1), "");
    EXPECT_TRUE(Publish(first, 4, 0, 4));
    EXPECT_EQ(ReadShared(4), std::string("\4\0\0\0", 4));
    EXPECT_FALSE(Publish(first, 4, 0, 5));
    EXPECT_EQ(ReadShared(1), "") << "a refused block ends the one before, too";

    // Two tabs share one object. It keeps its size, rounded up to whole pages.
    ASSERT_TRUE(Publish(first, 40, 'a', 40) && Publish(second, 30, 'b', 30));
    EXPECT_EQ(ReadShared(40).substr(4), std::string(26, 'b') + std::string(10, 'a'));
    EXPECT_FALSE(Publish(second, 100000, 'c', 100000));
    EXPECT_FALSE(second.IsOpen());
    first.Close();
    first.Close();
    EXPECT_EQ(ReadShared(1), "") << "outlives its last holder";
    EXPECT_TRUE(Publish(second, 100000, 'c', 100000));
    EXPECT_EQ(ReadShared(100000).substr(4), std::string(99996, 'c'));
}

TEST_F(JobTest, OnlyTemporaryFilesGoAndWithAPageTheFolderOfItsParts) {
    const struct {
        WideString page, part, other;  // Of a file in the folder that goes, and in one that stays.
    } kCases[] = {
        {TEXT("a.html"), TEXT("a_files\\c"), TEXT("a.files\\c")},
        {TEXT("b.html"), TEXT("b.files\\c"), TEXT("b.html_files\\c")},
        // The first ".html" is cut out, in these letters only.
        {TEXT("x.html\\a.html"), TEXT("x\\a.html_files\\c"), TEXT("x.html\\a_files\\c")},
        {TEXT("c.HTML"), TEXT("c.HTML_files\\c"), TEXT("c_files\\c")},
    };
    for (const auto& c : kCases) {
        const WideString attached = profile_.Path(TEXT("a.txt"));
        const WideString page = profile_.Path(c.page);
        const WideString part = profile_.Path(c.part);
        const WideString other = profile_.Path(c.other);
        for (const WideString& path : {attached, page, part, other}) {
            (void)AUX::CreateDirectoryTree(path.substr(0, path.rfind('\\')).c_str());
            EXPECT_TRUE(test_support::WriteWholeFile(path, "x"));
        }
        EXPECT_TRUE(SetFileAttributesW(page.c_str(), FILE_ATTRIBUTE_READONLY));
        job_.Reset();
        JobItem* item = job_.AddItem();
        Set(item->Source, AUX::WStringView(page));
        ASSERT_TRUE(item->Attachments.Add(new AUX::WString));
        Set(*item->Attachments[0], AUX::WStringView(attached));
        RemoveJobFiles(job_);
        EXPECT_TRUE(Exists(page) && Exists(part) && Exists(attached)) << "not temporary";
        item->AttachmentsAreTemporary = true;
        RemoveJobFiles(job_);
        EXPECT_TRUE(Exists(page) && !Exists(attached));
        item->SourceIsTemporary = true;
        RemoveJobFiles(job_);
        EXPECT_FALSE(Exists(page) || Exists(part.substr(0, part.rfind('\\'))));
        EXPECT_TRUE(Exists(other));
    }
}

}  // namespace
