#pragma once

#include <cstdint>

#include "cab/data_item.h"

namespace AUX::CAB {

/// The second face of arrays and dictionaries.
class DataContainer {
public:
    /// The child at an index, of a dictionary in the order of keys; null past the end. Borrowed.
    [[nodiscard]] virtual DataItem* ItemAt(std::uint32_t index) noexcept = 0;
    [[nodiscard]] virtual std::uint32_t GetCount() noexcept = 0;
    /// Deletes all children; sets no flags. A dictionary of a template keeps them.
    virtual void Clear() noexcept = 0;
    /// Deletes a child. In an array -1 is the last one. \return false if there is none, or the
    /// template needs it.
    [[nodiscard]] virtual bool RemoveAt(std::int64_t index) noexcept = 0;

protected:
    ~DataContainer() = default;
};

/// What a container has before its child table: whether it has been filled.
struct ContainerSource {
    /// The address of `marker` until the container is filled, then null.
    const void* source = &marker;
    std::uintptr_t marker = 0;
};

/// Whether `item` is a descendant of `top`.
[[nodiscard]] bool IsBelow(DataItem& top, DataItem& item) noexcept;

}  // namespace AUX::CAB
