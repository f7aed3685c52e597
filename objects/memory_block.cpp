#include <cstring>

#include "objects/value_objects.h"

namespace AUX {

namespace {

constexpr LONGLONG kUnit = 1024;
constexpr LONGLONG kMostBytes = 0x7FFFFFFFFFFFFFFF;

std::size_t ToSize(LONGLONG bytes) noexcept { return static_cast<std::size_t>(bytes); }

}  // namespace

MemoryBlock::~MemoryBlock() { Free(data); }

bool MemoryBlock::Reallocate(LONGLONG bytes) noexcept {
    if (bytes == 0) {
        Free(data);
        data = nullptr;
    } else {
        void* const block = Realloc(data, ToSize(bytes));
        if (!block) return false;
        data = static_cast<unsigned char*>(block);
    }
    capacity = bytes;
    if (size > bytes) size = bytes;
    return true;
}

HRESULT MemoryBlock::GetData(void** bytes) noexcept { return Give(bytes, data); }
HRESULT MemoryBlock::GetSize(LONGLONG* bytes) noexcept { return Give(bytes, size); }
HRESULT MemoryBlock::GetCapacity(LONGLONG* bytes) noexcept { return Give(bytes, capacity); }

HRESULT MemoryBlock::SetSize(LONGLONG newSize, VARIANT_BOOL exact) noexcept {
    if (newSize < 0) return E_INVALIDARG;
    if (exact) {
        if (newSize != capacity && !Reallocate(newSize)) return E_OUTOFMEMORY;
    } else if (const HRESULT result = Reserve(newSize); FAILED(result)) {
        return result;
    }
    if (newSize > size) std::memset(data + size, 0, ToSize(newSize - size));
    size = newSize;
    return S_OK;
}

HRESULT MemoryBlock::Compact() noexcept {
    return size == capacity || Reallocate(size) ? S_OK : E_OUTOFMEMORY;
}

HRESULT MemoryBlock::Clear() noexcept {
    size = 0;
    return S_OK;
}

HRESULT MemoryBlock::Append(const void* bytes, LONGLONG length) noexcept {
    return WriteAt(size, bytes, length);
}

HRESULT MemoryBlock::Assign(const void* bytes, LONGLONG length) noexcept {
    if (length < 0) return E_INVALIDARG;
    if (!bytes || length == 0) return S_OK;
    if (const HRESULT result = WriteAt(0, bytes, length); FAILED(result)) return result;
    size = length;
    return S_OK;
}

HRESULT MemoryBlock::Reserve(LONGLONG bytes) noexcept {
    if (bytes < 0) return E_INVALIDARG;
    if (bytes <= capacity) return S_OK;
    if (bytes > kMostBytes - kUnit) return E_OUTOFMEMORY;
    return Reallocate((bytes + kUnit - 1) / kUnit * kUnit) ? S_OK : E_OUTOFMEMORY;
}

HRESULT MemoryBlock::ReserveMore(LONGLONG by) noexcept {
    if (by < 0) return E_INVALIDARG;
    return by > kMostBytes - size ? E_OUTOFMEMORY : Reserve(size + by);
}

HRESULT MemoryBlock::ReadAt(LONGLONG offset, void* buffer, LONGLONG length,
                            LONGLONG* read) noexcept {
    if (!read) return E_POINTER;
    *read = 0;
    if (offset < 0 || !buffer || length < 1) return E_INVALIDARG;
    if (offset >= size) return S_FALSE;
    *read = length < size - offset ? length : size - offset;
    std::memcpy(buffer, data + offset, ToSize(*read));
    return S_OK;
}

HRESULT MemoryBlock::WriteAt(LONGLONG offset, const void* bytes, LONGLONG length) noexcept {
    if (offset < 0 || !bytes || length < 1) return E_INVALIDARG;
    if (length > kMostBytes - offset) return E_OUTOFMEMORY;
    // The bytes may be our own, and growing moves them.
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t from = reinterpret_cast<std::uintptr_t>(bytes);
    const bool isOwn = data && from >= start && from - start < ToSize(capacity);
    if (const HRESULT result = Reserve(offset + length); FAILED(result)) return result;
    if (isOwn) bytes = data + (from - start);
    // First the bytes, which may lie in the gap that is zeroed.
    std::memmove(data + offset, bytes, ToSize(length));
    if (offset > size) std::memset(data + size, 0, ToSize(offset - size));
    if (offset + length > size) size = offset + length;
    return S_OK;
}

}  // namespace AUX
