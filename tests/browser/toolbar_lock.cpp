// The flag that bands share has its lock from the module's start on, which this program has none
// of.

#include <gtest/gtest.h>

#include "browser/toolbar_state.h"
#include "tests/support/test_profile.h"

namespace {

class ToolbarLock : public testing::Environment {
    void SetUp() override {
        const test_support::TestProfile profile;
        ASSERT_TRUE(SharedToolbarState().Load());
    }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new ToolbarLock);

}  // namespace
