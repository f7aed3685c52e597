#pragma once

#include "foundation/memory_heap.h"
#include "platform/thread_slot.h"

namespace AUX::memory {

/// This module's way to the heaps that all modules of the process share. They meet by a name made
/// from the process's id. There is one object a module; it starts before the module's other static
/// objects are made and ends after they are destroyed.
class MemManager {
public:
    /// Finds what the other modules use, or sets it up. On failure there is no root.
    void Start() noexcept;

    /// Ends this module's part; the last module of the process gives all regions back.
    void End() noexcept;

    /// Null before the start, after the end, and where the modules could not meet: all requests
    /// are served as large ones then.
    [[nodiscard]] MemRoot* Root() const noexcept { return root_; }

    /// Whether the end was reached: blocks of any kind may be gone by then.
    [[nodiscard]] bool HasEnded() const noexcept { return hasEnded_; }

    /// The calling thread's heap, or null if it has none yet.
    [[nodiscard]] MemHeap* Heap() const noexcept { return slot_.Get(); }

    /// Gives the calling thread a heap. \return null if memory runs out.
    [[nodiscard]] MemHeap* AttachThread() noexcept;

    /// Takes back a block that is not of the calling thread's heap.
    void TakeBackForeign(MemPage& page, void* block) noexcept;

private:
    static void CALLBACK OnThreadEnd(void* heap) noexcept;
    void Meet(HANDLE mapping) noexcept;
    static bool SetUp(MemShared& shared, HANDLE mapping) noexcept;
    void Release(MemHeap& heap) noexcept;
    void EndProcess() noexcept;

    MemRoot* root_ = nullptr;
    char name_[64] = {};
    HANDLE mutex_ = nullptr;
    bool hasEnded_ = false;
    platform::ThreadSlot<MemHeap> slot_;
};

/// The module's one manager, ready for requests from the very first.
extern constinit MemManager manager;
[[nodiscard]] inline MemManager& Manager() noexcept { return manager; }

}  // namespace AUX::memory
