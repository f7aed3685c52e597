#pragma once

#include <functional>
#include <future>
#include <thread>

#include "platform/user.h"

namespace host {

/// A thread for one tab, as browsers have it: it uses COM as an apartment of its own and dispatches
/// its messages. What is to be done on it runs one after the other.
class TabThread {
public:
    /// Throws std::runtime_error if the thread cannot be made or cannot use COM.
    TabThread();
    /// Waits for what was started.
    ~TabThread();
    TabThread(const TabThread&) = delete;
    TabThread& operator=(const TabThread&) = delete;

    /// Has the thread do something. What that throws comes out of the future, on which one of the
    /// callers has to wait before what the task borrows ends.
    std::future<void> Start(std::function<void()> task);

    /// The same, and waits for it.
    void Do(std::function<void()> task) { Start(std::move(task)).get(); }

private:
    static void Run(std::promise<HWND> ready) noexcept;

    HWND window_ = nullptr;  // the thread's, to which tasks are posted
    std::thread thread_;
};

}  // namespace host
