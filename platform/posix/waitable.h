#pragma once

/// What WaitForSingleObject waits for.

#include "platform/posix/kernel_object.h"

namespace platform {

/// Base of events and mutexes.
class Waitable : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Waitable;

    /// Gives whether the object could be had in time; the thread then has taken what it gives.
    /// \param milliseconds  INFINITE: without limit.
    virtual bool Wait(DWORD milliseconds) noexcept = 0;

protected:
    Waitable() noexcept : KernelObject(kKind) {}
};

}  // namespace platform
