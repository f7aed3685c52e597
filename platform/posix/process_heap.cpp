#include <cstdlib>
#include <cstring>

#include "platform/memory.h"
#include "platform/posix/faults.h"

namespace {

constinit char processHeap = 0;

}  // namespace

HANDLE GetProcessHeap() noexcept { return &processHeap; }

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size) noexcept {
    if (heap != &processHeap || platform::InjectFault("HeapAlloc")) return nullptr;
    return flags & HEAP_ZERO_MEMORY ? std::calloc(1, size ? size : 1)
                                    : std::malloc(size ? size : 1);
}

LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T size) noexcept {
    if (heap != &processHeap || flags || platform::InjectFault("HeapReAlloc")) return nullptr;
    return std::realloc(block, size ? size : 1);
}

BOOL HeapFree(HANDLE heap, DWORD, LPVOID block) noexcept {
    if (heap != &processHeap) return FALSE;
    std::free(block);
    return TRUE;
}

LPVOID SecureZeroMemory(LPVOID memory, SIZE_T size) noexcept {
    explicit_bzero(memory, size);
    return memory;
}
