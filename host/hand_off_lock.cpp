#include "host/hand_off_lock.h"

#include <thread>

#include "host/interrupt.h"
#include "host/system.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kRetry{20};

}  // namespace

bool HandOffLock::Take(std::chrono::milliseconds timeout, Progress& progress) {
    const platform::WideString path = HandOffLockPath();
    const auto until = std::chrono::steady_clock::now() + timeout;
    bool told = false;
    for (;;) {
        file_.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file_ || GetLastError() != ERROR_SHARING_VIOLATION) return true;
        if (Interrupted() || std::chrono::steady_clock::now() >= until) return false;
        if (!told) progress.Step("waiting for another conversion");
        told = true;
        std::this_thread::sleep_for(kRetry);
    }
}

}  // namespace host
