#pragma once

#include "cab/data_container.h"
#include "foundation/array.h"

namespace AUX::CAB {

/// An ordered list of items, which it owns. A place of it may be empty, until an item is put there.
class DataArray final : public DataItem, private ContainerSource, public DataContainer {
public:
    DataArray() noexcept = default;
    ~DataArray() override;

    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    [[nodiscard]] std::uint64_t GetStamp() noexcept override { return stamp; }
    void SetStamp(std::uint64_t newStamp) noexcept override;
    [[nodiscard]] bool SetRoot(DataRoot* newRoot, bool recursive) noexcept override;
    [[nodiscard]] DataContainer* AsContainer() noexcept override { return this; }
    [[nodiscard]] DataArray* AsArray() noexcept override { return this; }
    [[nodiscard]] Kind GetType() noexcept override { return Kind::Array; }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    [[nodiscard]] bool Preload() noexcept override;
    [[nodiscard]] bool IsDefault() noexcept override;
    void SetTransientAll(bool isTransient) noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;
    void OnSpecChanged() noexcept override;

    /// Null at an empty place, too.
    [[nodiscard]] DataItem* ItemAt(std::uint32_t index) noexcept override;
    [[nodiscard]] std::uint32_t GetCount() noexcept override { return children.Count(); }
    void Clear() noexcept override;
    [[nodiscard]] bool RemoveAt(std::int64_t index) noexcept override;
    /// Inserts a new item; an index past the end, or -1, means the end.
    /// \param kind  None: the kind that the template declares.
    /// \return null if the template declares another kind, or nobody names one, or memory ran out.
    [[nodiscard]] virtual DataItem* InsertAt(std::int64_t index, Kind kind) noexcept;

    /// The element at an index. An empty place gets one, and past the end one is added at the end;
    /// if `kind` is not None and the element is of another kind, a new one takes its place.
    /// \return as InsertAt.
    [[nodiscard]] DataItem* ElementAt(std::uint32_t index, Kind kind) noexcept;
    /// Adds empty places up to a count. \return false, with nothing added, when memory runs out.
    [[nodiscard]] bool GrowTo(std::uint32_t count) noexcept;
    /// Deletes a run of elements; `first` -1 means the last one.
    /// \return false, with nothing removed, if the run does not lie inside the array.
    [[nodiscard]] bool RemoveRange(std::int64_t first, std::uint32_t count) noexcept;
    /// Moves a run of elements to before the element that is at `to` now; the count means the end.
    /// A run of none, or a place inside the run, changes nothing.
    /// \return false if the run or the place does not lie inside the array.
    [[nodiscard]] bool Move(std::int64_t first, std::int64_t to, std::int64_t count) noexcept;
    /// Deletes a child, undoing its addition or the filling of an empty place: no flags are set.
    void DropAt(std::uint32_t index) noexcept;
    void EmptyAt(std::uint32_t index) noexcept;

    /// What the template declares of each element; null if nothing.
    [[nodiscard]] const ItemSpec* ElementSpec() const noexcept { return elementSpec; }
    /// Makes an item that can become an element of this array. \return null as InsertAt.
    [[nodiscard]] std::unique_ptr<DataItem> NewElement(Kind kind) noexcept;
    /// Replaces all elements; the array owns those of the list then, which becomes empty.
    void SetElements(Array<DataItem*>& list) noexcept { Take(list); }

protected:
    [[nodiscard]] bool ApplySpec() noexcept override;

private:
    [[nodiscard]] std::unique_ptr<DataItem> MakeElement(Kind kind) noexcept;
    [[nodiscard]] bool CopyInto(Array<DataItem*>& list, DataArray& from, bool withFlags) noexcept;
    void Take(Array<DataItem*>& list) noexcept;

    Array<DataItem*> children;
    std::uint64_t stamp = 0;
    const ItemSpec* elementSpec = nullptr;
};

}  // namespace AUX::CAB
