#include "foundation/array.h"

#include <cstring>

namespace AUX::array_detail {
namespace {

constexpr std::uint64_t kMaxCount = 0xFFFFFFFF;

std::uint64_t NewCapacity(std::uint32_t capacity, std::uint32_t total) noexcept {
    const std::uint64_t grown = capacity < 16 ? 0 : std::uint64_t{capacity} + capacity / 2;
    if (grown >= total && grown <= kMaxCount) return grown;
    const std::uint64_t rounded = (std::uint64_t{total} + 3) & ~std::uint64_t{3};
    return rounded < kMaxCount ? rounded : kMaxCount;
}

}  // namespace

bool Grow(void*& data, std::uint32_t count, std::uint32_t& capacity, std::size_t elementSize,
          std::uint32_t total) noexcept {
    const std::uint64_t newCapacity = NewCapacity(capacity, total);
    if (newCapacity > kMaxRequest / elementSize) return false;
    const std::size_t newSize = static_cast<std::size_t>(newCapacity) * elementSize;
    void* block = Resize(data, newSize);
    if (!block) {
        // The block may be unable to change where it lies while memory is left elsewhere.
        block = Alloc(newSize);
        if (!block) return false;
        if (count) std::memcpy(block, data, count * elementSize);
        Free(data);
    }
    data = block;
    capacity = static_cast<std::uint32_t>(newCapacity);
    return true;
}

void OpenGap(void* data, std::uint32_t count, std::size_t elementSize,
             std::uint32_t index) noexcept {
    char* const place = static_cast<char*>(data) + index * elementSize;
    std::memmove(place + elementSize, place, (count - index) * elementSize);
}

void CloseGap(void* data, std::uint32_t count, std::size_t elementSize,
              std::uint32_t index) noexcept {
    char* const place = static_cast<char*>(data) + index * elementSize;
    std::memmove(place, place + elementSize, (count - index) * elementSize);
}

}  // namespace AUX::array_detail
