#include "driver/clean_title.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kMaxUnits = 41;
constexpr AUX::WStringView kRemoved = TEXT("|\\?*<\":>+[]/-.");
static_assert(kRemoved.size() == 14);

}  // namespace

void CleanTitle(const WCHAR* title, std::uint32_t length, AUX::WString& output) noexcept {
    WCHAR name[kMaxUnits];
    const AUX::WStringView start(title, std::min(length, kMaxUnits));
    const WCHAR* const end = std::copy_if(start.begin(), start.end(), name, [](WCHAR character) {
        return kRemoved.find(character) == AUX::WStringView::npos;
    });
    if (!output.Assign(name, end - name)) output.Clear();
}
