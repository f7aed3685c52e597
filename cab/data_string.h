#pragma once

#include "cab/data_item.h"

namespace AUX::CAB {

/// A text.
class DataString final : public DataItem {
public:
    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    [[nodiscard]] const WCHAR* GetValueName() noexcept override { return value.Text(); }
    [[nodiscard]] const WString* GetString() noexcept override { return &value; }
    [[nodiscard]] bool SetText(WStringView text) noexcept override;
    [[nodiscard]] bool SetString(WString& text, bool swap) noexcept override;
    [[nodiscard]] Kind GetType() noexcept override { return Kind::String; }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    [[nodiscard]] bool IsDefault() noexcept override;
    /// \return false, with the text unchanged, when memory runs out.
    [[nodiscard]] bool Reset() noexcept override;
    [[nodiscard]] Status GetProtected(WString& output) noexcept override;
    [[nodiscard]] Status SetProtected(WStringView text) noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;

private:
    [[nodiscard]] WStringView Default() noexcept;

    WString value;
};

}  // namespace AUX::CAB
