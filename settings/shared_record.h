#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/allocated.h"

/// Base of a record that several owners share. The count is atomic, so any thread may drop its
/// reference; the fields have no lock. Made by SharedRef::Make.
class SharedRecord : public AUX::Allocated {
public:
    SharedRecord(const SharedRecord&) = delete;
    SharedRecord& operator=(const SharedRecord&) = delete;

    void AddRef() noexcept { refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept {
        // Acquire and release: the last holder must see what all others wrote.
        if (refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

protected:
    SharedRecord() noexcept = default;
    virtual ~SharedRecord() = default;

private:
    std::atomic<std::uint32_t> refCount{1};
};
