#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/waitable.h"
#include "platform/sync.h"

namespace platform {
namespace {

// What all handles of one mutex share.
class MutexState {
public:
    bool Take(DWORD milliseconds) noexcept {
        std::unique_lock lock(mutex_);
        const void* const self = ThisThread();
        const auto isOurs = [&] { return !holder_ || holder_ == self; };
        if (milliseconds == INFINITE) {
            released_.wait(lock, isOurs);
        } else if (!released_.wait_for(lock, std::chrono::milliseconds(milliseconds), isOurs)) {
            return false;
        }
        holder_ = self;
        ++depth_;
        return true;
    }

    bool Give() noexcept {
        const std::lock_guard lock(mutex_);
        if (holder_ != ThisThread()) return false;
        if (--depth_ == 0) {
            holder_ = nullptr;
            released_.notify_one();
        }
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable released_;
    const void* holder_ = nullptr;
    unsigned depth_ = 0;
};

class MutexObject final : public Waitable {
public:
    explicit MutexObject(std::shared_ptr<MutexState> shared) noexcept : state(std::move(shared)) {}
    bool Wait(DWORD milliseconds) noexcept override { return state->Take(milliseconds); }

    const std::shared_ptr<MutexState> state;
};

std::shared_ptr<MutexState> OpenState(LPCSTR name, bool& existed) {
    existed = false;
    if (!name) return std::make_shared<MutexState>();
    static std::mutex lock;
    // Never destroyed: modules meet while the process ends, too.
    static auto& named = *new std::map<std::string, std::weak_ptr<MutexState>>;
    const std::lock_guard guard(lock);
    std::weak_ptr<MutexState>& known = named[name];
    std::shared_ptr<MutexState> state = known.lock();
    existed = state != nullptr;
    if (!existed) known = state = std::make_shared<MutexState>();
    return state;
}

}  // namespace
}  // namespace platform

HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES, BOOL isHeld, LPCSTR name) noexcept {
    using namespace platform;
    if (InjectFault("CreateMutexA")) return nullptr;
    bool existed = false;
    std::shared_ptr<MutexState> state = OpenState(name, existed);
    if (isHeld && !existed) state->Take(INFINITE);
    const HANDLE handle = OpenHandle(new (std::nothrow) MutexObject(std::move(state)));
    if (handle) SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

BOOL ReleaseMutex(HANDLE mutex) noexcept {
    using namespace platform;
    const ObjectRef<Waitable> object = FindObject<Waitable>(mutex);
    if (!object) return FALSE;
    const auto* const held = dynamic_cast<MutexObject*>(object.Get());
    if (!held) return Fail(ERROR_INVALID_HANDLE);
    return held->state->Give() ? TRUE : Fail(ERROR_NOT_OWNER);
}
