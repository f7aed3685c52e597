#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "foundation/memory.h"

namespace AUX {

namespace array_detail {

/// Makes room for `total` elements of `elementSize` bytes by the growth rule of Array.
/// \return false, with nothing changed, when memory runs out.
bool Grow(void*& data, std::uint32_t count, std::uint32_t& capacity, std::size_t elementSize,
          std::uint32_t total) noexcept;

/// Opens a gap of one element at `index`; there is room for it.
void OpenGap(void* data, std::uint32_t count, std::size_t elementSize,
             std::uint32_t index) noexcept;

/// Closes the gap of one element at `index`, behind which `count - index` elements follow.
void CloseGap(void* data, std::uint32_t count, std::size_t elementSize,
              std::uint32_t index) noexcept;

}  // namespace array_detail

/// A growing row of plain elements, which move as raw bytes. Owns its block, not what elements
/// that are pointers point to. Movable, not copyable; may be moved and zeroed as raw bytes. Not
/// thread-safe, though any thread may free it. A false result means that memory ran out (or that
/// 32 bits no longer count the elements), and nothing has changed.
template <class T>
class Array {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
    static_assert(alignof(T) <= 16);

public:
    constexpr Array() noexcept = default;
    Array(Array&& other) noexcept
        : data(std::exchange(other.data, nullptr)),
          count(std::exchange(other.count, 0)),
          capacity(std::exchange(other.capacity, 0)) {}
    Array& operator=(Array&& other) noexcept {
        Array taken(std::move(other));
        std::swap(data, taken.data);
        std::swap(count, taken.count);
        std::swap(capacity, taken.capacity);
        return *this;
    }
    ~Array() { Free(); }

    /// Makes room for `total` elements. Capacities run 4, 8, 12, 16, 24, 36, 54, 81 and on when
    /// elements are added one by one: one and a half times from 16 on, multiples of 4 below.
    [[nodiscard]] bool EnsureCapacity(std::uint32_t total) noexcept {
        return total <= capacity || array_detail::Grow(data, count, capacity, sizeof(T), total);
    }

    /// Makes room for `extra` elements behind those in use.
    [[nodiscard]] bool Grow(std::uint32_t extra) noexcept {
        return extra <= 0xFFFFFFFF - count && EnsureCapacity(count + extra);
    }

    /// Adds an element at the end; it may be one of this array's own.
    [[nodiscard]] bool Add(const T& element) noexcept {
        const T copy = element;
        if (count == capacity && !Grow(1)) return false;
        Data()[count++] = copy;
        return true;
    }

    /// Inserts an element, moving the rest up; `index` is at most the count, or nothing happens and
    /// the result is false.
    [[nodiscard]] bool InsertAt(std::uint32_t index, const T& element) noexcept {
        assert(index <= count);
        const T copy = element;
        if (index > count || !Grow(1)) return false;
        array_detail::OpenGap(data, count, sizeof(T), index);
        Data()[index] = copy;
        ++count;
        return true;
    }

    /// Takes an element out, moving the rest down; the block stays.
    void RemoveAt(std::uint32_t index) noexcept {
        assert(index < count);
        --count;
        array_detail::CloseGap(data, count, sizeof(T), index);
    }

    [[nodiscard]] T* Data() noexcept { return static_cast<T*>(data); }
    [[nodiscard]] const T* Data() const noexcept { return static_cast<const T*>(data); }
    [[nodiscard]] std::uint32_t Count() const noexcept { return count; }
    [[nodiscard]] std::uint32_t Capacity() const noexcept { return capacity; }
    [[nodiscard]] bool IsEmpty() const noexcept { return count == 0; }
    [[nodiscard]] T& operator[](std::uint32_t index) noexcept {
        assert(index < count);
        return Data()[index];
    }
    [[nodiscard]] const T& operator[](std::uint32_t index) const noexcept {
        assert(index < count);
        return Data()[index];
    }
    [[nodiscard]] T* begin() noexcept { return Data(); }
    [[nodiscard]] T* end() noexcept { return Data() + count; }
    [[nodiscard]] const T* begin() const noexcept { return Data(); }
    [[nodiscard]] const T* end() const noexcept { return Data() + count; }

    /// Forgets the elements; the block stays.
    void Clear() noexcept { count = 0; }

    /// Forgets the elements and gives the block back.
    void Free() noexcept {
        AUX::Free(data);
        data = nullptr;
        count = 0;
        capacity = 0;
    }

private:
    void* data = nullptr;
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
};

static_assert(sizeof(Array<int>) == 16 && std::is_standard_layout_v<Array<int>>);

}  // namespace AUX
