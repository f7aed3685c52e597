#pragma once

#include "cab/data_item.h"
#include "platform/com_ptr.h"

namespace AUX::CAB {

/// Keys of an object in a store.
inline constexpr WStringView kObjectKey = TEXT("$Object");
inline constexpr WStringView kClassIdKey = TEXT("$ClassID");

/// A counted interface pointer. In a store it is a dictionary that the handler of its class fills.
class DataObject final : public DataItem {
public:
    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    [[nodiscard]] IUnknown* GetObject() noexcept override { return value.Get(); }
    /// Takes a reference of its own; null is no object.
    [[nodiscard]] bool SetObject(IUnknown* object) noexcept override;
    [[nodiscard]] Kind GetType() noexcept override { return Kind::Object; }
    /// \return false if the object's class has no handler, or the handler fails.
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    [[nodiscard]] bool IsDefault() noexcept override { return GetSpec() && !value; }
    [[nodiscard]] Kind GetStoredType() noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;

    /// Makes the object from a dictionary with $Object and $ClassID.
    [[nodiscard]] bool LoadFrom(DataDictionary& stored) noexcept;
    /// Fills a dictionary with $Object and $ClassID.
    [[nodiscard]] bool SaveTo(DataDictionary& stored) noexcept;

private:
    platform::ComPtr<IUnknown> value;
};

}  // namespace AUX::CAB
