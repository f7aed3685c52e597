#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "platform/locale.h"
#include "platform/sync.h"
#include "platform/testing.h"
#include "platform/time.h"
#include "platform/token.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

TEST(UserLocale, TellsItsPaperAsANumberInTwoCharacters) {
    constexpr LCTYPE kQuestion = LOCALE_IPAPERSIZE | LOCALE_RETURN_NUMBER;
    WCHAR room[] = {0, 0, 7};
    EXPECT_EQ(GetLocaleInfoW(LOCALE_USER_DEFAULT, kQuestion, nullptr, 0), 2);
    EXPECT_EQ(GetLocaleInfoW(LOCALE_USER_DEFAULT, kQuestion, room, 1), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    ASSERT_EQ(GetLocaleInfoW(LOCALE_USER_DEFAULT, kQuestion, room, 3), 2);
    DWORD paper = 0;
    std::memcpy(&paper, room, sizeof paper);
    EXPECT_TRUE(paper == 1 || paper == 5 || paper == 8 || paper == 9) << paper;
    EXPECT_EQ(room[2], 7) << "no text, so no end of one";
}

TEST(Events, StayOrGoAsTheyWereMade) {
    const KernelHandle manual(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelHandle automatic(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    ASSERT_TRUE(manual && automatic);
    EXPECT_EQ(WaitForSingleObject(manual.Get(), 0), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(manual.Get()));
    EXPECT_EQ(WaitForSingleObject(manual.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(manual.Get(), INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ResetEvent(manual.Get()));
    EXPECT_EQ(WaitForSingleObject(manual.Get(), 1), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(automatic.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic.Get(), 0), WAIT_TIMEOUT) << "one waiter took it";
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    std::thread setter([&] { SetEvent(automatic.Get()); });
    EXPECT_EQ(WaitForSingleObject(automatic.Get(), 60000), WAIT_OBJECT_0);
    setter.join();
}

TEST(Events, OutliveTheirHandleForThoseWhoWait) {
    // Handles are opened, used and closed from several threads; a stale one is an error and no
    // crash.
    std::atomic<HANDLE> shared{nullptr};
    std::atomic<bool> done{false};
    std::vector<std::thread> users;
    for (int i = 0; i < 2; ++i) {
        users.emplace_back([&] {
            while (!done) {
                SetEvent(shared);
                WaitForSingleObject(shared, 0);
            }
        });
    }
    for (int i = 0; i < 2000; ++i) {
        KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        EXPECT_TRUE(event);
        shared = event.Get();
    }
    done = true;
    for (std::thread& user : users) user.join();
}

TEST(Clock, GivesTheTimeInUtcAndCanBeHeld) {
    SYSTEMTIME time{};
    GetSystemTime(&time);
    EXPECT_GE(time.wYear, 2020);
    EXPECT_TRUE(time.wMonth >= 1 && time.wMonth <= 12);
    EXPECT_LT(time.wMilliseconds, 1000);
    const DWORD before = GetTickCount();
    Sleep(2);
    EXPECT_LT(GetTickCount() - before, 60000u);
    if (!testing::kOwnsTheSystem) return;
    // 2001-09-09T01:46:40.789Z, a Sunday, is 1000000000.789 in Unix time.
    const SYSTEMTIME kHeld{2001, 9, 0, 9, 1, 46, 40, 789};
    const testing::HeldClock held(kHeld);
    GetSystemTime(&time);
    EXPECT_EQ(std::memcmp(&time, &kHeld, sizeof time), 0);
}

/// The integrity level of this process, read as documented; 0 if a step fails.
DWORD ReadIntegrityLevel() {
    KernelHandle token;
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.Put())) return 0;
    if (GetLastError() != ERROR_NO_TOKEN) return 0;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put())) return 0;
    DWORD needed = 0;
    EXPECT_FALSE(GetTokenInformation(token.Get(), TokenIntegrityLevel, nullptr, 0, &needed));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    std::vector<ULONGLONG> block(needed / sizeof(ULONGLONG) + 1);
    if (!GetTokenInformation(token.Get(), TokenIntegrityLevel, block.data(), needed, &needed))
        return 0;
    const auto* label = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(block.data());
    const SID_IDENTIFIER_AUTHORITY* authority = GetSidIdentifierAuthority(label->Label.Sid);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(authority->Value[i], 0);
    EXPECT_EQ(authority->Value[5], 16);
    return *GetSidSubAuthority(label->Label.Sid, 0);
}

TEST(Token, TellsTheIntegrityLevel) {
    EXPECT_GE(ReadIntegrityLevel(), static_cast<DWORD>(SECURITY_MANDATORY_LOW_RID));
    if (!testing::kOwnsTheSystem) return;
    EXPECT_EQ(ReadIntegrityLevel(), SECURITY_MANDATORY_MEDIUM_RID);
    testing::SetEnvironment("QUVADA_INTEGRITY", "low");
    EXPECT_EQ(ReadIntegrityLevel(), SECURITY_MANDATORY_LOW_RID);
    testing::SetEnvironment("QUVADA_INTEGRITY", "4097");
    EXPECT_EQ(ReadIntegrityLevel(), 4097u);
    testing::SetIntegrityLevel(SECURITY_MANDATORY_LOW_RID);
    EXPECT_EQ(ReadIntegrityLevel(), SECURITY_MANDATORY_LOW_RID);
    testing::SetIntegrityLevel(0);
    testing::SetEnvironment("QUVADA_INTEGRITY", nullptr);
}

}  // namespace
}  // namespace platform
