#pragma once

/// A pointer that each thread has for itself, with an end-of-thread call.

#include "platform/base.h"

#ifndef _WIN32
#include "platform/posix/thread_slots.h"
#endif

namespace platform {

/// Called with a thread's pointer when the thread ends, on that thread, and for every thread that
/// still has one when the slot is destroyed.
using EndOfThread = void(CALLBACK*)(void* value);

#ifdef _WIN32

template <class T>
class ThreadSlot {
public:
    [[nodiscard]] bool Create(EndOfThread atEnd) noexcept {
        index_ = FlsAlloc(atEnd);
        return index_ != FLS_OUT_OF_INDEXES;
    }
    void Destroy() noexcept {
        (void)FlsFree(index_);
        index_ = FLS_OUT_OF_INDEXES;
    }
    [[nodiscard]] T* Get() const noexcept {
        // The system's call clears the error code, which a caller may not have read yet.
        const DWORD error = GetLastError();
        void* const value = FlsGetValue(index_);
        SetLastError(error);
        return static_cast<T*>(value);
    }
    [[nodiscard]] bool Set(T* value) noexcept { return FlsSetValue(index_, value) != FALSE; }
    void Forget() noexcept { (void)FlsSetValue(index_, nullptr); }

private:
    DWORD index_ = FLS_OUT_OF_INDEXES;
};

#else

/// One slot of a module for each type; a static object.
template <class T>
class ThreadSlot {
public:
    /// \return false if the system has no slot left.
    [[nodiscard]] bool Create(EndOfThread atEnd) noexcept { return slots_.Create(atEnd); }
    /// Calls `atEnd` for what the threads still have; no thread may use the slot any more.
    void Destroy() noexcept { slots_.Destroy(); }

    /// This thread's pointer; null until it is set.
    [[nodiscard]] T* Get() const noexcept { return value_; }
    /// Sets this thread's pointer from null. \return false, with null kept, if memory runs out.
    [[nodiscard]] bool Set(T* value) noexcept {
        if (!slots_.Note(value)) return false;
        value_ = value;
        return true;
    }
    /// For the end-of-thread call: this thread's pointer is null again.
    void Forget() noexcept { value_ = nullptr; }

private:
    // A module that is loaded later reaches it without a call, too.
    [[gnu::tls_model("initial-exec")]] static inline constinit thread_local T* value_ = nullptr;
    ThreadSlots slots_;
};

#endif

}  // namespace platform
