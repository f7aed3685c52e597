#include "platform/messages.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/modules.h"
#include "platform/testing.h"

namespace {

constexpr DWORD kSystem = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
constexpr DWORD kModule = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS;

TEST(SystemMessages, GivesOneSentenceForAnErrorAndTheResultMadeOfIt) {
    for (const DWORD code : {2u, 5u, 32u, 53u, 87u, 112u, 126u, 0x80004005u}) {
        WCHAR wide[256] = {};
        char narrow[256] = {};
        const DWORD length = FormatMessageW(kSystem, nullptr, code, 0, wide, 256, nullptr);
        ASSERT_GT(length, 3u) << code;
        EXPECT_EQ(platform::WideView(wide).substr(length - 3), TEXT(".\r\n"));
        EXPECT_EQ(FormatMessageA(kSystem, nullptr, code, 0, narrow, 256, nullptr), length);
        EXPECT_EQ(platform::ToUtf8(wide), narrow);
        if (code & 0x80000000) continue;
        char result[256] = {};
        (void)FormatMessageA(kSystem, nullptr, 0x80070000 | code, 0, result, 256, nullptr);
        EXPECT_STREQ(result, narrow);
    }
}

TEST(SystemMessages, SaysWhyThereIsNone) {
    WCHAR buffer[256] = {};
    const DWORD length = FormatMessageW(kSystem, nullptr, 5, 0, buffer, 256, nullptr);
    const struct {
        DWORD flags;
        DWORD code;
        DWORD size;
        DWORD error;
    } kCases[] = {{kSystem, 5, length, ERROR_INSUFFICIENT_BUFFER},
                  {kSystem, 5, 0, ERROR_INSUFFICIENT_BUFFER},
                  {kSystem, 0x8202001E, 256, ERROR_MR_MID_NOT_FOUND},
                  {kSystem, 0x40020010, 256, ERROR_MR_MID_NOT_FOUND},
                  {0, 5, 256, ERROR_INVALID_PARAMETER}};
    for (const auto& c : kCases) {
        EXPECT_EQ(FormatMessageW(c.flags, nullptr, c.code, 0, buffer, c.size, nullptr), 0u);
        EXPECT_EQ(GetLastError(), c.error) << c.flags << ' ' << c.code << ' ' << c.size;
    }
    EXPECT_EQ(FormatMessageW(kSystem, nullptr, 5, 0, buffer, length + 1, nullptr), length);
    const HMODULE program = GetModuleHandleA(nullptr);
    EXPECT_EQ(FormatMessageW(kModule, program, 5, 0, buffer, 256, nullptr), 0u);
    EXPECT_EQ(GetModuleHandleA("none.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(MultiByteToWideChar, MeasuresAndWidens) {
    WCHAR wide[8] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, nullptr, 0), 4);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, wide, 3), 3);
    EXPECT_EQ(platform::WideView(wide), TEXT("abc"));
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, wide, 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, nullptr, 3, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
