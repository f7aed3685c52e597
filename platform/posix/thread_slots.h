#pragma once

#include <pthread.h>

namespace platform {

/// Remembers what the threads have in one slot, so that it can be ended for each of them.
class ThreadSlots {
public:
    using AtEnd = void (*)(void* value);

    bool Create(AtEnd atEnd) noexcept;
    void Destroy() noexcept;
    /// Has `atEnd` called with the value when this thread ends. False if memory runs out.
    bool Note(void* value) noexcept;

private:
    pthread_key_t key_ = 0;
    AtEnd atEnd_ = nullptr;  // null: there is no key
};

}  // namespace platform
