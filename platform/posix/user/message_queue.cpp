#include <algorithm>
#include <chrono>
#include <optional>

#include "platform/posix/last_error.h"
#include "platform/posix/user/queue.h"
#include "platform/posix/user/window.h"
#include "platform/sync.h"

namespace platform::user {
namespace {

constexpr UINT_PTR kFirstFreeTimer = 0x7FFF;  // ids of timers without a window go downwards

/// Which messages a caller wants. All of them if the range is empty.
struct Filter {
    const Window* window;
    UINT first;
    UINT last;

    bool TakesKind(UINT message) const {
        return (first == 0 && last == 0) || (message >= first && message <= last);
    }
    bool TakesWindow(HWND handle) const {
        return !window || (handle && IsInside(*window, FindWindow(handle)));
    }
    bool Takes(const MSG& message) const {
        return TakesKind(message.message) && TakesWindow(message.hwnd);
    }
};

bool TakePosted(Thread& self, const Filter& filter, UINT flags, MSG& message) {
    const auto found = std::find_if(self.posted.begin(), self.posted.end(),
                                    [&](const MSG& posted) { return filter.Takes(posted); });
    if (found == self.posted.end()) return false;
    message = *found;
    if (flags & PM_REMOVE) self.posted.erase(found);
    return true;
}

bool TakeQuit(Thread& self, UINT flags, MSG& message) {
    if (!self.isQuitting) return false;
    if (flags & PM_REMOVE) self.isQuitting = false;
    message = {nullptr, WM_QUIT, static_cast<WPARAM>(self.exitCode), 0, GetTickCount(), {}};
    return true;
}

bool TakePaint(Thread& self, const Filter& filter, MSG& message) {
    const Window* invalid = filter.TakesKind(WM_PAINT) ? FindInvalid(self, filter.window) : nullptr;
    if (!invalid) return false;
    message = {invalid->handle, WM_PAINT, 0, 0, GetTickCount(), {}};
    return true;
}

/// The timer that is due for the longest time begins its next period when it is taken.
bool TakeTimer(Thread& self, const Filter& filter, UINT flags, MSG& message) {
    if (!filter.TakesKind(WM_TIMER)) return false;
    const ULONGLONG now = MonotonicMs();
    Timer* oldest = nullptr;
    for (Timer& timer : self.timers) {
        if (timer.due > now || !filter.TakesWindow(timer.window)) continue;
        if (!oldest || timer.due < oldest->due) oldest = &timer;
    }
    if (!oldest) return false;
    if (flags & PM_REMOVE) oldest->due = now + oldest->elapseMs;
    message = {oldest->window, WM_TIMER, oldest->id, reinterpret_cast<LPARAM>(oldest->procedure),
               GetTickCount(), {}};
    return true;
}

bool Take(Thread& self, const Filter& filter, UINT flags, MSG& message) {
    return TakePosted(self, filter, flags, message) || TakeQuit(self, flags, message) ||
           TakePaint(self, filter, message) || TakeTimer(self, filter, flags, message);
}

/// Waits until something comes, or a timer that is wanted is due.
void WaitForWork(Thread& self, const Filter& filter, Lock& lock) {
    const auto isWoken = [&] { return self.isWoken; };
    std::optional<ULONGLONG> due;
    for (const Timer& timer : self.timers) {
        if (!filter.TakesKind(WM_TIMER) || !filter.TakesWindow(timer.window)) continue;
        due = std::min(due.value_or(timer.due), timer.due);
    }
    if (!due) {
        self.wake.wait(lock, isWoken);
        return;
    }
    const ULONGLONG now = MonotonicMs();
    const ULONGLONG left = *due > now ? *due - now : 0;
    self.wake.wait_for(lock, std::chrono::milliseconds(left), isWoken);
}

/// The filter's window may go while messages that were sent run.
bool MakeFilter(HWND handle, UINT first, UINT last, Filter& filter) {
    filter = {handle ? FindWindow(handle) : nullptr, first, last};
    return !handle || filter.window;
}

/// The character that a key gives; 0 for none.
WCHAR CharacterOf(WPARAM key) {
    if (key >= 'A' && key <= 'Z') return static_cast<WCHAR>(key + ('a' - 'A'));
    const bool isItself = (key >= '0' && key <= '9') || key == VK_SPACE || key == VK_RETURN ||
                          key == VK_ESCAPE || key == VK_TAB || key == VK_BACK;
    return isItself ? static_cast<WCHAR>(key) : WCHAR{};
}

bool IsTimer(const Timer& timer, HWND window, UINT_PTR id) {
    return timer.window == window && timer.id == id;
}

UINT_PTR FreeTimerId(const Thread& self) {
    UINT_PTR id = kFirstFreeTimer;
    const auto isTaken = [&](const Timer& timer) { return IsTimer(timer, nullptr, id); };
    while (std::any_of(self.timers.begin(), self.timers.end(), isTaken)) --id;
    return id;
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

void PostQuitMessage(int exitCode) noexcept {
    const Lock lock(UserLock());
    Thread& self = ThisThread();
    self.isQuitting = true;
    self.exitCode = exitCode;
    Wake(self);
}

BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) noexcept {
    Lock lock(UserLock());
    Thread& self = ThisThread();
    for (;;) {
        self.isWoken = false;
        RunSentMessages(lock);
        Filter filter;
        if (!MakeFilter(window, first, last, filter)) return -1;
        if (Take(self, filter, PM_REMOVE, *message)) return message->message != WM_QUIT;
        WaitForWork(self, filter, lock);
    }
}

BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT flags) noexcept {
    Lock lock(UserLock());
    RunSentMessages(lock);
    Filter filter;
    return MakeFilter(window, first, last, filter) && Take(ThisThread(), filter, flags, *message);
}

BOOL TranslateMessage(const MSG* message) noexcept {
    if (message->message != WM_KEYDOWN) return FALSE;
    const WCHAR character = CharacterOf(message->wParam);
    if (character) PostMessageW(message->hwnd, WM_CHAR, character, message->lParam);
    return character != 0;
}

LRESULT DispatchMessageW(const MSG* message) noexcept {
    if (message->message == WM_TIMER && message->lParam) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        procedure(message->hwnd, WM_TIMER, message->wParam, GetTickCount());
        return 0;
    }
    if (!message->hwnd) return 0;
    return SendMessageW(message->hwnd, message->message, message->wParam, message->lParam);
}

UINT_PTR SetTimer(HWND handle, UINT_PTR id, UINT elapseMs, TIMERPROC procedure) noexcept {
    const Lock lock(UserLock());
    Thread* thread = &ThisThread();
    if (handle) {
        const Window* window = FindWindow(handle);
        if (!window) return 0;
        thread = window->thread;
    }
    const auto isSame = [&](const Timer& timer) { return IsTimer(timer, handle, id); };
    auto known = std::find_if(thread->timers.begin(), thread->timers.end(), isSame);
    if (known == thread->timers.end()) {
        if (!handle) id = FreeTimerId(*thread);
        known = thread->timers.insert(known, {handle, id, 0, 0, nullptr});
    }
    known->elapseMs = std::max(elapseMs, USER_TIMER_MINIMUM);
    known->due = MonotonicMs() + known->elapseMs;
    known->procedure = procedure;
    Wake(*thread);
    return handle && id == 0 ? 1 : id;
}

BOOL KillTimer(HWND handle, UINT_PTR id) noexcept {
    const Lock lock(UserLock());
    Thread* thread = &ThisThread();
    if (handle) {
        const Window* window = FindWindow(handle);
        if (!window) return FALSE;
        thread = window->thread;
    }
    const auto isSame = [&](const Timer& timer) { return IsTimer(timer, handle, id); };
    if (std::erase_if(thread->timers, isSame) == 0) {
        return platform::Fail(ERROR_INVALID_PARAMETER);
    }
    return TRUE;
}
