#include "capture/attributes.h"

#include <algorithm>

#include "capture/characters.h"

namespace {

// The place behind the name's first match outside quotes, or null.
const WCHAR* FindName(const WCHAR* at, const WCHAR* end, const WCHAR* name,
                      std::size_t nameLength) noexcept {
    std::size_t matched = 0;
    while (static_cast<std::size_t>(end - at) >= nameLength - matched) {
        if (IsQuote(*at)) {
            at = std::find(at + 1, end, *at);
            if (at == end) return nullptr;
            matched = 0;
        } else if (ToLowerAscii(*at) != ToLowerAscii(name[matched])) {
            matched = 0;
        } else if (++matched == nameLength) {
            return at + 1;
        }
        ++at;
    }
    return nullptr;
}

}  // namespace

std::optional<AUX::WStringView> FindAttribute(const WCHAR* begin, const WCHAR* end,
                                              const WCHAR* name, std::size_t nameLength) noexcept {
    if (nameLength == 0) return std::nullopt;
    const WCHAR* at = FindName(begin, end, name, nameLength);
    if (!at) return std::nullopt;
    at = std::find_if_not(at, end, IsBlank);
    if (at == end || *at != TEXT('=')) return std::nullopt;
    at = std::find_if_not(at + 1, end, IsBlank);
    at = std::find_if(at, end, [](WCHAR unit) { return IsQuote(unit) || unit == TEXT('='); });
    if (at == end || *at == TEXT('=')) return std::nullopt;
    const WCHAR* const start = at + 1;
    const WCHAR* const close = std::find(start, end, *at);
    if (close == end) return std::nullopt;
    return AUX::WStringView(start, static_cast<std::size_t>(close - start));
}

void ReplaceQuotedValue(TextSplicer& splicer, const WCHAR* valueStart, std::size_t valueLength,
                        AUX::WStringView newText) noexcept {
    splicer.CopyUpTo(valueStart - 1);
    splicer.Append(TEXT("\""));
    splicer.AppendEncoded(newText);
    splicer.Append(TEXT("\""));
    splicer.SkipTo(valueStart + valueLength + 1);
}
