#include <algorithm>
#include <chrono>

#include "platform/posix/handle_table.h"
#include "platform/posix/user/window.h"
#include "platform/system.h"

namespace platform::user {
namespace {

struct Table {
    std::recursive_mutex lock;
    HandleTable<Window> windows;
    std::vector<Window*> topLevels;
};

// Never destroyed: threads may end after the statics.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

/// Ends the windows of a thread that ends, as the system does, without a message; who still waits
/// for an answer gets none.
struct ThreadHolder {
    Thread thread;

    ThreadHolder() { thread.id = GetCurrentThreadId(); }
    ~ThreadHolder() {
        const Lock lock(UserLock());
        for (SentMessage* message : thread.sent) {
            message->isDone = true;
            Wake(*message->sender);
        }
        thread.sent.clear();
        const HandleTable<Window>& windows = TheTable().windows;
        const auto isOwn = [&](const Window& window) { return window.thread == &thread; };
        for (const std::uintptr_t own : windows.HandlesOf(isOwn)) {
            if (Window* window = windows.Find(own)) RemoveTree(*window);
        }
    }

    static void RemoveTree(Window& window) {
        while (!window.children.empty()) RemoveTree(*window.children.back());
        RemoveWindow(window);
    }
};

}  // namespace

std::recursive_mutex& UserLock() noexcept { return TheTable().lock; }

std::vector<Window*>& TopLevels() noexcept { return TheTable().topLevels; }

std::vector<Window*>& SiblingsOf(Window& window) noexcept {
    return window.parent ? window.parent->children : TopLevels();
}

Window* FindWindow(HWND handle) noexcept {
    Window* found = TheTable().windows.Find(reinterpret_cast<std::uintptr_t>(handle));
    if (!found) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return found;
}

Window& AddWindow(std::unique_ptr<Window> window) noexcept {
    Window& added = *window;
    ++added.windowClass->windows;
    added.handle = reinterpret_cast<HWND>(TheTable().windows.Add(std::move(window)));
    std::vector<Window*>& siblings = SiblingsOf(added);
    // A new child lies below its siblings, a new window of the desktop above all.
    siblings.insert(added.parent ? siblings.end() : siblings.begin(), &added);
    return added;
}

void RemoveWindow(Window& window) noexcept {
    Thread& thread = *window.thread;
    std::erase(SiblingsOf(window), &window);
    std::erase_if(thread.posted, [&](const MSG& message) { return message.hwnd == window.handle; });
    std::erase_if(thread.timers, [&](const Timer& timer) { return timer.window == window.handle; });
    for (HWND* held : {&thread.active, &thread.focus, &thread.capture}) {
        if (*held == window.handle) *held = nullptr;
    }
    for (Window* other : TopLevels()) {
        if (other->owner == &window) other->owner = nullptr;
    }
    --window.windowClass->windows;
    TheTable().windows.Remove(reinterpret_cast<std::uintptr_t>(window.handle));
}

bool IsInside(const Window& above, const Window* window) noexcept {
    while (window && window != &above) window = window->parent;
    return window != nullptr;
}

Window& TopOf(Window& window) noexcept {
    Window* top = &window;
    while (top->parent) top = top->parent;
    return *top;
}

Thread& ThisThread() noexcept {
    thread_local ThreadHolder holder;
    return holder.thread;
}

void Wake(Thread& thread) noexcept {
    thread.isWoken = true;
    thread.wake.notify_all();
}

std::size_t CountWindows() noexcept {
    const Lock lock(UserLock());
    return TheTable().windows.Count();
}

ULONGLONG MonotonicMs() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<ULONGLONG>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

RECT Intersection(const RECT& a, const RECT& b) noexcept {
    const RECT common{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                      std::min(a.bottom, b.bottom)};
    return IsEmpty(common) ? RECT{} : common;
}

RECT Moved(const RECT& rect, LONG x, LONG y) noexcept {
    return {rect.left + x, rect.top + y, rect.right + x, rect.bottom + y};
}

}  // namespace platform::user
