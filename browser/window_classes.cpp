#include "browser/window_classes.h"

#include <cstdint>

#include "foundation/module_folder.h"

namespace {

constexpr WCHAR kPrefix[] = TEXT("QuvadaBand:");
constexpr std::size_t kPrefixUnits = sizeof kPrefix / sizeof kPrefix[0] - 1;
constexpr int kAddressDigits = 16;
static_assert(kPrefixUnits + kAddressDigits < sizeof(BandClassName) / sizeof(WCHAR));

// Its address is this module's alone.
constexpr char kOwnPlace = 0;

}  // namespace

BandClassName::BandClassName() noexcept : text{} {
    WCHAR* end = text;
    for (std::size_t i = 0; i < kPrefixUnits; ++i) *end++ = kPrefix[i];
    const auto address = reinterpret_cast<std::uintptr_t>(&kOwnPlace);
    for (int shift = 4 * (kAddressDigits - 1); shift >= 0; shift -= 4) {
        *end++ = TEXT("0123456789ABCDEF")[address >> shift & 0xF];
    }
}

bool RegisterWindowClass(const WNDCLASSEXW& info) noexcept {
    return RegisterClassExW(&info) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

void UnregisterWindowClasses() noexcept {
    UnregisterClassW(kFineToolbarClass, ModuleInstance());
    UnregisterClassW(BandClassName().text, ModuleInstance());
}
