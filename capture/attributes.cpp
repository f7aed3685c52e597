#include "capture/attributes.h"

#include "capture/characters.h"
#include "capture/entities.h"
#include "capture/search_kernels.h"

namespace {

constexpr AUX::WStringView kQuote = TEXT("\"");

const WCHAR* FindQuote(const WCHAR* at, const WCHAR* end, WCHAR quote) noexcept {
    return FastestKernels().findUnit(at, end, quote);
}

// The place behind the name's first match outside quotes, or null.
const WCHAR* FindName(const WCHAR* at, const WCHAR* end, const WCHAR* name,
                      std::size_t nameLength) noexcept {
    const WCHAR first = ToLowerAscii(*name);
    for (; static_cast<std::size_t>(end - at) >= nameLength; ++at) {
        if (ToLowerAscii(*at) == first) {
            std::size_t matched = 1;
            while (matched < nameLength && IsSameIgnoringCase(at[matched], name[matched])) {
                ++matched;
            }
            at += matched;
            if (matched == nameLength) return at;
        }
        if (!IsQuote(*at)) continue;
        at = FindQuote(at + 1, end, *at);
        if (at == end) return nullptr;
    }
    return nullptr;
}

const WCHAR* SkipBlanks(const WCHAR* at, const WCHAR* end) noexcept {
    while (at != end && IsBlank(*at)) ++at;
    return at;
}

}  // namespace

std::optional<AUX::WStringView> FindAttribute(const WCHAR* begin, const WCHAR* end,
                                              const WCHAR* name, std::size_t nameLength) noexcept {
    if (nameLength == 0) return std::nullopt;
    const WCHAR* at = FindName(begin, end, name, nameLength);
    if (!at) return std::nullopt;
    at = SkipBlanks(at, end);
    if (at == end || *at != TEXT('=')) return std::nullopt;
    at = SkipBlanks(at + 1, end);
    while (at != end && !IsQuote(*at) && *at != TEXT('=')) ++at;
    if (at == end || *at == TEXT('=')) return std::nullopt;
    const WCHAR* const start = at + 1;
    const WCHAR* const close = FindQuote(start, end, *at);
    if (close == end) return std::nullopt;
    return AUX::WStringView(start, static_cast<std::size_t>(close - start));
}

void ReplaceQuotedValue(TextSplicer& splicer, const WCHAR* valueStart, std::size_t valueLength,
                        AUX::WStringView newText) noexcept {
    splicer.CopyUpTo(valueStart - 1);
    splicer.Append(kQuote);
    AppendEncoded(splicer, newText);
    splicer.Append(kQuote);
    splicer.SkipTo(valueStart + valueLength + 1);
}
