#include <cstdint>

#include "platform/memory.h"
#include "platform/object_pointer.h"

namespace platform {
namespace {

constexpr DWORD kExecutable =
    PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                            PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;

bool IsCode(const void* place) noexcept {
    MEMORY_BASIC_INFORMATION about{};
    return VirtualQuery(place, &about, sizeof about) && about.State == MEM_COMMIT &&
           about.Type == MEM_IMAGE && (about.Protect & kExecutable);
}

bool IsReadable(const void* place) noexcept {
    MEMORY_BASIC_INFORMATION about{};
    return VirtualQuery(place, &about, sizeof about) && about.State == MEM_COMMIT &&
           (about.Protect & kReadable) && !(about.Protect & PAGE_GUARD);
}

}  // namespace

bool IsObjectPointer(const void* pointer) noexcept {
    // An object is aligned, and an aligned word never crosses into a page that is not there.
    if (!pointer || reinterpret_cast<std::uintptr_t>(pointer) % sizeof(void*)) return false;
    const auto* table = *static_cast<const void* const* const*>(pointer);
    if (reinterpret_cast<std::uintptr_t>(table) % sizeof(void*)) return false;
    for (int i = 0; i < 3; ++i) {
        if (!IsReadable(&table[i]) || !IsCode(table[i])) return false;
    }
    return true;
}

}  // namespace platform
