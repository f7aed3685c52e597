#include <atomic>
#include <chrono>
#include <ctime>

#include "platform/testing.h"
#include "platform/time.h"

namespace platform {
namespace {

constexpr LONGLONG kNotHeld = -1;

// Milliseconds since 1970 at which a test holds the clock.
constinit std::atomic<LONGLONG> heldMs{kNotHeld};

timespec Now() noexcept {
    timespec now{};
    const LONGLONG held = heldMs;
    if (held != kNotHeld) return {held / 1000, held % 1000 * 1'000'000};
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

}  // namespace

namespace testing {

HeldClock::HeldClock(const SYSTEMTIME& time) {
    tm parts{};
    parts.tm_year = time.wYear - 1900;
    parts.tm_mon = time.wMonth - 1;
    parts.tm_mday = time.wDay;
    parts.tm_hour = time.wHour;
    parts.tm_min = time.wMinute;
    parts.tm_sec = time.wSecond;
    heldMs = LONGLONG{timegm(&parts)} * 1000 + time.wMilliseconds;
}

HeldClock::~HeldClock() { heldMs = kNotHeld; }

}  // namespace testing
}  // namespace platform

void GetSystemTime(SYSTEMTIME* time) noexcept {
    const timespec now = platform::Now();
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    time->wYear = static_cast<WORD>(parts.tm_year + 1900);
    time->wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time->wDay = static_cast<WORD>(parts.tm_mday);
    time->wHour = static_cast<WORD>(parts.tm_hour);
    time->wMinute = static_cast<WORD>(parts.tm_min);
    time->wSecond = static_cast<WORD>(parts.tm_sec);
    time->wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000);
}
