#pragma once

/// What the layer keeps of windows. One lock guards all of it, as the system's own windows have
/// one; it is never held while a window's procedure runs. A Window* or Thread* is good only until
/// the lock is let go: after each message the window is looked up again by its handle.

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/posix/user/window_calls.h"
#include "platform/text.h"

namespace platform::gdi {
struct Surface;
}

namespace platform::user {

using Lock = std::unique_lock<std::recursive_mutex>;
std::recursive_mutex& UserLock() noexcept;

struct WindowClass {
    ATOM atom = 0;
    WideString name;
    WNDCLASSEXW info = {};  // the name is the one above
    unsigned windows = 0;
};

/// A message on its way to another thread; lies on the sender's stack.
struct SentMessage {
    struct Thread* sender;
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    LRESULT result = 0;
    bool isDone = false;
};

struct Timer {
    HWND window;
    UINT_PTR id;
    ULONGLONG elapseMs;
    ULONGLONG due;  // by MonotonicMs
    TIMERPROC procedure;
};

/// A thread that has windows or messages. Ends with the thread, and its windows with it.
struct Thread {
    DWORD id = 0;
    std::deque<MSG> posted;
    std::deque<SentMessage*> sent;
    std::vector<Timer> timers;
    bool isQuitting = false;
    int exitCode = 0;
    HWND active = nullptr;
    HWND focus = nullptr;
    HWND capture = nullptr;
    std::array<BYTE, 256> keys = {};  // 0x80: down
    bool isWoken = false;             // something may have come since the queue was looked through
    std::condition_variable_any wake;
};

struct Dialog;
struct SubclassChain;

struct Window {
    HWND handle = nullptr;
    Thread* thread = nullptr;
    WindowClass* windowClass = nullptr;
    WNDPROC procedure = nullptr;
    HINSTANCE instance = nullptr;
    DWORD style = 0;
    DWORD exStyle = 0;
    Window* parent = nullptr;  // of a child
    Window* owner = nullptr;
    std::vector<Window*> children;  // the topmost first
    RECT place = {};                // in the parent's client area, or on the screen
    RECT client = {};               // relative to the window's own corner
    UINT_PTR id = 0;                // of a child
    HMENU menu = nullptr;
    LONG_PTR userData = 0;
    WideString text;
    std::vector<std::byte> extra;
    RECT invalid = {};  // of the client area; empty if all is valid
    bool mustErase = false;
    bool isDestroying = false;
    std::shared_ptr<gdi::Surface> surface;  // of a window that is no child
    std::shared_ptr<Dialog> dialog;         // of a dialog
    std::shared_ptr<void> control;          // what a control of the system keeps
    std::shared_ptr<SubclassChain> subclasses;
};

/// Null with ERROR_INVALID_WINDOW_HANDLE. The lock must be held.
Window* FindWindow(HWND handle) noexcept;
/// All windows that are no children, the topmost first.
std::vector<Window*>& TopLevels() noexcept;
/// Where a window stands among its kind.
std::vector<Window*>& SiblingsOf(Window& window) noexcept;
/// Whether `window` is `above` or lies below it.
[[nodiscard]] bool IsInside(const Window& above, const Window* window) noexcept;
/// The window that a child belongs to at last, or the window itself.
Window& TopOf(Window& window) noexcept;

/// Takes a new window into the table; gives it its handle.
Window& AddWindow(std::unique_ptr<Window> window) noexcept;
/// Ends a window that has no children any more, and all that refers to it.
void RemoveWindow(Window& window) noexcept;

/// The windows of the process.
std::size_t CountWindows() noexcept;

/// The calling thread.
Thread& ThisThread() noexcept;
/// Tells a thread to look through its queue.
void Wake(Thread& thread) noexcept;
ULONGLONG MonotonicMs() noexcept;

/// The class that a module sees under a name or an atom; null if none.
WindowClass* FindClass(HINSTANCE instance, LPCWSTR name) noexcept;
/// Makes a class of the system, unless it is there.
void RegisterSystemClass(LPCWSTR name, UINT style, WNDPROC procedure, int extraBytes,
                         HBRUSH background = nullptr) noexcept;

/// The width of the frame at each side.
RECT FrameOf(DWORD style, DWORD exStyle) noexcept;
/// Where the corner of the window, and of its client area, lies on the screen.
POINT OriginOf(const Window& window) noexcept;
POINT ClientOriginOf(const Window& window) noexcept;
/// Asks the window by WM_NCCALCSIZE where in itself its client area lies.
void CalculateClient(HWND window) noexcept;

/// Adds an area of the client area to what has to be painted; of a window that does not clip its
/// children, theirs as well. Null is all of it, with the children in any case.
void Invalidate(Window& window, const RECT* area, bool erase) noexcept;
/// The first visible window of a thread that has to be painted; null if none.
Window* FindInvalid(const Thread& thread, const Window* inside) noexcept;
[[nodiscard]] bool IsShown(const Window& window) noexcept;
/// Takes focus, activation and capture from a window that goes or is hidden.
void LeaveInput(HWND window) noexcept;

constexpr LONG WidthOf(const RECT& rect) { return rect.right - rect.left; }
constexpr LONG HeightOf(const RECT& rect) { return rect.bottom - rect.top; }
constexpr bool IsEmpty(const RECT& rect) {
    return rect.right <= rect.left || rect.bottom <= rect.top;
}
RECT Intersection(const RECT& a, const RECT& b) noexcept;
RECT Moved(const RECT& rect, LONG x, LONG y) noexcept;

}  // namespace platform::user
