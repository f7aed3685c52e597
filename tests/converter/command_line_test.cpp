#include "converter/command_line.h"

#include <gtest/gtest.h>

namespace converter {
namespace {

using platform::WideString;
using platform::WideView;

constexpr WideView kNumbers =
    TEXT("\\iw 1280 \\ih 2000 \\ld 500 \\is 65540 \\ic 1 \\pw 5953 \\ph 8419 \\mt 1 \\mb 2 \\ml 3 ")
        TEXT("\\mr 4 ");

bool NoFile(const WideString&) { return false; }

WideString Line(WideView behind) { return WideString(TEXT("\"\" \"\" ")).append(behind); }

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

TEST(CommandLine, TakesEverySwitchAndText) {
    const Result<CommandLine> line =
        ParseCommandLine(WideString(TEXT("\"one text\"  \"C:\\x\" \\l \\hi "))
                             .append(kNumbers)
                             .append(TEXT("\\bp C:\\Temp\\qvdstg_34bf15.bin \\ce some \\iw text ")),
                         NoFile);
    ASSERT_TRUE(line) << line.GetError().text;
    EXPECT_TRUE(line->firstText == TEXT("one text"));
    EXPECT_TRUE(line->secondText == TEXT("C:\\x"));
    EXPECT_TRUE(line->landscape && line->hidden);
    EXPECT_EQ(line->marginTop, 1);
    EXPECT_EQ(line->marginBottom, 2);
    EXPECT_EQ(line->marginLeft, 3);
    EXPECT_EQ(line->marginRight, 4);
    EXPECT_TRUE(line->storageFile == TEXT("C:\\Temp\\qvdstg_34bf15.bin"));
    EXPECT_TRUE(line->extra == TEXT("some \\iw text"));
}

TEST(CommandLine, TakesAPathWithBlanksWhole) {
    struct Case {
        const char* why;
        WideView line;
        WideView onDisk;
        WideView path;
        WideView extra;
    };
    constexpr Case kCases[] = {
        {"a blank", TEXT("\\bp C:\\My Temp\\a.bin "), TEXT(""), TEXT("C:\\My Temp\\a.bin"),
         TEXT("")},
        {"a blank and an extra text", TEXT("\\bp C:\\My Temp\\a.bin \\ce x y "), TEXT(""),
         TEXT("C:\\My Temp\\a.bin"), TEXT("x y")},
        {"a file whose name holds the switch", TEXT("\\bp C:\\a \\ce b.bin "),
         TEXT("C:\\a \\ce b.bin"), TEXT("C:\\a \\ce b.bin"), TEXT("")},
        {"a folder that looks like a switch", TEXT("\\bp C:\\a \\ml 3\\b.bin "), TEXT(""),
         TEXT("C:\\a \\ml 3\\b.bin"), TEXT("")},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const Result<CommandLine> line =
            ParseCommandLine(Line(WideString(kNumbers).append(c.line)),
                             [&](const WideString& path) { return path == c.onDisk; });
        ASSERT_TRUE(line) << line.GetError().text;
        EXPECT_TRUE(line->storageFile == c.path) << platform::ToUtf8(line->storageFile);
        EXPECT_TRUE(line->extra == c.extra);
    }
}

TEST(CommandLine, RefusesWhatIsMalformedAndSaysWhy) {
    struct Case {
        const char* why;
        WideView line;  // behind the two texts and the numbers
        const char* said;
    };
    constexpr Case kCases[] = {
        {"no job", TEXT(""), "names no job"},
        {"unknown switch", TEXT("\\zz \\sm N "), "unknown switch \"\\zz\""},
        {"upper case", TEXT("\\B \\sm N "), "unknown switch"},
        {"word", TEXT("hello \\sm N "), "no switch"},
        {"flag twice", TEXT("\\b \\b \\sm N "), "repeats \"\\b\""},
        {"number twice", TEXT("\\iw 1280 \\sm N "), "repeats \"\\iw\""},
        {"no path", TEXT("\\bp "), "no path"},
        {"no path before an extra text", TEXT("\\bp \\ce x"), "no path"},
        {"no name", TEXT("\\sm "), "no name"},
        {"file and memory", TEXT("\\sm N \\bp C:\\a "), "behind the name"},
        {"no extra text", TEXT("\\sm N \\ce "), "no text behind \\ce"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const Result<CommandLine> line =
            ParseCommandLine(Line(WideString(kNumbers).append(c.line)), NoFile);
        ASSERT_FALSE(line);
        EXPECT_NE(line.GetError().text.find(c.said), std::string::npos) << line.GetError().text;
    }
    for (const WideView whole :
         {TEXT(""), TEXT("\"\" \\b"), TEXT("\"\" \"open"), TEXT("x \"\" \"\"")}) {
        EXPECT_FALSE(ParseCommandLine(whole, NoFile)) << platform::ToUtf8(whole);
    }
}

TEST(CommandLine, RefusesEachMissingNumberAndEachOutOfItsRange) {
    struct Case {
        WideView name;
        WideView good;
        WideView bad[3];
    };
    constexpr Case kCases[] = {
        {TEXT("iw"), TEXT("1280"), {TEXT("0"), TEXT("32768"), TEXT("-1")}},
        {TEXT("ih"), TEXT("2000"), {TEXT("-1"), TEXT("2147483648"), TEXT("0x10")}},
        {TEXT("ld"), TEXT("500"), {TEXT("-5"), TEXT("600001"), TEXT("5.5")}},
        {TEXT("is"), TEXT("65540"), {TEXT("--1"), TEXT("-"), TEXT("-2147483649")}},
        {TEXT("ic"), TEXT("1"), {TEXT("3"), TEXT("-1"), TEXT("1a")}},
        {TEXT("pw"), TEXT("5953"), {TEXT("0"), TEXT("29"), TEXT("144001")}},
        {TEXT("ph"), TEXT("8419"), {TEXT("0"), TEXT("\\mt"), TEXT("99999999999")}},
        {TEXT("mt"), TEXT("1"), {TEXT("-1"), TEXT("\\mb"), TEXT("+1")}},
        {TEXT("mr"), TEXT("4"), {TEXT("-1"), TEXT("144001"), TEXT("\"4\"")}},
    };
    const WideString all = Line(WideString(kNumbers).append(TEXT("\\sm N ")));
    ASSERT_TRUE(ParseCommandLine(all, NoFile));
    for (const Case& c : kCases) {
        SCOPED_TRACE(platform::ToUtf8(c.name));
        const WideString piece = WideString(TEXT("\\"))
                                     .append(c.name)
                                     .append(TEXT(" "))
                                     .append(c.good)
                                     .append(TEXT(" "));
        const std::size_t at = all.find(piece);
        ASSERT_NE(at, WideString::npos);
        WideString without = all;
        without.erase(at, piece.size());
        EXPECT_FALSE(ParseCommandLine(without, NoFile));
        for (const WideView bad : c.bad) {
            WideString changed = all;
            changed.replace(at + c.name.size() + 2, c.good.size(), bad);
            EXPECT_FALSE(ParseCommandLine(changed, NoFile)) << platform::ToUtf8(bad);
        }
    }
}

TEST(CommandLine, LosesTheProgramsName) {
    struct Case {
        WideView line;
        WideView rest;
    };
    constexpr Case kCases[] = {{TEXT("\"C:\\My App\\p.exe\" \"\" \"\" "), TEXT(" \"\" \"\" ")},
                               {TEXT("p.exe \\b"), TEXT("\\b")},
                               {TEXT("p.exe"), TEXT("")},
                               {TEXT("\"open"), TEXT("")},
                               {TEXT(""), TEXT("")}};
    for (const Case& c : kCases) EXPECT_TRUE(SkipProgramName(c.line) == c.rest);
}

}  // namespace
}  // namespace converter
