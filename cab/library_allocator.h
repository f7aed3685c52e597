#pragma once

#include <string>
#include <vector>

#include "foundation/memory.h"
#include "foundation/wstring_view.h"

namespace AUX::CAB {

/// Throws std::bad_alloc. In a source of its own: whoever only holds such a container, and adds
/// nothing, may be compiled without exceptions.
[[noreturn]] void ThrowOutOfMemory();

/// As AUX::Alloc. \throws std::bad_alloc
[[nodiscard]] inline void* AllocateOrThrow(std::size_t bytes) {
    void* const block = Alloc(bytes);
    if (!block) ThrowOutOfMemory();
    return block;
}

/// Gives the standard's containers their memory from AUX::Alloc; they throw std::bad_alloc when it
/// runs out.
template <class T>
struct LibraryAllocator {
    using value_type = T;

    LibraryAllocator() noexcept = default;
    template <class Other>
    LibraryAllocator(const LibraryAllocator<Other>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(T)) ThrowOutOfMemory();
        return static_cast<T*>(AllocateOrThrow(count * sizeof(T)));
    }
    void deallocate(T* block, std::size_t) noexcept { Free(block); }

    friend bool operator==(const LibraryAllocator&, const LibraryAllocator&) = default;
};

template <class T>
using Vector = std::vector<T, LibraryAllocator<T>>;

/// A text that is a key of such a container.
class KeyText : public std::basic_string<WCHAR, std::char_traits<WCHAR>, LibraryAllocator<WCHAR>> {
public:
    using basic_string::basic_string;
    KeyText() = default;
    explicit KeyText(WStringView text) : basic_string(text.data(), text.size()) {}
    operator WStringView() const noexcept { return {data(), size()}; }
};

/// Orders such texts, and views, by their units.
struct KeyTextOrder {
    using is_transparent = void;
    bool operator()(WStringView a, WStringView b) const noexcept { return a < b; }
};

}  // namespace AUX::CAB
