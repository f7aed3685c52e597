#pragma once

#include <span>
#include <variant>

#include "settings/setting_field.h"

/// What the registry keeps of a ConversionSettings: one row a value, in the order in which they
/// are loaded and saved. The record must have the shared record that a row's field lies in.

/// REG_DWORD; saved as 0 or 1, any value but 0 is true.
struct FlagForm {
    SettingField<bool> field;
    bool initial;
};
/// REG_DWORD, taken as it is.
struct NumberForm {
    SettingField<std::uint32_t> field;
    std::uint32_t initial;
};
/// REG_DWORD in thousandths of a point; under its old name in tenths, and only read.
struct LengthForm {
    SettingField<double> field;
    double initial;
    const WCHAR* legacyName;
};
/// REG_SZ; REG_EXPAND_SZ is read too, and not expanded.
struct TextForm {
    SettingField<AUX::WString> field;
    const WCHAR* initial;
};
/// REG_BINARY with a password text; empty by default.
struct PasswordForm {
    SettingField<AUX::WString> field;
};

enum class SettingOwner { Page, RunApp, Security };

struct SettingRow {
    const WCHAR* name;
    SettingOwner owner;
    std::variant<FlagForm, NumberForm, LengthForm, TextForm, PasswordForm> form;
};

[[nodiscard]] std::span<const SettingRow> SettingRows() noexcept;

/// Lets std::visit choose among lambdas, one for each form.
template <class... Visitors>
struct SettingVisitor : Visitors... {
    using Visitors::operator()...;
};
template <class... Visitors>
SettingVisitor(Visitors...) -> SettingVisitor<Visitors...>;
