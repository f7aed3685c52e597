#include "platform/posix/kernel_object.h"

#include <cstdlib>
#include <mutex>

#include "platform/handles.h"
#include "platform/posix/last_error.h"

namespace platform {
namespace {

// A handle is (generation << 24 | slot + 1) << 2: never null, never INVALID_HANDLE_VALUE, a
// multiple of four as on Windows. The generation tells a slot's present object from an earlier one.
constexpr unsigned kSlotBits = 24;
constexpr unsigned kTagBits = 2;
constexpr UINT_PTR kSlotMask = (UINT_PTR{1} << kSlotBits) - 1;
constexpr std::uint32_t kNoSlot = 0xFFFFFFFF;

struct Slot {
    KernelObject* object;
    std::uint32_t generation;
    std::uint32_t nextFree;
};

class HandleTable {
public:
    HANDLE Add(KernelObject* object) noexcept {
        const std::lock_guard lock(mutex_);
        if (firstFree_ == kNoSlot && !Grow()) return nullptr;
        const std::uint32_t index = firstFree_;
        Slot& slot = slots_[index];
        firstFree_ = slot.nextFree;
        slot.object = object;
        const UINT_PTR value = UINT_PTR{slot.generation} << kSlotBits | (index + 1);
        return reinterpret_cast<HANDLE>(value << kTagBits);
    }

    KernelObject* Find(HANDLE handle, KernelObjectKind kind) noexcept {
        const std::lock_guard lock(mutex_);
        const Slot* slot = SlotOf(handle);
        if (!slot || slot->object->Kind() != kind) return nullptr;
        slot->object->AddRef();
        return slot->object;
    }

    /// Gives the table's reference to the caller; a null kind is any kind that CloseHandle takes.
    KernelObject* Remove(HANDLE handle, const KernelObjectKind* kind) noexcept {
        const std::lock_guard lock(mutex_);
        Slot* slot = SlotOf(handle);
        if (!slot) return nullptr;
        KernelObject* object = slot->object;
        // A search is closed by FindClose alone.
        if (kind ? object->Kind() != *kind : object->Kind() == KernelObjectKind::Find)
            return nullptr;
        slot->object = nullptr;
        ++slot->generation;
        slot->nextFree = firstFree_;
        firstFree_ = static_cast<std::uint32_t>(slot - slots_);
        return object;
    }

private:
    Slot* SlotOf(HANDLE handle) noexcept {
        const auto value = reinterpret_cast<UINT_PTR>(handle);
        const UINT_PTR index = (value >> kTagBits & kSlotMask) - 1;  // slot 0 wraps: out of range
        if (value & ((1u << kTagBits) - 1) || index >= count_) return nullptr;
        Slot& slot = slots_[index];
        return slot.object && slot.generation == value >> kTagBits >> kSlotBits ? &slot : nullptr;
    }

    bool Grow() noexcept {
        const std::uint32_t count = count_ ? count_ * 2 : 64;
        if (count > kSlotMask) return false;
        auto* slots = static_cast<Slot*>(std::realloc(slots_, count * sizeof(Slot)));
        if (!slots) return false;
        slots_ = slots;
        for (std::uint32_t i = count; i-- > count_;) {
            slots_[i] = {nullptr, 0, firstFree_};
            firstFree_ = i;
        }
        count_ = count;
        return true;
    }

    std::mutex mutex_;
    Slot* slots_ = nullptr;
    std::uint32_t count_ = 0;
    std::uint32_t firstFree_ = kNoSlot;
};

// Never destroyed: handles may be closed while the process ends.
HandleTable& Table() noexcept {
    static HandleTable& table = *new HandleTable;
    return table;
}

BOOL ReleaseClosed(KernelObject* object) noexcept {
    if (!object) return Fail(ERROR_INVALID_HANDLE);
    object->Release();
    return TRUE;
}

}  // namespace

HANDLE OpenHandle(KernelObject* object) noexcept {
    const HANDLE handle = object ? Table().Add(object) : nullptr;
    if (!handle) {
        if (object) object->Release();
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return handle;
}

KernelObject* ReferenceObject(HANDLE handle, KernelObjectKind kind) noexcept {
    KernelObject* object = Table().Find(handle, kind);
    if (!object) SetLastError(ERROR_INVALID_HANDLE);
    return object;
}

BOOL CloseHandleOfKind(HANDLE handle, KernelObjectKind kind) noexcept {
    return ReleaseClosed(Table().Remove(handle, &kind));
}

}  // namespace platform

BOOL CloseHandle(HANDLE handle) noexcept {
    return platform::ReleaseClosed(platform::Table().Remove(handle, nullptr));
}
