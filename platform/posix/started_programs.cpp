#include "platform/posix/started_programs.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <sys/wait.h>

namespace platform {
namespace {

struct Watch {
    std::mutex mutex;
    std::condition_variable changed;
    unsigned running = 0;
    unsigned noted = 0;
    pid_t newest = 0;
    DWORD exitCode = 0;
    bool hasExitCode = false;
};

// Never destroyed: its threads may outlive main.
Watch& State() {
    static Watch& state = *new Watch;
    return state;
}

DWORD ExitCodeOf(int status) noexcept {
    return static_cast<DWORD>(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

void* Reap(void* argument) {
    const auto child = static_cast<pid_t>(reinterpret_cast<INT_PTR>(argument));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    Watch& state = State();
    const std::lock_guard lock(state.mutex);
    --state.running;
    if (child == state.newest) {
        state.exitCode = ExitCodeOf(status);
        state.hasExitCode = true;
    }
    state.changed.notify_all();
    return nullptr;
}

}  // namespace

void WatchProgram(pid_t child) noexcept {
    Watch& state = State();
    const std::lock_guard lock(state.mutex);
    ++state.noted;
    pthread_t thread{};
    // Without a thread the child stays a zombie until this process ends, which is the lesser evil.
    if (pthread_create(&thread, nullptr, Reap, reinterpret_cast<void*>(INT_PTR{child})) != 0)
        return;
    pthread_detach(thread);
    ++state.running;
    state.newest = child;
    state.hasExitCode = false;
}

bool WaitForWatchedPrograms(DWORD timeoutMs, DWORD* exitCode) noexcept {
    Watch& state = State();
    std::unique_lock lock(state.mutex);
    const auto isQuiet = [&] { return state.running == 0; };
    if (timeoutMs == INFINITE) {
        state.changed.wait(lock, isQuiet);
    } else if (!state.changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), isQuiet)) {
        return false;
    }
    if (exitCode && state.hasExitCode) {
        *exitCode = state.exitCode;
        state.hasExitCode = false;
    }
    return true;
}

unsigned CountWatchedPrograms() noexcept {
    Watch& state = State();
    const std::lock_guard lock(state.mutex);
    return state.noted;
}

}  // namespace platform
