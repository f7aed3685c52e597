#pragma once

#include "cab/data_container.h"
#include "cab/key_hints.h"

namespace AUX::CAB {

/// A sorted list of keys and items, both of which it owns. Keys have regard to case; a shorter key
/// comes before a longer one, and keys of one length are in the order of their bytes.
///
/// With a template the keys are those that it declares, always, each at its default to begin with;
/// only where it is loose keys come and go, all of one kind.
class DataDictionary final : public DataItem, private ContainerSource, public DataContainer {
public:
    DataDictionary() noexcept = default;
    ~DataDictionary() override;

    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    [[nodiscard]] std::uint64_t GetStamp() noexcept override { return stamp; }
    void SetStamp(std::uint64_t newStamp) noexcept override;
    [[nodiscard]] bool SetRoot(DataRoot* newRoot, bool recursive) noexcept override;
    [[nodiscard]] DataContainer* AsContainer() noexcept override { return this; }
    [[nodiscard]] DataDictionary* AsDictionary() noexcept override { return this; }
    [[nodiscard]] Kind GetType() noexcept override { return Kind::Dictionary; }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    [[nodiscard]] bool Preload() noexcept override;
    [[nodiscard]] bool IsDefault() noexcept override;
    void SetTransientAll(bool isTransient) noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;

    [[nodiscard]] DataItem* ItemAt(std::uint32_t index) noexcept override;
    [[nodiscard]] std::uint32_t GetCount() noexcept override { return children.Count(); }
    void Clear() noexcept override;
    [[nodiscard]] bool RemoveAt(std::int64_t index) noexcept override;
    /// The child of a key, made if there is none.
    /// \param length  UTF-16 units; negative means that the name is terminated.
    /// \param kind    None finds a child of any kind, and makes none.
    /// \return null if the child is of another kind, the template refuses, or memory ran out.
    [[nodiscard]] virtual DataItem* GetOrAdd(const WCHAR* name, std::int64_t length,
                                             Kind kind) noexcept;
    /// Resets the child of a key. \return false if there is none.
    [[nodiscard]] virtual bool ResetKey(const WCHAR* name, std::int64_t length) noexcept;

    [[nodiscard]] WStringView KeyAt(std::uint32_t index) const noexcept;
    /// The child of a key, or null; adds nothing.
    [[nodiscard]] DataItem* Find(WStringView key) noexcept;
    /// Deletes the child of a key. \return as RemoveAt.
    [[nodiscard]] bool RemoveKey(WStringView key) noexcept;
    /// Deletes the child of a key, undoing its addition: no flags are set.
    void Drop(WStringView key) noexcept;

protected:
    [[nodiscard]] bool ApplySpec() noexcept override;

private:
    using Table = Array<KeyEntry<DataItem*>>;

    [[nodiscard]] static bool Put(Table& table, WStringView key,
                                  std::unique_ptr<DataItem> item) noexcept;
    static void DeleteAll(Table& table) noexcept;
    [[nodiscard]] bool IsShaped() noexcept;
    [[nodiscard]] bool Populate() noexcept;
    [[nodiscard]] bool FillFromSpec(Table& table, const ItemSpec& own) noexcept;
    [[nodiscard]] bool FillLoose(Table& table, const ItemSpec* entry) noexcept;
    [[nodiscard]] bool Merge(WStringView key, DataItem* child, const ItemSpec* entry,
                             bool withFlags) noexcept;

    Table children;
    std::uint64_t stamp = 0;
    KeyHints hints;
};

}  // namespace AUX::CAB
