#include "converter/job_block.h"

#include <gtest/gtest.h>

#include "converter/explain.h"
#include "converter/password_text.h"
#include "tests/converter/block_bytes.h"

namespace converter {
namespace {

// A page job with security off: source "u", output "o.pdf".
const Bytes kSmall = {0x47, 0x00, 0x00, 0x00, 0x0C, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
                      0x02, 0x00, 0x00, 0x00, 0x25, 0x00, 0x66, 0x00, 0x00, 0x00, 0x00, 0x00,
                      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                      0x01, 0x00, 0x00, 0x00, 0x75, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                      0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x6F, 0x00, 0x2E, 0x00, 0x70, 0x00,
                      0x64, 0x00, 0x66, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

TEST(JobBlock, ReadsTheSmallJob) {
    ASSERT_EQ(kSmall.size(), 71u);
    EXPECT_EQ(PageBlock(TEXT("u"), TEXT("o.pdf")), kSmall);
    const Result<Job> job = ReadJobBlock(kSmall);
    ASSERT_TRUE(job) << job.GetError().text;
    EXPECT_FALSE(job->security);
    ASSERT_TRUE(job->runApp);
    EXPECT_TRUE(job->runApp->appParameters == TEXT("%f"));
    ASSERT_EQ(job->items.size(), 1u);
    EXPECT_TRUE(job->items[0].source == TEXT("u"));
    EXPECT_TRUE(job->items[0].outputFile == TEXT("o.pdf"));
    EXPECT_FALSE(job->items[0].sourceIsTemporary);
}

TEST(JobBlock, ReadsEveryField) {
    const Result<Job> job = ReadJobBlock(FullBlock());
    ASSERT_TRUE(job) << job.GetError().text;
    ASSERT_TRUE(job->security);
    EXPECT_TRUE(job->security->userPassword == TEXT("ab"));
    EXPECT_TRUE(job->security->ownerPassword.empty());
    EXPECT_EQ(job->security->type, Encryption::AesBits128);
    EXPECT_TRUE(job->security->allow40Printing && job->security->allow40Copying);
    EXPECT_FALSE(job->security->allow40Changing || job->security->allow40Comments);
    EXPECT_FALSE(job->security->allow128ContentAccess);
    EXPECT_TRUE(job->security->allow128Copying);
    EXPECT_EQ(job->security->changes128, Changes::Comments);
    EXPECT_EQ(job->security->printing128, Printing::LowResolution);
    EXPECT_TRUE(job->runApp->useCustomApp);
    EXPECT_TRUE(job->runApp->appPath == TEXT("C:\\v.exe"));
    EXPECT_TRUE(job->suggestedName == TEXT("Name"));
    EXPECT_EQ(job->optionValue, 0x100000007u);
    EXPECT_TRUE(job->extraTexts->text[2] == TEXT("yz"));
    ASSERT_EQ(job->items.size(), 2u);
    const Item& first = job->items[0];
    EXPECT_TRUE(first.selectionHtml == TEXT("<b>") && first.itemText == TEXT("t"));
    EXPECT_EQ(first.attachments.size(), 2u);
    EXPECT_FALSE(first.sourceIsTemporary);
    EXPECT_TRUE(first.attachmentsAreTemporary);
    EXPECT_TRUE(first.details->text[9] == TEXT("last"));
    EXPECT_EQ(first.details->value, 9u);
    EXPECT_TRUE(job->items[1].sourceIsTemporary);
}

TEST(JobBlock, RefusesEveryTruncationAndAddition) {
    for (const Bytes& whole : {kSmall, FullBlock()}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(ReadJobBlock(cut)) << size;
            if (size < 4) continue;
            cut[0] = static_cast<std::uint8_t>(size & 0xFF);  // with a length that agrees
            cut[1] = static_cast<std::uint8_t>(size >> 8);
            EXPECT_FALSE(ReadJobBlock(cut)) << size;
        }
        Bytes longer = whole;
        longer.push_back(0);
        EXPECT_FALSE(ReadJobBlock(longer));
        longer[0] = static_cast<std::uint8_t>(longer.size() & 0xFF);
        longer[1] = static_cast<std::uint8_t>(longer.size() >> 8);
        const Result<Job> job = ReadJobBlock(longer);
        ASSERT_FALSE(job);
        EXPECT_NE(job.GetError().text.find("followed by 1 more"), std::string::npos);
    }
}

TEST(JobBlock, SurvivesEveryFlippedBit) {
    const Bytes whole = FullBlock();
    std::size_t accepted = 0;
    for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        Bytes damaged = whole;
        damaged[bit / 8] = static_cast<std::uint8_t>(damaged[bit / 8] ^ (1u << bit % 8));
        const Result<Job> job = ReadJobBlock(damaged);
        accepted += static_cast<bool>(job);
        EXPECT_TRUE(job || !job.GetError().text.empty());
        if (job) {
            EXPECT_FALSE(Explain(*job, ShowPasswords::Yes).empty());
        }
    }
    // Flipped letters of texts are other texts; anything else must be noticed.
    EXPECT_GT(accepted, 0u);
    EXPECT_LT(accepted, whole.size() * 8 / 2);
}

TEST(JobBlock, SaysWhichFieldIsBad) {
    struct Case {
        const char* why;
        std::size_t at;
        std::uint8_t value;
        const char* said;
    };
    constexpr Case kCases[] = {
        {"other version", 4, 11, "FormatVersion at byte 4 is 11"},
        {"flag that is neither", 6, 2, "HasRunApp at byte 6 is 2"},
        {"text longer than the block", 51, 0xFF, "OutputFile at byte 50 announces"},
        {"more items than bytes", 35, 0x7F, "ItemCount at byte 32 announces"},
        {"attachments without end", 67, 0xFF, "Attachments at byte 64 announces"},
        {"zero in a path", 54, 0, "OutputFile at byte 50 holds a zero"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        Bytes block = kSmall;
        block[c.at] = c.value;
        const Result<Job> job = ReadJobBlock(block);
        ASSERT_FALSE(job);
        EXPECT_NE(job.GetError().text.find(c.said), std::string::npos) << job.GetError().text;
    }
    Bytes block = FullBlock();
    block[24] = 5;
    const Result<Job> job = ReadJobBlock(block);
    ASSERT_FALSE(job);
    EXPECT_NE(job.GetError().text.find("Type at byte 24 is 5"), std::string::npos)
        << job.GetError().text;
}

TEST(PasswordText, ReadsTheDocumentedFormOnly) {
    // 57 characters: two full lines, each with its break.
    const std::string line(76, 'A');
    const Result<platform::WideString> full = ReadPasswordText(line + "\r\n" + line + "\r\n");
    ASSERT_TRUE(full);
    EXPECT_TRUE(*full == platform::WideString(57, WCHAR{0}));
    const Result<platform::WideString> longer =
        ReadPasswordText(line + "\r\n" + line + "\r\nrCA92ADe");
    ASSERT_TRUE(longer);
    EXPECT_TRUE(longer->substr(longer->size() - 3) ==
                platform::WideString({0x20AC, 0xD83D, 0xDE00}));
    ASSERT_TRUE(ReadPasswordText(""));

    const std::string kBad[] = {
        "YQ",       "YQA",  "YQ==",        "YQBi",          "YQA=\r\n",  "Y-A=", "YQA=YQA=", "YQ A",
        "\r\nYQA=", "YQB=", line + "YQA=", line + "\nYQA=", line + "\r", "====", "Y==="};
    for (const std::string& bad : kBad) EXPECT_FALSE(ReadPasswordText(bad)) << bad;
}

TEST(Explain, KeepsPasswordsToItselfAndControlCharactersOffTheTerminal) {
    Result<Job> job = ReadJobBlock(FullBlock());
    ASSERT_TRUE(job);
    job->security->userPassword = TEXT("s3cret");
    job->items[0].source = TEXT("a\x1B[2J\"");
    const std::string hidden = Explain(*job, ShowPasswords::No);
    EXPECT_EQ(hidden.find("s3cret"), std::string::npos);
    EXPECT_NE(hidden.find("UserPassword              (6 characters)"), std::string::npos);
    EXPECT_EQ(hidden.find('\x1B'), std::string::npos);
    EXPECT_NE(hidden.find("\"a\\x1B[2J\\\"\""), std::string::npos);
    EXPECT_NE(Explain(*job, ShowPasswords::Yes).find("s3cret"), std::string::npos);
}

}  // namespace
}  // namespace converter
