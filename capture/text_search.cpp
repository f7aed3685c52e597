#include "capture/text_search.h"

#include <algorithm>

#include "capture/characters.h"

namespace {

bool StartsIgnoringCase(const WCHAR* at, AUX::WStringView text) noexcept {
    return std::equal(text.begin(), text.end(), at,
                      [](WCHAR a, WCHAR b) { return a == ToLowerAscii(b); });
}

}  // namespace

TagPlace FindTag(const WCHAR* from, const WCHAR* end) noexcept {
    for (;;) {
        const WCHAR* const open = std::find(from, end, TEXT('<'));
        if (open == end) return {};
        const WCHAR* const tag = open + 1;
        if (end - tag >= 3 && tag[0] == TEXT('!') && tag[1] == TEXT('-') && tag[2] == TEXT('-')) {
            return {open, nullptr};
        }
        const WCHAR* const close = std::find(tag, end, TEXT('>'));
        if (close == end) return {};
        return {open, close};
    }
}

const WCHAR* FindText(const SearchText& sought, const WCHAR* from, const WCHAR* end) noexcept {
    const std::size_t length = sought.text.size();
    for (; static_cast<std::size_t>(end - from) >= length; ++from) {
        if (StartsIgnoringCase(from, sought.text)) return from;
    }
    return nullptr;
}
