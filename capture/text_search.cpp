#include "capture/text_search.h"

#include <algorithm>

#include "capture/characters.h"

namespace {

constexpr WCHAR Fold(WCHAR unit) noexcept {
    return unit >= TEXT('a') && unit <= TEXT('z') ? WCHAR{0x20} : WCHAR{0};
}

}  // namespace

bool StartsIgnoringCase(const WCHAR* at, const WCHAR* end, AUX::WStringView prefix) noexcept {
    return static_cast<std::size_t>(end - at) >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), at,
                      [](WCHAR a, WCHAR b) { return a == ToLowerAscii(b); });
}

const WCHAR* FindText(const SearchText& sought, const WCHAR* from, const WCHAR* end) noexcept {
    const WCHAR first = sought.text.front();
    const WCHAR second = sought.text[sought.distance];
    const CharacterPair pair = {first, Fold(first), second, Fold(second), sought.distance};
    const SearchKernels& kernels = FastestKernels();
    for (; (from = kernels.findPair(from, end, pair)); ++from) {
        if (StartsIgnoringCase(from, end, sought.text)) return from;
    }
    return nullptr;
}
