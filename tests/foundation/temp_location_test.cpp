#include "foundation/temp_location.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "foundation/memory_testing.h"
#include "foundation/paths.h"
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

TEST(GetTempFolder, EndsInASeparator) {
    TestProfile profile;
    WString folder;
    ASSERT_TRUE(folder.Assign(TEXT("before")));
    ASSERT_TRUE(GetTempFolder(folder));
    EXPECT_EQ(ContentOf(folder), profile.TempFolder());
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(GetTempFolder(folder));
    EXPECT_TRUE(folder.IsEmpty());
}

// Whether a process is low is worked out once, so each case needs a process of its own.
[[noreturn]] void ReportLowFolder(DWORD level, const char* failing, const WCHAR* end) {
    platform::testing::SetIntegrityLevel(level);
    WString folder;
    const InjectedFault fault(failing, 1, static_cast<DWORD>(E_FAIL));
    const bool isGood = GetTempFolder(folder) && WStringView(folder).ends_with(end);
    std::_Exit(isGood ? 7 : 1);
}

TEST(GetTempFolder, IsAnotherOneAtLowIntegrity) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "the integrity level cannot be set";
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    constexpr DWORD kLow = SECURITY_MANDATORY_LOW_RID;
    const TestProfile profile;
    const WideString ordinary = profile.TempFolder();
    const struct {
        DWORD level;
        const char* failing;
        const WCHAR* end;
    } kCases[] = {{kLow, "GetTempPathW", TEXT("\\LocalLow\\Temp\\")},
                  {kLow, "SHGetKnownFolderPath", TEXT("\\Local\\Temp\\Low\\")},
                  {kLow, "GetProcAddress", TEXT("\\Local\\Temp\\Low\\")},
                  {kLow + 1, "SHGetKnownFolderPath", ordinary.c_str()}};
    for (const auto& c : kCases) {
        EXPECT_EXIT(ReportLowFolder(c.level, c.failing, c.end), ::testing::ExitedWithCode(7), "")
            << c.failing;
    }
}

TEST(MakeUniqueFileName, CountsOnFromTheTimeWithinTheHour) {
    if (!kOwnsTheSystem) GTEST_SKIP() << "the clock cannot be held";
    TestProfile profile;
    const platform::testing::HeldClock clock({2026, 11, 0, 22, 12, 34, 56, 789});
    WString path;
    WString stem;
    const WideString folder = profile.Folder();
    ASSERT_TRUE(MakeUniqueFileName(folder.c_str(), TEXT("qvd_"), TEXT("html"), path, &stem));
    EXPECT_EQ(ContentOf(path), folder + TEXT("qvd_34bf15.html"));
    EXPECT_EQ(ContentOf(stem), TEXT("qvd_34bf15"));
    EXPECT_EQ(path.Capacity(), 287u);
    ASSERT_TRUE(test_support::WriteWholeFile(ContentOf(path), "x"));
    ASSERT_TRUE(MakeUniqueFileName(folder.c_str(), TEXT("qvd_"), TEXT("html"), path, nullptr));
    EXPECT_EQ(ContentOf(path), folder + TEXT("qvd_34bf16.html"));
    ASSERT_TRUE(MakeUniqueFileName(folder.c_str(), TEXT("q"), TEXT(""), path));
    EXPECT_EQ(ContentOf(path), folder + TEXT("q34bf15."));
}

TEST(MakeUniqueFileName, GivesUpInOrder) {
    TestProfile profile;
    WString path;
    WString stem;
    // Its own outputs as inputs.
    ASSERT_TRUE(path.Assign(profile.Folder().c_str()));
    ASSERT_TRUE(stem.Assign(TEXT("p_")));
    ASSERT_TRUE(MakeUniqueFileName(path, stem, TEXT("x"), path, &stem));
    EXPECT_TRUE(WStringView(path).starts_with(profile.Folder() + ContentOf(stem)));
    AUX::testing::AllocationWatch watch;
    std::uint64_t n = 1;
    bool isMade = false;
    for (; !isMade && n < 20; ++n) {
        WString output;
        WString name;
        watch.FailOnce(n);
        isMade = MakeUniqueFileName(profile.Folder().c_str(), TEXT("p"), TEXT("x"), output, &name);
        EXPECT_EQ(isMade, !output.IsEmpty()) << n;
        EXPECT_EQ(isMade, !name.IsEmpty()) << n;
    }
    EXPECT_TRUE(isMade && n > 5);
    watch.FailNone();
    // Whatever the number is, this names a file that exists, ten thousand times.
    ASSERT_TRUE(test_support::WriteWholeFile(profile.Path(TEXT("a.txt")), "x"));
    EXPECT_FALSE(
        MakeUniqueFileName(profile.Folder().c_str(), TEXT("n"), TEXT("\\..\\a.txt"), path, &stem));
    EXPECT_TRUE(path.IsEmpty() && stem.IsEmpty());
}

TEST(MakeTempFileNameInFolder, CreatesTheFile) {
    TestProfile profile;
    const struct {
        const WCHAR* prefix;
        WideString start;
    } kCases[] = {{nullptr, TEXT("tio")},     {TEXT(""), TEXT("tio")},
                  {TEXT("a"), TEXT("ati")},   {TEXT("ab"), TEXT("abt")},
                  {TEXT("abc"), TEXT("abc")}, {TEXT("abcd"), TEXT("abc")}};
    for (const auto& c : kCases) {
        WCHAR path[MAX_PATH] = {};
        const WideString folder = profile.Folder().substr(0, profile.Folder().size() - 1);
        ASSERT_EQ(MakeTempFileNameInFolder(path, c.prefix, folder.c_str()), 0);
        EXPECT_TRUE(WideString(path).starts_with(profile.Folder() + c.start))
            << platform::ToUtf8(path);
        EXPECT_TRUE(test_support::Exists(path));
    }
    WCHAR path[MAX_PATH] = {};
    ASSERT_EQ(MakeTempFileNameInFolder(path, TEXT("a"), TEXT("")), 0);
    EXPECT_TRUE(WideString(path).starts_with(profile.TempFolder() + TEXT("ati")));
    EXPECT_EQ(MakeTempFileNameInFolder(path, TEXT("a"), profile.Path(TEXT("none")).c_str()),
              StatusFromSystemError(ERROR_DIRECTORY));
    EXPECT_EQ(MakeTempFileNameInFolder(nullptr, TEXT("a")), kStatusInvalidArgument);
}

}  // namespace
