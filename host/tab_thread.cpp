#include "host/tab_thread.h"

#include <memory>
#include <stdexcept>
#include <utility>

#include "host/window_class.h"
#include "platform/com_library.h"
#include "platform/scope_exit.h"

namespace host {
namespace {

constexpr UINT kTask = WM_APP;  // lParam: a Task, which the receiver owns.
constexpr UINT kEnd = WM_APP + 1;

using Task = std::packaged_task<void()>;

LRESULT CALLBACK TaskProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == kTask) {
        const std::unique_ptr<Task> task(reinterpret_cast<Task*>(lParam));
        (*task)();
        return 0;
    }
    if (message == kEnd) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

TabThread::TabThread() {
    std::promise<HWND> ready;
    std::future<HWND> window = ready.get_future();
    thread_ = std::thread(Run, std::move(ready));
    window_ = window.get();
    if (window_) return;
    thread_.join();
    throw std::runtime_error("a tab's thread cannot be made");
}

TabThread::~TabThread() {
    PostMessageW(window_, kEnd, 0, 0);
    thread_.join();
}

std::future<void> TabThread::Start(std::function<void()> task) {
    auto packed = std::make_unique<Task>(std::move(task));
    std::future<void> done = packed->get_future();
    if (!PostMessageW(window_, kTask, 0, reinterpret_cast<LPARAM>(packed.get()))) {
        throw std::runtime_error("a tab's thread takes no more messages");
    }
    (void)packed.release();
    return done;
}

void TabThread::Run(std::promise<HWND> ready) noexcept {
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        ready.set_value(nullptr);
        return;
    }
    const platform::ScopeExit ended([]() noexcept { CoUninitialize(); });
    const HWND window =
        CreateWindowExW(0, WindowClass(TEXT("QuvadaHostTasks"), TaskProcedure), nullptr, WS_POPUP,
                        0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    ready.set_value(window);
    if (!window) return;
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    DestroyWindow(window);
}

}  // namespace host
