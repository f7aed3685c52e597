#include "platform/com_library.h"

#include <gtest/gtest.h>

#include "platform/automation.h"
#include "platform/registry.h"
#include "platform/testing.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

TEST(ClassIds, GoToTextAndBack) {
    constexpr CLSID kId = {
        0x0A1B2C3D, 0x4E5F, 0x6071, {0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}};
    constexpr const WCHAR* kText = TEXT("{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}");
    WCHAR text[39];
    EXPECT_EQ(StringFromGUID2(kId, text, 38), 0);
    EXPECT_EQ(StringFromGUID2(kId, text, 39), 39);
    EXPECT_EQ(WideString(text), kText);
    const struct {
        const WCHAR* text;
        HRESULT result;
    } kCases[] = {
        {kText, S_OK},
        {TEXT("{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}"), S_OK},
        {TEXT("{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9"), CO_E_CLASSSTRING},
        {TEXT("{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9} "), CO_E_CLASSSTRING},
        {TEXT("{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8G9}"), CO_E_CLASSSTRING},
        {TEXT("{ A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}"), CO_E_CLASSSTRING},
        {TEXT("{-A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}"), CO_E_CLASSSTRING},
    };
    for (const auto& c : kCases) {
        CLSID id = {};
        EXPECT_EQ(CLSIDFromString(const_cast<WCHAR*>(c.text), &id), c.result) << ToUtf8(c.text);
        EXPECT_TRUE(c.result != S_OK || IsEqualGUID(id, kId));
    }
}

TEST(VarUI4FromStr, ReadsNumbers) {
    const struct {
        const WCHAR* text;
        HRESULT result;
        ULONG number;
    } kCases[] = {
        {TEXT("0"), S_OK, 0},
        {TEXT("4294967295"), S_OK, 4294967295},
        {TEXT(" +7 "), S_OK, 7},
        {TEXT("-0"), S_OK, 0},
        {TEXT("2.5"), S_OK, 2},
        {TEXT("3.5"), S_OK, 4},
        {TEXT("2.51"), S_OK, 3},
        {TEXT("&HfF"), S_OK, 255},
        {TEXT("&o17"), S_OK, 15},
        {TEXT("4294967296"), DISP_E_OVERFLOW, 9},
        {TEXT("99999999999999999999"), DISP_E_OVERFLOW, 9},
        {TEXT("-1"), DISP_E_OVERFLOW, 9},
        {TEXT(""), DISP_E_TYPEMISMATCH, 9},
        {TEXT("x"), DISP_E_TYPEMISMATCH, 9},
        {TEXT("1x"), DISP_E_TYPEMISMATCH, 9},
        {TEXT("0x1"), DISP_E_TYPEMISMATCH, 9},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.text));
        ULONG number = 9;
        EXPECT_EQ(VarUI4FromStr(const_cast<WCHAR*>(c.text), 0x409, 0, &number), c.result);
        EXPECT_EQ(number, c.number);
    }
}

TEST(Classes, AreTheUsersOverTheMachines) {
    if (!testing::kOwnsTheSystem) GTEST_SKIP() << "this system shows the machine's classes only";
    const test_support::TestProfile profile;
    const auto create = [](HKEY root, const WCHAR* path) {
        RegistryKey key;
        EXPECT_EQ(
            RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr),
            ERROR_SUCCESS);
        return key;
    };
    const auto isThere = [](HKEY root, const WCHAR* path) {
        RegistryKey key;
        return RegOpenKeyExW(root, path, 0, KEY_READ, key.Put()) == ERROR_SUCCESS;
    };
    EXPECT_FALSE(isThere(HKEY_CLASSES_ROOT, TEXT("CLSID")));
    create(HKEY_CLASSES_ROOT, TEXT("CLSID\\{a}"));
    EXPECT_TRUE(isThere(HKEY_LOCAL_MACHINE, TEXT("Software\\Classes\\CLSID\\{a}")));
    create(HKEY_CURRENT_USER, TEXT("Software\\Classes\\CLSID\\{b}"));
    // A key is looked up as a whole path, also from one that is open.
    const RegistryKey ids = create(HKEY_CLASSES_ROOT, TEXT("CLSID"));
    EXPECT_TRUE(isThere(ids.Get(), TEXT("{a}")) && isThere(ids.Get(), TEXT("{b}")));
    create(ids.Get(), TEXT("{c}"));
    EXPECT_TRUE(isThere(HKEY_LOCAL_MACHINE, TEXT("Software\\Classes\\CLSID\\{c}")));
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, TEXT("CLSID\\{b}")), ERROR_SUCCESS);
    EXPECT_FALSE(isThere(HKEY_CURRENT_USER, TEXT("Software\\Classes\\CLSID\\{b}")));
}

}  // namespace
}  // namespace platform
