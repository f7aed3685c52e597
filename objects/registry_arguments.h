#pragma once

#include "cab/registry_save.h"
#include "platform/registry.h"

/// How the faces of bags and items name registry keys.
namespace AUX {

/// The bits of SaveRegistryFlags.
inline constexpr LONG kSaveChangesOnly = 1;
inline constexpr LONG kSaveTrustingStamps = 2;

/// A key's handle as a number of automation. The handles of the roots are 32-bit numbers below 0,
/// which a script may well write as unsigned ones.
[[nodiscard]] inline HKEY KeyOf(LONGLONG key) noexcept {
    constexpr LONGLONG kFirstRoot = 0x80000000;
    if (key >= kFirstRoot && key < kFirstRoot + 16) key = static_cast<std::int32_t>(key);
    return reinterpret_cast<HKEY>(static_cast<std::intptr_t>(key));
}

[[nodiscard]] inline HRESULT SaveItem(CAB::DataItem& item, LPCWSTR path, LONGLONG key,
                                      LONG flags) noexcept {
    return CAB::SaveToRegistry(item, KeyOf(key), path, (flags & kSaveChangesOnly) != 0,
                               (flags & kSaveTrustingStamps) != 0);
}

}  // namespace AUX
