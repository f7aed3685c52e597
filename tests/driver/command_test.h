#pragma once

#include <gtest/gtest.h>
#include <string>

#include "platform/modules.h"
#include "platform/testing.h"
#include "tests/driver/fake_browser.h"
#include "tests/support/test_profile.h"

namespace driver_test {

/// The first bytes of the shared memory object, opened by its name; empty if there is none.
std::string ReadShared(std::size_t bytes);

/// What the stand-in for ieframe.dll answers from now on: "1", "0", "fail:" and a result code, or
/// nothing at all.
void SetProtectedAnswer(const char* answer);
/// The same, after the answer that is kept was forgotten.
void SetFreshProtectedAnswer(const char* answer);

/// A tab of a browser that is not protected, an add-in in a folder of its own, and beside it a
/// converter that is there but no program: commands come as far as its launch, which fails.
class CommandTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    test_support::TestProfile profile_;
    const platform::WideString converter_ = profile_.Path(TEXT("PageRenderApp.x86.exe"));
    const platform::WideString output_ = profile_.Path(TEXT("out.pdf"));
    platform::ModuleHandle browserModule_;
    platform::ModuleHandle addin_;
    fake::Page page_;
    platform::ComPtr<fake::Browser> browser_ = platform::MakeObject<fake::Browser>(page_);
    platform::testing::MessageBoxRecorder messages_;
};

}  // namespace driver_test
