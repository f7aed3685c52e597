#include <gtest/gtest.h>
#include <limits>

#include "platform/text.h"
#include "settings/conversion_settings.h"

namespace {

using platform::WideString;

WideString Line(const ConversionSettings& settings, const WCHAR* first = TEXT(""),
                const WCHAR* second = TEXT("")) {
    AUX::WString line;
    EXPECT_TRUE(line.Assign(TEXT("what stood here before")));
    settings.BuildCommandLine(first, second, line);
    return WideString(AUX::WStringView(line));
}

void Set(AUX::WString& text, const WCHAR* value) { ASSERT_TRUE(text.Assign(value)); }

TEST(BuildCommandLine, ExamplesComeOutExactly) {
    ConversionSettings settings(nullptr);
    settings.WebPageTargetHeight = 2000;
    Set(settings.SharedDataName, TEXT("QVD:IEP:HTMLData"));
    EXPECT_EQ(Line(settings),
              TEXT("\"\" \"\" \\b \\h \\r \\iw 1280 \\ih 2000 \\ld 500 \\is 65540 \\ic 1 \\pw 5953 "
                   "\\ph 8419 \\mt 0 \\mb 0 \\ml 0 \\mr 0 \\sm QVD:IEP:HTMLData "));

    settings.LandscapeOrientation = true;
    settings.GenerateLinks = false;
    settings.SharedDataName.Clear();
    Set(settings.StorageFile, TEXT("C:\\Temp\\qvdstg_34bf15.bin"));
    EXPECT_EQ(Line(settings),
              TEXT("\"\" \"\" \\l \\b \\r \\iw 1280 \\ih 2000 \\ld 500 \\is 65540 \\ic 1 \\pw 5953 "
                   "\\ph 8419 \\mt 0 \\mb 0 \\ml 0 \\mr 0 \\bp C:\\Temp\\qvdstg_34bf15.bin "));
}

TEST(BuildCommandLine, CarriesEveryPieceInItsPlace) {
    ConversionSettings settings(nullptr);
    settings.LandscapeOrientation = true;
    settings.HiddenRun = true;
    settings.MarginTop = 14.17;  // Cut, not rounded.
    settings.MarginBottom = 1;
    settings.MarginLeft = 2.5;
    settings.MarginRight = 3.04;
    Set(settings.SharedDataName, TEXT("loses against the file"));
    Set(settings.StorageFile, TEXT("C:\\My Temp\\qvdstg_1.bin"));
    Set(settings.CeArgument, TEXT("a \"b\""));
    EXPECT_EQ(Line(settings, TEXT("one"), TEXT("two \"2\"")),
              TEXT("\"one\" \"two \"2\"\" \\l \\b \\h \\r \\hi \\iw 1280 \\ih 800 \\ld 500 "
                   "\\is 65540 \\ic 1 \\pw 5953 \\ph 8419 \\mt 141 \\mb 10 \\ml 25 \\mr 30 "
                   "\\bp C:\\My Temp\\qvdstg_1.bin \\ce a \"b\" "));
}

TEST(BuildCommandLine, NumbersAreTheLow32BitsReadAsSigned) {
    ConversionSettings settings(nullptr);
    settings.UseWebPageBackgroundColor = settings.GenerateLinks = settings.RunPDFApp = false;
    settings.WebPageTargetWidth = 0x7FFFFFFF;
    settings.WebPageTargetHeight = 0x80000000;
    settings.LoadDelay = 0xFFFFFFFF;
    settings.PageWidth = 429496729.5;   // The largest that the registry can hold, in tenths.
    settings.PageHeight = 429496729.7;  // One tenth beyond 32 bits.
    settings.MarginTop = -0.19;
    settings.MarginBottom = -14.17;
    settings.MarginLeft = std::numeric_limits<double>::quiet_NaN();
    settings.MarginRight = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Line(settings),
              TEXT("\"\" \"\" \\iw 2147483647 \\ih -2147483648 \\ld -1 \\is 65540 \\ic 1 \\pw -1 "
                   "\\ph 1 \\mt -1 \\mb -141 \\ml 0 \\mr 0 "));
}

}  // namespace
