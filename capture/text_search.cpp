#include "capture/text_search.h"

#include <algorithm>

#include "capture/characters.h"

namespace {

constexpr char Fold(char unit) noexcept { return unit >= 'a' && unit <= 'z' ? 0x20 : 0; }

}  // namespace

bool StartsIgnoringCase(const WCHAR* at, const WCHAR* end, AUX::WStringView prefix) noexcept {
    return static_cast<std::size_t>(end - at) >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), at,
                      [](WCHAR a, WCHAR b) { return a == ToLowerAscii(b); });
}

const WCHAR* FindText(const SearchText& sought, const WCHAR* from, const WCHAR* end) noexcept {
    const char first = static_cast<char>(sought.text.front());
    const char second = static_cast<char>(sought.text[sought.distance]);
    const CharacterPair pair = {first, Fold(first), second, Fold(second), sought.distance};
    const SearchKernels& kernels = FastestKernels();
    for (; (from = kernels.findPair(from, end, pair)); ++from) {
        if (StartsIgnoringCase(from, end, sought.text)) return from;
    }
    return nullptr;
}
