#pragma once

#include <type_traits>

#include "settings/conversion_settings.h"

/// Where a field lies in a ConversionSettings, in itself or in a record that it shares: what a
/// table of fields holds. The record must have the shared record that the field lies in.
template <class T>
using SettingField = T& (*)(ConversionSettings&) noexcept;

template <class Member>
struct SettingMember;
template <class OwnerType, class FieldType>
struct SettingMember<FieldType OwnerType::*> {
    using Owner = OwnerType;
};

/// The SettingField of a member: SettingFieldOf<&SecuritySettings::Enabled>.
template <auto Member>
auto& SettingFieldOf(ConversionSettings& settings) noexcept {
    using Owner = typename SettingMember<decltype(Member)>::Owner;
    if constexpr (std::is_same_v<Owner, SecuritySettings>) {
        return (*settings.Security).*Member;
    } else if constexpr (std::is_same_v<Owner, RunAppSettings>) {
        return (*settings.RunApp).*Member;
    } else {
        return settings.*Member;
    }
}
