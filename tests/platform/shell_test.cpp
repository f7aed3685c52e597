#include "platform/shell.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::TestProfile;

class StartedProgram : public ::testing::Test {
protected:
    void TearDown() override {
        testing::SetEnvironment("QUVADA_TEST_REPORT", nullptr);
        testing::SetEnvironment("QUVADA_TEST_OPEN", nullptr);
    }

    /// Starts the program, waits for its end and gives what it reports.
    std::string Run(LPCWSTR parameters) {
        const WideString report = profile_.Path(TEXT("report"));
        DeleteFileW(report.c_str());
        testing::SetEnvironment("QUVADA_TEST_REPORT", ToUtf8(report).c_str());
        EXPECT_GT(Start(Program(), parameters), 32);
        EXPECT_EQ(testing::WaitForStartedPrograms(20000, &exitCode_), testing::Programs::Ended);
        return test_support::ReadWholeFile(report);
    }
    static INT_PTR Start(const WideString& file, LPCWSTR parameters) {
        return reinterpret_cast<INT_PTR>(
            ShellExecuteW(nullptr, nullptr, file.c_str(), parameters, nullptr, SW_SHOW));
    }
    static WideString Program() {
        WideString path = FromUtf8(STARTED_PROGRAM);
        std::replace(path.begin(), path.end(), WCHAR{'/'}, WCHAR{'\\'});
        return path;
    }
    /// The program's path in quotes and a blank, as every command line starts.
    static std::string Whole(const std::string& parameters) {
        std::string line(1, '"');
        return line.append(ToUtf8(Program())).append("\" ").append(parameters);
    }

    TestProfile profile_;
    DWORD exitCode_ = 7;
};

TEST_F(StartedProgram, GetsTheTextOfItsParametersUnchanged) {
    const char* kTexts[] = {
        R"("" "" \l \iw 1280 \bp C:\My Temp\qvdstg_1.bin )",
        R"(a "quoted" text \" and 'single' $HOME `x` ; | & * %PATH%)",
        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80  two blanks",
    };
    for (const char* text : kTexts) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Run(FromUtf8(text).c_str()), Whole(text) + "\n0\n");
        EXPECT_EQ(exitCode_, 7u);
    }
}

TEST_F(StartedProgram, MeetsTheShareModesOfItsStarter) {
    const WideString path = profile_.Path(TEXT("held"));
    ASSERT_TRUE(test_support::WriteWholeFile(path, "x"));
    testing::SetEnvironment("QUVADA_TEST_OPEN", ToUtf8(path).c_str());
    FileHandle held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_EQ(Run(TEXT("x")), Whole("x") + "\n32\n");
    held.Reset();
    EXPECT_EQ(Run(TEXT("x")), Whole("x") + "\n0\n");
}

TEST_F(StartedProgram, IsRefusedWithTheReason) {
    EXPECT_EQ(Start(profile_.Path(TEXT("none.exe")), TEXT("")), SE_ERR_FNF);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    const INT_PTR result = Start(profile_.Path(TEXT("none\\none.exe")), TEXT(""));
    EXPECT_TRUE(result == SE_ERR_PNF || test_support::RunsUnderWine()) << result;
    EXPECT_LE(result, 32);
    // Neither is opened: natively for want of a permission, there for want of a program.
    const WideString data =
        profile_.Path(testing::kOwnsTheSystem ? TEXT("data.exe") : TEXT("data.qvdnone"));
    ASSERT_TRUE(test_support::WriteWholeFile(data, "x"));
    EXPECT_EQ(Start(data, TEXT("")), SE_ERR_NOASSOC);
    EXPECT_EQ(testing::WaitForStartedPrograms(0, nullptr), testing::Programs::Ended);
}

}  // namespace
}  // namespace platform
