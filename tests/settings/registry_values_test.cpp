#include "settings/registry_values.h"

#include <gtest/gtest.h>
#include <vector>

#include "foundation/memory_testing.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using Units = std::vector<std::uint16_t>;

class RegistryValuesTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("Values"), 0, nullptr,
                                  REG_OPTION_NON_VOLATILE, 0x2001F, nullptr, key_.Put(), nullptr),
                  ERROR_SUCCESS);
    }
    void Store(DWORD type, const void* data, std::size_t bytes) {
        ASSERT_EQ(RegSetValueExW(key_.Get(), TEXT("v"), 0, type, static_cast<const BYTE*>(data),
                                 static_cast<DWORD>(bytes)),
                  ERROR_SUCCESS);
    }

    test_support::TestProfile profile_;
    platform::RegistryKey key_;
};

TEST_F(RegistryValuesTest, TextsAreReadOnlyWhenTheyAreWholeTexts) {
    const struct {
        const char* why;
        DWORD type;
        Units units;
        std::size_t bytes;
        WideString read;
    } kCases[] = {
        {"text", REG_SZ, {'a', 'b', 0}, 6, TEXT("ab")},
        {"text with variables, not expanded", REG_EXPAND_SZ, {'%', 'T', '%', 0}, 8, TEXT("%T%")},
        {"ends at its first zero", REG_SZ, {'a', 0, 'b', 0}, 8, TEXT("a")},
        {"no bytes", REG_SZ, {0}, 0, TEXT("")},
        {"one byte", REG_SZ, {'a'}, 1, TEXT("")},
        {"odd", REG_SZ, {'a', 0, 0}, 5, TEXT("")},
        {"not terminated", REG_SZ, {'a', 'b', 'c'}, 4, TEXT("")},
        {"one unit, not terminated", REG_SZ, {'a', 'b'}, 2, TEXT("")},
        {"other type", REG_BINARY, {'a', 0}, 4, TEXT("before")},
        {"list of texts", REG_MULTI_SZ, {'a', 0, 0}, 6, TEXT("before")},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        Store(c.type, c.units.data(), c.bytes);
        AUX::WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        EXPECT_TRUE(ReadStringValue(key_.Get(), TEXT("v"), text));
        EXPECT_EQ(WideString(AUX::WStringView(text)), c.read);
    }
}

TEST_F(RegistryValuesTest, LackOfMemoryKeepsATextAndEmptiesAPassword) {
    Units terminated(200, 'a');
    terminated.back() = 0;
    Store(REG_SZ, terminated.data(), 400);
    AUX::WString text;
    ASSERT_TRUE(text.Assign(TEXT("before")));
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(ReadStringValue(key_.Get(), TEXT("v"), text));
    EXPECT_EQ(text, TEXT("before"));
    Store(REG_BINARY, "YQBiAA==", 8);
    EXPECT_FALSE(ReadPasswordValue(key_.Get(), TEXT("v"), text));
    EXPECT_TRUE(text.IsEmpty());
}

}  // namespace
