#pragma once

#include "platform/com.h"

/// The class that browsers make, and what belongs to it.
inline constexpr CLSID kAddinClassId = {
    0x5E1D7B20, 0x6C43, 0x4A9E, {0x9D, 0x17, 0x3B, 0x8C, 0x2F, 0x60, 0xA1, 0xD4}};
/// The root of the objects that the library offers to hosts. It isn't registered: a host that loads
/// the module asks DllGetClassObject for it.
inline constexpr CLSID kRootClassId = {
    0x6B4D2F00, 0x93C7, 0x4E18, {0xA5, 0xD1, 0x0F, 0x7C, 0x3B, 0x92, 0x6E, 0x48}};
inline constexpr GUID kTypeLibraryId = {
    0xC17A04E2, 0x2B9D, 0x4F03, {0x8E, 0x6A, 0x71, 0xD0, 0x5C, 0x3E, 0x9B, 0x18}};
inline constexpr WCHAR kAddinClassText[] = TEXT("{5E1D7B20-6C43-4A9E-9D17-3B8C2F60A1D4}");
inline constexpr WCHAR kApplicationIdText[] = TEXT("{98F3E6B1-44C7-4D2A-B05E-1E7A6D2C4F30}");
