#include "foundation/temp_location.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "platform/testing.h"
#include "platform/token.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::WideString;
using platform::testing::InjectedFault;
using platform::testing::kOwnsTheSystem;
using test_support::TestProfile;

WideString ContentOf(const WString& text) { return {text.Text(), text.Length()}; }

// Whether a process is low is worked out once, so each case needs a process of its own.
[[noreturn]] void ReportFolder(DWORD level, const char* failing, const WCHAR* end) {
    platform::testing::SetIntegrityLevel(level);
    WString folder;
    const InjectedFault fault(failing, 1, static_cast<DWORD>(E_FAIL));
    const bool isGood = GetTempFolder(folder) && WStringView(folder).ends_with(end);
    std::_Exit(isGood ? 7 : 1);
}

TEST(GetTempFolder, IsAnotherOneAtLowIntegrity) {
    const TestProfile profile;
    const WideString ordinary = profile.TempFolder();
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    constexpr DWORD kLow = SECURITY_MANDATORY_LOW_RID;
    const struct {
        DWORD level;
        const char* failing;
        const WCHAR* end;
    } kCases[] = {{kLow, "GetTempPathW", TEXT("\\LocalLow\\Temp\\")},
                  {kLow, "SHGetKnownFolderPath", TEXT("\\Local\\Temp\\Low\\")},
                  {kLow, "GetProcAddress", TEXT("\\Local\\Temp\\Low\\")},
                  {kLow + 1, "SHGetKnownFolderPath", ordinary.c_str()}};
    for (const auto& c : kCases) {
        if (!kOwnsTheSystem) break;
        EXPECT_EXIT(ReportFolder(c.level, c.failing, c.end), ::testing::ExitedWithCode(7), "")
            << c.failing;
    }
    WString folder;  // Last: the cases' processes come by here.
    EXPECT_TRUE(GetTempFolder(folder));
    EXPECT_EQ(ContentOf(folder), ordinary);
}

TEST(MakeUniqueFileName, CountsOnFromTheTimeWithinTheHour) {
    const TestProfile profile;
    const WCHAR* const folder = profile.Folder().c_str();
    WString path;
    WString stem;
    // Its own outputs as inputs.
    ASSERT_TRUE(path.Assign(folder) && stem.Assign(TEXT("p_")));
    ASSERT_TRUE(MakeUniqueFileName(path, stem, TEXT("x"), path, &stem));
    EXPECT_EQ(ContentOf(path), folder + ContentOf(stem) + TEXT(".x"));
    if (!kOwnsTheSystem) return;
    const platform::testing::HeldClock clock({2026, 11, 0, 22, 12, 34, 56, 789});
    ASSERT_TRUE(MakeUniqueFileName(folder, TEXT("qvd_"), TEXT("html"), path, &stem));
    EXPECT_EQ(ContentOf(path), folder + WideString(TEXT("qvd_34bf15.html")));
    EXPECT_EQ(ContentOf(stem), TEXT("qvd_34bf15"));
    EXPECT_EQ(path.Capacity(), 287u);
    ASSERT_TRUE(test_support::WriteWholeFile(ContentOf(path), "x"));
    ASSERT_TRUE(MakeUniqueFileName(folder, TEXT("qvd_"), TEXT("html"), path, nullptr));
    EXPECT_EQ(ContentOf(path), folder + WideString(TEXT("qvd_34bf16.html")));
    ASSERT_TRUE(MakeUniqueFileName(folder, TEXT("q"), TEXT(""), path));
    EXPECT_EQ(ContentOf(path), folder + WideString(TEXT("q34bf15.")));
}

TEST(MakeUniqueFileName, GivesUpAfterTheLastAttempt) {
    const TestProfile profile;
    WString path;
    // Whatever the number is, this names a file that exists.
    ASSERT_TRUE(test_support::WriteWholeFile(profile.Path(TEXT("a.txt")), "x"));
    const auto isMade = [&] {
        return MakeUniqueFileName(profile.Folder().c_str(), TEXT("n"), TEXT("\\..\\a.txt"), path);
    };
    {
        const InjectedFault tooLate("FindFirstFileW", 10002, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(isMade());
        EXPECT_TRUE(path.IsEmpty());
    }
    const InjectedFault missing("FindFirstFileW", 10001, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(isMade(), kOwnsTheSystem);
}

TEST(MakeTempFileNameInFolder, CreatesTheFile) {
    const TestProfile profile;
    const WideString folder = profile.Folder().substr(0, profile.Folder().size() - 1);
    const std::pair<const WCHAR*, const WCHAR*> kCases[] = {
        {nullptr, TEXT("tio")}, {TEXT("ab"), TEXT("abt")}, {TEXT("abcd"), TEXT("abc")}};
    WCHAR path[MAX_PATH] = {};
    for (const auto& [prefix, start] : kCases) {
        ASSERT_EQ(MakeTempFileNameInFolder(path, prefix, folder.c_str()), 0);
        EXPECT_TRUE(WideString(path).starts_with(profile.Path(start))) << platform::ToUtf8(path);
        EXPECT_TRUE(test_support::Exists(path));
        ASSERT_EQ(MakeTempFileNameInFolder(path, prefix, TEXT("")), 0);
        EXPECT_TRUE(WideString(path).starts_with(profile.TempFolder() + start));
    }
    EXPECT_EQ(MakeTempFileNameInFolder(path, TEXT("a"), profile.Path(TEXT("none")).c_str()),
              StatusFromSystemError(ERROR_DIRECTORY));
    EXPECT_EQ(MakeTempFileNameInFolder(nullptr, TEXT("a")), kStatusInvalidArgument);
}

}  // namespace
