#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/user/queue.h"
#include "platform/posix/user/window.h"
#include "platform/sync.h"

namespace platform::user {
namespace {

/// Runs the procedure of a window of this thread.
LRESULT CallWindow(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    WNDPROC procedure = nullptr;
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return 0;
        procedure = window->procedure;
    }
    return procedure(handle, message, wParam, lParam);
}

/// Waits for the answer of another thread.
LRESULT SendAcross(Lock& lock, Thread& receiver, SentMessage& message) {
    Thread& self = *message.sender;
    receiver.sent.push_back(&message);
    Wake(receiver);
    while (!message.isDone) {
        self.isWoken = false;
        RunSentMessages(lock);
        self.wake.wait(lock, [&] { return self.isWoken || message.isDone; });
    }
    // The sleep has eaten the sign that something else has come.
    self.isWoken = true;
    return message.result;
}

}  // namespace

void RunSentMessages(Lock& lock) noexcept {
    Thread& self = ThisThread();
    while (!self.sent.empty()) {
        SentMessage* message = self.sent.front();
        self.sent.pop_front();
        lock.unlock();
        const LRESULT result =
            CallWindow(message->window, message->message, message->wParam, message->lParam);
        lock.lock();
        message->result = result;
        message->isDone = true;
        Wake(*message->sender);
    }
}

}  // namespace platform::user

using namespace platform::user;

LRESULT SendMessageW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    {
        Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return 0;
        if (window->thread != &ThisThread()) {
            SentMessage sent{&ThisThread(), handle, message, wParam, lParam};
            return SendAcross(lock, *window->thread, sent);
        }
    }
    return CallWindow(handle, message, wParam, lParam);
}

LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                        LPARAM lParam) noexcept {
    return procedure ? procedure(window, message, wParam, lParam) : 0;
}

BOOL PostMessageW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (platform::InjectFault("PostMessageW")) return FALSE;
    const Lock lock(UserLock());
    Thread* receiver = &ThisThread();
    if (handle) {
        const Window* window = FindWindow(handle);
        if (!window) return FALSE;
        receiver = window->thread;
    }
    receiver->posted.push_back({handle, message, wParam, lParam, GetTickCount(), {}});
    Wake(*receiver);
    return TRUE;
}
