#include "driver/job_block.h"

#include <gtest/gtest.h>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "platform/files.h"
#include "settings/conversion_settings.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

void Set(AUX::WString& text, AUX::WStringView value) { ASSERT_TRUE(text.Assign(value)); }

/// The block as bytes in hexadecimal, without blanks.
std::string Block(const ConversionJob& job) {
    AUX::DynMemStream stream;
    EXPECT_EQ(stream.Open(0, -2), 0);
    EXPECT_TRUE(job.Serialise(stream));
    EXPECT_EQ(MeasureJobBlock(job), static_cast<std::uint64_t>(stream.GetSize()));
    std::string text;
    const auto* const bytes = static_cast<const unsigned char*>(stream.GetData());
    for (std::int64_t i = 0; i < stream.GetSize(); ++i) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

TEST(JobBlock, AnEmptyJobHas23BytesAndASuggestedNameOnlyWhenTheConverterAsks) {
    ConversionJob job;
    EXPECT_EQ(Block(job), WithoutBlanks("17000000 0C 00 00 00 00 00 0000000000000000 00 00000000"));
    job.AskOutputFile = true;
    EXPECT_EQ(Block(job), WithoutBlanks("1B000000 0C 00 00 00 01 00000000 00 0000000000000000 00 "
                                        "00000000"));
}

TEST(JobBlock, APageJobHasTheseBytes) {
    ConversionSettings settings(nullptr);
    ConversionJob job;
    job.AttachSettings(settings.Security, settings.RunApp);
    JobItem* item = job.AddItem();
    Set(item->Source, TEXT("u"));
    Set(item->OutputFile, TEXT("o.pdf"));
    Set(job.SuggestedName, TEXT("does not travel"));
    const std::string block = Block(job);
    EXPECT_EQ(block,
              WithoutBlanks("47000000 0C 00 01 00 00000000 02000000 25006600 00 00 00 "
                            "0000000000000000 00 01000000 01000000 7500 00000000 00000000 05000000 "
                            "6F002E00700064006600 00000000 00 00 00"));
    EXPECT_EQ(block.size() / 2, 71u);

    // Protection that is switched off does not travel, whatever its fields say.
    Set(settings.Security->UserPassword, TEXT("secret"));
    settings.Security->HasUserPassword = true;
    EXPECT_EQ(Block(job), block);
}

TEST(JobBlock, ProtectionTravelsWhole) {
    ConversionSettings settings(nullptr);
    SecuritySettings& security = *settings.Security;
    ConversionJob job;
    job.AttachSettings(settings.Security, {});
    security.Enabled = true;
    EXPECT_EQ(Block(job),
              WithoutBlanks("34000000 0C 01 00 00 00000000 00000000 00000000 00 00 00 00 "
                            "00 00 00000000 00000000 01 00 00 00 00 0000000000000000 00 "
                            "00000000"));
    security.HasUserPassword = true;
    Set(security.UserPassword, TEXT("a"));
    Set(security.OwnerPassword, TEXT("ab"));
    security.Type = 4;
    security.Allow40Changing = true;
    security.Allow40Comments = true;
    security.Allow128ContentAccess = true;
    security.Changes128 = 3;
    security.Printing128 = 2;
    security.EncryptMetadata128 = false;
    EXPECT_EQ(Block(job),
              WithoutBlanks("40000000 0C 01 01 00 04000000 5951413D 08000000 5951426941413D3D "
                            "04000000 00 01 00 01 01 00 03000000 02000000 00 00 00 00 00 "
                            "0000000000000000 00 00000000"));
}

TEST(JobBlock, WhatTheAddInLeavesEmptyHasItsPlace) {
    ConversionJob job;
    job.NameFlag = true;
    Set(job.SuggestedName, TEXT("n"));
    job.OptionFlag = true;
    job.OptionValue = 0x0807060504030201;
    job.ExtraFlag = true;
    Set(job.ExtraText1, TEXT("1"));
    Set(job.ExtraText3, TEXT("3"));
    JobItem* item = job.AddItem();
    Set(item->SelectionHtml, AUX::WStringView(TEXT("\0<"), 2));
    Set(item->ItemText, TEXT("t"));
    auto* attachment = new AUX::WString;
    Set(*attachment, TEXT("a"));
    ASSERT_TRUE(item->Attachments.Add(attachment));
    item->SourceIsTemporary = true;
    item->Details = SharedRef<ItemDetails>::Make();
    Set(item->Details->FirstTexts[6], TEXT("7"));
    Set(item->Details->LastTexts[0], TEXT("8"));
    item->Details->Number = 9;
    EXPECT_EQ(Block(job),
              WithoutBlanks("84000000 0C 00 00 01 00 01000000 6E00 01 0102030405060708 "
                            "01 01000000 3100 00000000 01000000 3300 01000000 "
                            "00000000 02000000 00003C00 01000000 7400 00000000 "
                            "01000000 01000000 6100 01 00 01 "
                            "00000000 00000000 00000000 00000000 00000000 00000000 01000000 3700 "
                            "01000000 3800 00000000 00000000 0900000000000000"));
}

TEST(JobBlock, BeginsAtTheStartOfItsStreamAndFillsIt) {
    const ConversionJob job;
    AUX::DynMemStream stream;
    EXPECT_FALSE(job.Serialise(stream)) << "not open";
    ASSERT_EQ(stream.Open(24, -2), 0);
    EXPECT_FALSE(job.Serialise(stream)) << "a byte is left behind the block";
    ASSERT_EQ(stream.Open(23, -2), 0);
    EXPECT_TRUE(job.Serialise(stream));
    EXPECT_FALSE(job.Serialise(stream)) << "not at the start";
}

TEST(JobBlock, GoesToAFileToo) {
    const test_support::TestProfile profile;
    const platform::WideString path = profile.Path(TEXT("block"));
    AUX::FileStream stream;
    ASSERT_EQ(stream.Open(path.c_str(), CREATE_ALWAYS, AUX::kAccessMask, FILE_SHARE_READ,
                          FILE_ATTRIBUTE_NORMAL),
              0);
    EXPECT_TRUE(ConversionJob().Serialise(stream));
    EXPECT_EQ(stream.GetPosition(), 23);
    ASSERT_EQ(stream.Close(), 0);
    EXPECT_EQ(test_support::ReadWholeFile(path),
              std::string("\x17\0\0\0\x0C", 5) + std::string(18, '\0'));
}

TEST(JobBlock, EachFailedAllocationGivesFalse) {
    ConversionSettings settings(nullptr);
    settings.Security->Enabled = true;
    Set(settings.Security->UserPassword, TEXT("secret"));
    ConversionJob job;
    job.AttachSettings(settings.Security, settings.RunApp);
    ASSERT_TRUE(job.AddItem()->SelectionHtml.AppendRepeated('x', 20000));
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        AUX::DynMemStream stream;
        const bool isDone = stream.Open(0, -2) == 0 && job.Serialise(stream);
        EXPECT_NE(isDone, hasFailed());
    });
    EXPECT_GT(failures, 3u);  // Store, block, password, growth.
}

}  // namespace
