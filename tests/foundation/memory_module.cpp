#include "foundation/memory.h"
#include "foundation/memory_check.h"
#include "platform/base.h"

/// A module with a library of its own in it.

namespace {

// Counted among the process's blocks for good if the allocator ends before it is destroyed.
struct KeptBlock {
    void* block = AUX::Alloc(24);
    ~KeptBlock() { AUX::Free(block); }
};
const KeptBlock kept;

}  // namespace

extern "C" {
QVD_EXPORT void* ModuleAlloc(std::size_t size) { return AUX::Alloc(size); }
QVD_EXPORT void* ModuleResize(void* block, std::size_t size) { return AUX::Resize(block, size); }
QVD_EXPORT void ModuleFree(void* block) { AUX::Free(block); }
QVD_EXPORT unsigned ModuleRegionCount() { return AUX::RegionCount(); }
}
