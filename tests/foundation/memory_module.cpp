#include "foundation/memory.h"
#include "foundation/memory_check.h"
#include "platform/base.h"

/// A module with a library of its own in it.

extern "C" {
QVD_EXPORT void* ModuleAlloc(std::size_t size) { return AUX::Alloc(size); }
QVD_EXPORT void* ModuleResize(void* block, std::size_t size) { return AUX::Resize(block, size); }
QVD_EXPORT void ModuleFree(void* block) { AUX::Free(block); }
QVD_EXPORT unsigned ModuleRegionCount() { return AUX::RegionCount(); }
}
