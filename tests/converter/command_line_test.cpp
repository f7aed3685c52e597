#include "converter/command_line.h"

#include <gtest/gtest.h>

#include "tests/support/case_table.h"

namespace converter {
namespace {

using platform::WideString;
using platform::WideView;

const WideString kNumbers =
    TEXT("\"\" \"\" \\iw 1280 \\ih 2000 \\ld 500 \\is 65540 \\ic 1 \\pw 5953 \\ph 8419 ")
        TEXT("\\mt 1 \\mb 2 \\ml 3 \\mr 4 ");

bool NoFile(const WideString&) { return false; }

TEST(CommandLine, ReadsTheLineOfADefaultRun) {
    const Result<CommandLine> line = ParseCommandLine(
        TEXT("\"\" \"\" \\b \\h \\r \\iw 1280 \\ih 2000 \\ld 500 \\is 65540 \\ic 1 \\pw 5953 \\ph ")
            TEXT("8419 \\mt 0 \\mb 0 \\ml 0 \\mr 0 \\sm QVD:IEP:HTMLData "),
        NoFile);
    ASSERT_TRUE(line) << line.GetError().text;
    EXPECT_TRUE(line->background && line->links && line->runApp);
    EXPECT_FALSE(line->landscape || line->hidden);
    EXPECT_EQ(line->width, 1280);
    EXPECT_EQ(line->height, 2000);
    EXPECT_EQ(line->loadDelayMs, 500);
    EXPECT_EQ(line->pdfVersion, 0x10004);
    EXPECT_EQ(line->compression, 1);
    EXPECT_EQ(line->pageWidth, 5953);
    EXPECT_EQ(line->pageHeight, 8419);
    EXPECT_TRUE(line->sharedName == TEXT("QVD:IEP:HTMLData"));
    EXPECT_TRUE(line->storageFile.empty());
}

TEST(CommandLine, TakesTheOtherSwitchesAndTheTexts) {
    const Result<CommandLine> line =
        ParseCommandLine(WideString(TEXT("\"one text\"  \"C:\\x\" \\l \\hi "))
                             .append(kNumbers.substr(6))
                             .append(TEXT("\\sm N ")),
                         NoFile);
    ASSERT_TRUE(line) << line.GetError().text;
    EXPECT_TRUE(line->firstText == TEXT("one text"));
    EXPECT_TRUE(line->secondText == TEXT("C:\\x"));
    EXPECT_TRUE(line->landscape && line->hidden);
    EXPECT_EQ(line->marginTop, 1);
    EXPECT_EQ(line->marginBottom, 2);
    EXPECT_EQ(line->marginLeft, 3);
    EXPECT_EQ(line->marginRight, 4);
}

TEST(CommandLine, TakesAPathWholeAndRefusesWhatIsMalformed) {
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "command_lines.tsv", 6)) {
        SCOPED_TRACE(platform::ToUtf8(row[0]));
        const Result<CommandLine> line = ParseCommandLine(
            kNumbers + row[1], [&](const WideString& path) { return path == row[2]; });
        ASSERT_EQ(static_cast<bool>(line), row[5].empty());
        if (line) {
            EXPECT_TRUE(line->storageFile == row[3]) << platform::ToUtf8(line->storageFile);
            EXPECT_TRUE(line->extra == row[4]);
        } else {
            EXPECT_NE(line.GetError().text.find(platform::ToUtf8(row[5])), std::string::npos)
                << line.GetError().text;
        }
    }
    for (const WideView whole :
         {TEXT(""), TEXT("\"\" \\b"), TEXT("\"\" \"open"), TEXT("x \"\" \"\"")}) {
        EXPECT_FALSE(ParseCommandLine(whole, NoFile)) << platform::ToUtf8(whole);
    }
}

TEST(CommandLine, RefusesEachMissingNumberAndEachOutOfItsRange) {
    const WideString all = kNumbers + TEXT("\\sm N ");
    ASSERT_TRUE(ParseCommandLine(all, NoFile));
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "command_numbers.tsv", 5)) {
        const WideString name = TEXT("\\") + row[0] + TEXT(" ");
        const std::size_t at = all.find(name + row[1] + TEXT(" "));
        ASSERT_NE(at, WideString::npos);
        WideString without = all;
        without.erase(at, name.size() + row[1].size() + 1);
        EXPECT_FALSE(ParseCommandLine(without, NoFile)) << platform::ToUtf8(name);
        for (std::size_t bad = 2; bad < row.size(); ++bad) {
            WideString changed = all;
            changed.replace(at + name.size(), row[1].size(), row[bad]);
            EXPECT_FALSE(ParseCommandLine(changed, NoFile)) << platform::ToUtf8(changed);
        }
    }
}

TEST(CommandLine, LosesTheProgramsName) {
    constexpr WideView kCases[][2] = {{TEXT("\"C:\\My App\\p.exe\" \"\" "), TEXT(" \"\" ")},
                                      {TEXT("p.exe \\b"), TEXT("\\b")},
                                      {TEXT("p.exe"), TEXT("")},
                                      {TEXT("\"open"), TEXT("")},
                                      {TEXT(""), TEXT("")}};
    for (const auto& [line, rest] : kCases) EXPECT_TRUE(SkipProgramName(line) == rest);
}

}  // namespace
}  // namespace converter
