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
        {"empty text", REG_SZ, {0}, 2, TEXT("")},
        {"no bytes", REG_SZ, {0}, 0, TEXT("")},
        {"other type", REG_BINARY, {'a', 0}, 4, TEXT("before")},
        {"list of texts", REG_MULTI_SZ, {'a', 0, 0}, 6, TEXT("before")},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        Store(c.type, c.units.data(), c.bytes);
        AUX::WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        ReadStringValue(key_.Get(), TEXT("v"), text);
        EXPECT_EQ(WideString(AUX::WStringView(text)), c.read);
    }
    AUX::WString text;
    ASSERT_TRUE(text.Assign(TEXT("before")));
    ReadStringValue(key_.Get(), TEXT("missing"), text);
    EXPECT_EQ(text, TEXT("before"));
}

TEST_F(RegistryValuesTest, TextsThatAreNotTerminatedAreEmptied) {
    for (const std::size_t bytes : {1, 2, 3, 4, 5}) {
        const Units units = {'a', 'b', 'c'};
        Store(REG_SZ, units.data(), bytes);
        AUX::WString text;
        ASSERT_TRUE(text.Assign(TEXT("before")));
        ReadStringValue(key_.Get(), TEXT("v"), text);
        EXPECT_EQ(WideString(AUX::WStringView(text)), WideString()) << bytes;
    }
}

TEST_F(RegistryValuesTest, LackOfMemoryKeepsATextAndEmptiesAPassword) {
    const Units units(200, 'a');
    Units terminated = units;
    terminated.back() = 0;
    Store(REG_SZ, terminated.data(), 400);
    AUX::WString text;
    ASSERT_TRUE(text.Assign(TEXT("before")));
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    ReadStringValue(key_.Get(), TEXT("v"), text);
    EXPECT_EQ(text, TEXT("before"));
    Store(REG_BINARY, "YQBiAA==", 8);
    ReadPasswordValue(key_.Get(), TEXT("v"), text);
    EXPECT_TRUE(text.IsEmpty());
}

TEST_F(RegistryValuesTest, PasswordsKeepTheirFormAndRefuseBrokenOnes) {
    AUX::WString password;
    ASSERT_TRUE(password.AppendRepeated('A', 57));
    WritePasswordValue(key_.Get(), TEXT("v"), password);
    DWORD type = 0;
    DWORD size = 0;
    ASSERT_EQ(RegQueryValueExW(key_.Get(), TEXT("v"), nullptr, &type, nullptr, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
    EXPECT_EQ(size, 156u);  // Two full lines, each with its line break.
    AUX::WString read;
    ReadPasswordValue(key_.Get(), TEXT("v"), read);
    EXPECT_EQ(read, password);

    Store(REG_BINARY, "YQBi", 4);  // An odd number of bytes.
    ReadPasswordValue(key_.Get(), TEXT("v"), read);
    EXPECT_TRUE(read.IsEmpty());
    Store(REG_BINARY, "", 0);
    ReadPasswordValue(key_.Get(), TEXT("v"), password);
    EXPECT_TRUE(password.IsEmpty());
}

}  // namespace
