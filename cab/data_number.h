#pragma once

#include <cstdint>

#include "cab/data_item.h"
#include "cab/exact_number.h"

namespace AUX::CAB {

/// What an item of a number kind does: its value, the conversions, names and ranges.
///
/// Which conversions there are is one table in data_number.cpp.
template <class Value, Kind kKind>
class DataNumber : public DataItem {
public:
    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    [[nodiscard]] const WCHAR* GetValueName() noexcept override;
    const double* GetDouble(double& out) noexcept override { return Read(out); }
    const std::int64_t* GetInt64(std::int64_t& out) noexcept override { return Read(out); }
    const std::int32_t* GetInt(std::int32_t& out) noexcept override { return Read(out); }
    const bool* GetBool(bool& out) noexcept override { return Read(out); }
    [[nodiscard]] bool SetText(WStringView text) noexcept override;
    [[nodiscard]] bool SetString(WString& text, bool swap) noexcept override;
    [[nodiscard]] bool SetDouble(const double* from, std::uint32_t) noexcept override {
        return Write(from);
    }
    [[nodiscard]] bool SetInt64(const std::int64_t* from, std::uint32_t) noexcept override {
        return Write(from);
    }
    [[nodiscard]] bool SetInt(const std::int32_t* from, std::uint32_t) noexcept override {
        return Write(from);
    }
    [[nodiscard]] bool SetBool(const bool* from, std::uint32_t) noexcept override {
        return Write(from);
    }
    [[nodiscard]] Kind GetType() noexcept override { return kKind; }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    [[nodiscard]] bool IsDefault() noexcept override;
    [[nodiscard]] Status GetProtected(WString& output) noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;

protected:
    [[nodiscard]] bool ApplySpec() noexcept override { return Accepts(value); }

private:
    template <class To>
    const To* Read(To& out) noexcept;
    template <class From>
    [[nodiscard]] bool Write(const From* from) noexcept;
    [[nodiscard]] bool SetOwn(Value newValue) noexcept;
    [[nodiscard]] bool Accepts(Value newValue) noexcept;
    /// Takes the number of a name. \return whether there is such a name.
    bool SetNamed(WStringView name, bool& isSet) noexcept;
    [[nodiscard]] const ValueSpec* Values() noexcept;
    [[nodiscard]] Value Default() noexcept;

    Value value{};
};

extern template class DataNumber<bool, Kind::Bool>;
extern template class DataNumber<std::int32_t, Kind::Int>;
extern template class DataNumber<std::int64_t, Kind::Int64>;
extern template class DataNumber<double, Kind::Double>;

class DataBool final : public DataNumber<bool, Kind::Bool> {};
class DataInt final : public DataNumber<std::int32_t, Kind::Int> {};
class DataInt64 final : public DataNumber<std::int64_t, Kind::Int64> {};
class DataDouble final : public DataNumber<double, Kind::Double> {};

}  // namespace AUX::CAB
