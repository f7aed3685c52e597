#pragma once

#include <cstddef>
#include <new>

#include "foundation/memory.h"

namespace AUX {

/// Lets a std::unique_ptr own a block of AUX::Alloc.
struct FreeBlock {
    void operator()(void* block) const noexcept { Free(block); }
};

/// Base of the objects that live in blocks of AUX::Alloc: `new (std::nothrow) T` gives null when
/// memory runs out, `delete` gives the block back. There is no form that throws.
class Allocated {
public:
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
        return Alloc(size);
    }
    static void operator delete(void* block) noexcept { Free(block); }
    static void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }

protected:
    Allocated() = default;
    ~Allocated() = default;
};

}  // namespace AUX
