#include "cab/library_allocator.h"

#include <new>

namespace AUX::CAB {

void ThrowOutOfMemory() { throw std::bad_alloc(); }

}  // namespace AUX::CAB
