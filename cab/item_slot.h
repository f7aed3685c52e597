#pragma once

#include "cab/data_array.h"
#include "cab/data_dictionary.h"

namespace AUX::CAB {

/// The place of one item while a text is read. Borrows all that it is given.
class ItemSlot {
public:
    ItemSlot(const ItemSlot&) = delete;
    ItemSlot& operator=(const ItemSlot&) = delete;

    /// The item that stands there, or null.
    [[nodiscard]] virtual DataItem* Find() noexcept = 0;
    /// Makes sure that an item stands there. \return whether one does, of whatever kind.
    [[nodiscard]] virtual bool Ensure(Kind kind) noexcept = 0;
    /// The kind that a value at this place has; None for any.
    [[nodiscard]] virtual Kind ExpectedKind() noexcept = 0;

protected:
    ItemSlot() noexcept = default;
    ~ItemSlot() = default;

    DataItem* item = nullptr;
};

/// The root item of a bag.
class RootSlot final : public ItemSlot {
public:
    explicit RootSlot(DataItem& root) noexcept { item = &root; }
    [[nodiscard]] DataItem* Find() noexcept override { return item; }
    /// False: it makes nothing.
    [[nodiscard]] bool Ensure(Kind) noexcept override { return false; }
    [[nodiscard]] Kind ExpectedKind() noexcept override { return item->GetType(); }
};

/// A key of a dictionary.
class KeySlot final : public ItemSlot {
public:
    KeySlot(DataDictionary& dictionary, WStringView key) noexcept
        : key_(key), dictionary_(&dictionary) {}
    [[nodiscard]] DataItem* Find() noexcept override;
    [[nodiscard]] bool Ensure(Kind kind) noexcept override;
    [[nodiscard]] Kind ExpectedKind() noexcept override;

private:
    WStringView key_;
    DataDictionary* dictionary_;
};

/// An index of an array. An empty place is filled; past the end an item is added at the end.
class IndexSlot final : public ItemSlot {
public:
    IndexSlot(DataArray& array, std::uint32_t index) noexcept : array_(&array), index_(index) {}
    [[nodiscard]] DataItem* Find() noexcept override;
    [[nodiscard]] bool Ensure(Kind kind) noexcept override;
    [[nodiscard]] Kind ExpectedKind() noexcept override;

private:
    DataArray* array_;
    std::uint32_t index_;
};

}  // namespace AUX::CAB
