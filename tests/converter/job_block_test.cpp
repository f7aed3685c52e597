#include "converter/job_block.h"

#include <gtest/gtest.h>

#include "converter/explain.h"
#include "converter/password_text.h"
#include "tests/converter/block_bytes.h"
#include "tests/support/scratch_folder.h"

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
    EXPECT_EQ(PageBlock(TEXT("u"), TEXT("o.pdf")), kSmall);
    const Result<Job> job = ReadJobBlock(kSmall);
    ASSERT_TRUE(job) << job.GetError().text;
    EXPECT_FALSE(job->security);
    ASSERT_EQ(job->items.size(), 1u);
    EXPECT_TRUE(job->items[0].source == TEXT("u") && job->items[0].outputFile == TEXT("o.pdf"));
}

TEST(JobBlock, ReadsEveryField) {
    const Result<Job> job = ReadJobBlock(FullBlock());
    ASSERT_TRUE(job) << job.GetError().text;
    EXPECT_EQ(Explain(*job, ShowPasswords::Yes),
              test_support::ReadHostFile(CONVERTER_CASES "full_block.txt"));
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

TEST(JobBlock, SaysWhichFieldIsBad) {
    struct Case {
        const char* why;
        Bytes block;
        std::size_t at;
        std::uint8_t value;
        const char* said;
    };
    const Case kCases[] = {
        {"other version", kSmall, 4, 11, "FormatVersion at byte 4 is 11"},
        {"flag that is neither", kSmall, 6, 2, "HasRunApp at byte 6 is 2"},
        {"text longer than the block", kSmall, 51, 0xFF, "OutputFile at byte 50 announces"},
        {"more items than bytes", kSmall, 35, 0x7F, "ItemCount at byte 32 announces"},
        {"attachments without end", kSmall, 67, 0xFF, "Attachments at byte 64 announces"},
        {"zero in a path", kSmall, 54, 0, "OutputFile at byte 50 holds a zero"},
        {"no such encryption", FullBlock(), 24, 5, "Type at byte 24 is 5"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        Bytes block = c.block;
        block[c.at] = c.value;
        const Result<Job> job = ReadJobBlock(block);
        ASSERT_FALSE(job);
        EXPECT_NE(job.GetError().text.find(c.said), std::string::npos) << job.GetError().text;
    }
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
