#include "platform/sync.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/waitable.h"

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

class EventObject : public Waitable {
public:
    EventObject(bool isManual, bool isSignalled) noexcept
        : manual_(isManual), signalled_(isSignalled) {}

    void Set(bool isSignalled) noexcept {
        const std::lock_guard lock(mutex_);
        signalled_ = isSignalled;
        if (signalled_) changed_.notify_all();
    }

    /// Gives whether it was signalled in time; one waiter takes the signal of an automatic event.
    bool Wait(DWORD milliseconds) noexcept override {
        std::unique_lock lock(mutex_);
        const auto isSignalled = [this] { return signalled_; };
        if (milliseconds == INFINITE) {
            changed_.wait(lock, isSignalled);
        } else if (!changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), isSignalled)) {
            return false;
        }
        if (!manual_) signalled_ = false;
        return true;
    }

private:
    ~EventObject() override = default;

    std::mutex mutex_;
    std::condition_variable changed_;
    const bool manual_;
    bool signalled_;
};

BOOL SetState(HANDLE handle, bool isSignalled) noexcept {
    const ObjectRef<Waitable> object = FindObject<Waitable>(handle);
    auto* const event = dynamic_cast<EventObject*>(object.Get());
    if (!event) return Fail(ERROR_INVALID_HANDLE);
    event->Set(isSignalled);
    return TRUE;
}

}  // namespace
}  // namespace platform

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL signalled,
                    LPCWSTR name) noexcept {
    using namespace platform;
    if (InjectFault("CreateEventW")) return nullptr;
    if (name) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    return OpenHandle(new (std::nothrow) EventObject(manualReset != FALSE, signalled != FALSE));
}

BOOL SetEvent(HANDLE event) noexcept { return platform::SetState(event, true); }

BOOL ResetEvent(HANDLE event) noexcept { return platform::SetState(event, false); }

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept {
    using namespace platform;
    if (InjectFault("WaitForSingleObject")) return WAIT_FAILED;
    const ObjectRef<Waitable> waitable = FindObject<Waitable>(object);
    if (!waitable) return WAIT_FAILED;
    return waitable->Wait(milliseconds) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

void Sleep(DWORD milliseconds) noexcept {
    if (platform::InjectFault("Sleep")) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

DWORD GetTickCount() noexcept {
    const auto sinceStart = platform::Clock::now().time_since_epoch();
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count();
    return static_cast<DWORD>(elapsed);
}
