#include "driver/protected_mode.h"

#include <gtest/gtest.h>

#include "tests/driver/module_support.h"

namespace {

class ProtectedModeTest : public testing::Test {
protected:
    void SetUp() override {
        ForgetProtectedModeAnswer();
        ASSERT_TRUE(browserModule_) << "the stand-in for ieframe.dll is not there";
    }
    void TearDown() override {
        driver_test::SetProtectedAnswer(nullptr);
        ForgetProtectedModeAnswer();
    }

    platform::ModuleHandle browserModule_ = driver_test::LoadBrowserModule();
};

TEST_F(ProtectedModeTest, KeepsAnAnswerThatIsOneAndAsksAgainAfterOthers) {
    const struct {
        const char* answer;
        HRESULT result;
        BOOL flag;
        bool isKept;
    } kCases[] = {
        {"1", S_OK, TRUE, true},           {"0", S_OK, FALSE, true},
        {nullptr, E_NOTIMPL, FALSE, true}, {"fail:80070005", E_ACCESSDENIED, FALSE, false},
        {"fail:1", S_FALSE, FALSE, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.answer ? c.answer : "none");
        ForgetProtectedModeAnswer();
        driver_test::SetProtectedAnswer(c.answer);
        BOOL flag = 7;
        EXPECT_EQ(IsProtectedMode(flag), c.result);
        EXPECT_EQ(flag, c.flag);

        // Another answer shows whether the first was kept.
        driver_test::SetProtectedAnswer(c.flag ? "0" : "1");
        EXPECT_EQ(IsProtectedMode(flag), c.isKept ? c.result : S_OK);
        EXPECT_EQ(flag, c.isKept ? c.flag : TRUE);
    }
}

TEST_F(ProtectedModeTest, LeavesTheModuleAsItWas) {
    BOOL flag = FALSE;
    (void)IsProtectedMode(flag);
    EXPECT_TRUE(GetModuleHandleW(TEXT("ieframe.dll")));
    browserModule_.Reset();
    EXPECT_FALSE(GetModuleHandleW(TEXT("ieframe.dll"))) << "one use was not given back";
}

}  // namespace
