#include <algorithm>
#include <chrono>

#include "platform/posix/user/window.h"
#include "platform/system.h"

namespace platform::user {
namespace {

// A handle is the place in the table plus a count of the place's uses, so that one that is kept too
// long is told from that of the next window.
constexpr std::size_t kPlaceBits = 16;
constexpr std::size_t kFirstPlace = 16;  // no handle looks like a small number
constexpr std::size_t kMostUses = 0x7FFF;

struct Place {
    std::unique_ptr<Window> window;
    std::size_t uses = 0;
};

struct Table {
    std::recursive_mutex lock;
    std::vector<Place> places{kFirstPlace};
    std::vector<Window*> topLevels;
};

// Never destroyed: threads may end after the statics.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

HWND HandleOf(std::size_t place, std::size_t uses) {
    return reinterpret_cast<HWND>(uses << kPlaceBits | place);
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
        for (Place& place : TheTable().places) {
            if (place.window && place.window->thread == &thread) RemoveTree(*place.window);
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
    const auto value = reinterpret_cast<ULONG_PTR>(handle);
    const std::size_t place = value & ((1u << kPlaceBits) - 1);
    std::vector<Place>& places = TheTable().places;
    if (place < places.size() && places[place].window && places[place].window->handle == handle) {
        return places[place].window.get();
    }
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

Window& AddWindow(std::unique_ptr<Window> window) noexcept {
    std::vector<Place>& places = TheTable().places;
    auto free = std::find_if(places.begin() + kFirstPlace, places.end(), [](const Place& place) {
        return !place.window && place.uses < kMostUses;
    });
    if (free == places.end()) free = places.emplace(places.end());
    ++free->uses;
    window->handle = HandleOf(static_cast<std::size_t>(free - places.begin()), free->uses);
    ++window->windowClass->windows;
    free->window = std::move(window);
    Window& added = *free->window;
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
    const auto place = reinterpret_cast<ULONG_PTR>(window.handle) & ((1u << kPlaceBits) - 1);
    TheTable().places[place].window.reset();
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
