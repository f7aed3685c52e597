#include "platform/resources.h"

#include <gtest/gtest.h>

#include "platform/testing.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

const WideString kProbe = FromUtf8(TEST_MODULES "\\probe.dll");

std::string TextOf(HMODULE module, LPCWSTR name, LPCWSTR type) {
    const std::span<const std::byte> bytes = ResourceBytes(module, name, type);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(Resources, AreFoundByNumberAndByNameInCodeAndInData) {
    const struct {
        const char* why;
        LPCWSTR name, type;
        std::string text;
        DWORD error;
    } kCases[] = {
        {"number of a named type", MAKEINTRESOURCEW(7), TEXT("SCRIPT"), "text", 0},
        {"number of a numbered type", MAKEINTRESOURCEW(7), MAKEINTRESOURCEW(300), "a", 0},
        {"numbers as text", TEXT("#7"), TEXT("#300"), "a", 0},
        {"name, in small letters", TEXT("named"), TEXT("script"), "by name", 0},
        {"no such number", MAKEINTRESOURCEW(8), TEXT("SCRIPT"), "", ERROR_RESOURCE_NAME_NOT_FOUND},
        {"the text is no number", TEXT("7"), TEXT("SCRIPT"), "", ERROR_RESOURCE_NAME_NOT_FOUND},
        {"no such type", MAKEINTRESOURCEW(7), TEXT("NONE"), "", ERROR_RESOURCE_TYPE_NOT_FOUND},
    };
    for (const DWORD flags : {DWORD{0}, DWORD{LOAD_LIBRARY_AS_DATAFILE}}) {
        const ModuleHandle module(LoadLibraryExW(kProbe.c_str(), nullptr, flags));
        ASSERT_TRUE(module) << GetLastError();
        for (const auto& c : kCases) {
            SCOPED_TRACE(c.why);
            SetLastError(0);
            EXPECT_EQ(TextOf(module.Get(), c.name, c.type), c.text);
            EXPECT_EQ(GetLastError(), c.error);
        }
        EXPECT_EQ(GetModuleHandleW(TEXT("probe.dll")), flags == 0 ? module.Get() : nullptr);
    }
}

TEST(Resources, OfADamagedModuleAreMissing) {
    const test_support::TestProfile profile;
    const WideString copy = profile.Path(TEXT("cut.dll"));
    const std::string whole = test_support::ReadWholeFile(kProbe);
    ASSERT_GT(whole.size(), 4096u);
    for (std::size_t size = 0; size < whole.size(); size += size < 128 ? 16 : whole.size() / 97) {
        ASSERT_TRUE(test_support::WriteWholeFile(copy, whole.substr(0, size)));
        const ModuleHandle module(LoadLibraryExW(copy.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
        // On Windows the resources come before what is cut off last.
        if (!module || !testing::kOwnsTheSystem) continue;
        EXPECT_EQ(TextOf(module.Get(), MAKEINTRESOURCEW(7), TEXT("SCRIPT")), "") << size;
    }
    EXPECT_EQ(
        LoadLibraryExW(profile.Path(TEXT("none.dll")).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE),
        nullptr);
}

}  // namespace
}  // namespace platform
