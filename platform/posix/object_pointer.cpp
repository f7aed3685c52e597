#include "platform/object_pointer.h"

#include <cstdint>
#include <link.h>

namespace platform {
namespace {

struct Search {
    std::uintptr_t place;
    unsigned flags;  // what the segment must allow
};

int HoldsPlace(dl_phdr_info* module, std::size_t, void* data) {
    const auto& search = *static_cast<const Search*>(data);
    for (int i = 0; i < module->dlpi_phnum; ++i) {
        const auto& segment = module->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & search.flags) != search.flags) continue;
        const std::uintptr_t offset = search.place - (module->dlpi_addr + segment.p_vaddr);
        if (offset < segment.p_memsz && segment.p_memsz - offset >= sizeof(void*)) return 1;
    }
    return 0;
}

bool IsInModule(const void* place, unsigned flags) noexcept {
    Search search{reinterpret_cast<std::uintptr_t>(place), flags};
    return dl_iterate_phdr(HoldsPlace, &search) != 0;
}

// A text may end within the word; the rest of the aligned word is there all the same.
__attribute__((no_sanitize("address", "thread"))) const void* const* FirstWord(
    const void* pointer) {
    return *static_cast<const void* const* const*>(pointer);
}

}  // namespace

bool IsObjectPointer(const void* pointer) noexcept {
    if (!pointer || reinterpret_cast<std::uintptr_t>(pointer) % sizeof(void*)) return false;
    const void* const* table = FirstWord(pointer);
    if (reinterpret_cast<std::uintptr_t>(table) % sizeof(void*)) return false;
    for (int i = 0; i < 3; ++i) {
        if (!IsInModule(&table[i], PF_R) || !IsInModule(table[i], PF_X)) return false;
    }
    return true;
}

}  // namespace platform
