#include "capture/entities.h"

#include <algorithm>
#include <cstring>

#include "capture/search_kernels.h"

namespace {

struct NamedCharacter {
    AUX::WStringView reference;
    WCHAR character;
};

constexpr NamedCharacter kNamed[] = {
    {TEXT("&amp;"), TEXT('&')},  {TEXT("&lt;"), TEXT('<')},    {TEXT("&gt;"), TEXT('>')},
    {TEXT("&quot;"), TEXT('"')}, {TEXT("&apos;"), TEXT('\'')},
};

constexpr std::uint32_t kLastCodePoint = 0x10FFFF;
constexpr int kNoDigit = 16;

constexpr bool IsHigh(std::uint32_t unit) noexcept { return unit - 0xD800u < 0x400; }
constexpr bool IsLow(std::uint32_t unit) noexcept { return unit - 0xDC00u < 0x400; }
constexpr bool IsSurrogate(std::uint32_t unit) noexcept { return unit - 0xD800u < 0x800; }

constexpr WCHAR Unit(std::uint32_t value) noexcept { return static_cast<WCHAR>(value); }

AUX::WStringView View(const WCHAR* text, std::int64_t length) noexcept {
    return length < 0 ? AUX::WStringView(text)
                      : AUX::WStringView(text, static_cast<std::size_t>(length));
}

constexpr int DigitValue(WCHAR unit) noexcept {
    if (unit >= TEXT('0') && unit <= TEXT('9')) return unit - TEXT('0');
    if (unit >= TEXT('a') && unit <= TEXT('f')) return unit - TEXT('a') + 10;
    if (unit >= TEXT('A') && unit <= TEXT('F')) return unit - TEXT('A') + 10;
    return kNoDigit;
}

WCHAR* PutCodePoint(std::uint32_t point, WCHAR* to) noexcept {
    if (point > kLastCodePoint || IsSurrogate(point)) return to;
    if (point < 0x10000) {
        *to++ = Unit(point);
    } else {
        *to++ = Unit(0xD7C0 + (point >> 10));
        *to++ = Unit(0xDC00 + (point & 0x3FF));
    }
    return to;
}

// A reference at the beginning of a text.
struct Reference {
    std::size_t length = 0;  // 0: there is none.
    std::uint32_t point = 0;
};

Reference ReadNumber(AUX::WStringView text) noexcept {
    const bool isHex = text.substr(2).starts_with(TEXT('x'));
    const std::uint32_t base = isHex ? 16 : 10;
    const std::size_t digits = isHex ? 3 : 2;
    std::size_t at = digits;
    std::uint32_t point = 0;
    for (; at < text.size(); ++at) {
        const std::uint32_t value = static_cast<std::uint32_t>(DigitValue(text[at]));
        if (value >= base) break;
        // Any number above the last code point will do for a larger one.
        point = std::min(point * base + value, kLastCodePoint + 1);
    }
    if (at == digits || at == text.size() || text[at] != TEXT(';')) return {};
    return {at + 1, point};
}

Reference ReadReference(AUX::WStringView text) noexcept {
    if (text.substr(1).starts_with(TEXT('#'))) return ReadNumber(text);
    for (const NamedCharacter& named : kNamed) {
        if (text.starts_with(named.reference)) return {named.reference.size(), named.character};
    }
    return {};
}

WCHAR* Put(AUX::WStringView text, WCHAR* to) noexcept {
    std::memcpy(to, text.data(), text.size() * sizeof(WCHAR));
    return to + text.size();
}

// A number above 0 as "&#N;".
class NumberText {
public:
    explicit NumberText(std::uint32_t value) noexcept {
        *--first_ = TEXT(';');
        for (; value != 0; value /= 10) *--first_ = Unit(TEXT('0') + value % 10);
        *--first_ = TEXT('#');
        *--first_ = TEXT('&');
    }
    AUX::WStringView Text() const noexcept {
        return {first_, static_cast<std::size_t>(std::end(units_) - first_)};
    }

private:
    WCHAR units_[10];  // The last code point has seven digits.
    WCHAR* first_ = std::end(units_);
};

}  // namespace

bool DecodeEntities(const WCHAR* text, std::int64_t length, AUX::WString& output) noexcept {
    const AUX::WStringView source = View(text, length);
    output.Clear();
    // No reference is shorter than what it stands for.
    if (source.size() > AUX::WString::kMaxLength ||
        !output.SetLength(static_cast<std::uint32_t>(source.size()))) {
        return false;
    }
    WCHAR* to = output.Data();
    const SearchKernels& kernels = FastestKernels();
    const WCHAR* const end = source.data() + source.size();
    for (const WCHAR* at = source.data(); at != end;) {
        const WCHAR* const next = kernels.findUnit(at, end, TEXT('&'));
        to = Put({at, static_cast<std::size_t>(next - at)}, to);
        at = next;
        if (at == end) break;
        const Reference reference = ReadReference({at, static_cast<std::size_t>(end - at)});
        to = reference.length ? PutCodePoint(reference.point, to) : Put(TEXT("&"), to);
        at += std::max<std::size_t>(reference.length, 1);
    }
    return output.SetLength(static_cast<std::uint32_t>(to - output.Data()));
}

bool EncodeEntities(const WCHAR* text, std::int64_t length, AUX::WString& output) noexcept {
    TextSplicer splicer;
    splicer.Output.Swap(output);
    splicer.Output.Clear();
    AppendEncoded(splicer, View(text, length));
    if (!splicer.IsComplete()) splicer.Output.Free();
    splicer.Output.Swap(output);
    return splicer.IsComplete();
}

std::optional<AUX::WStringView> Decoded(AUX::WStringView text, AUX::WString& storage) noexcept {
    const WCHAR* const end = text.data() + text.size();
    if (FastestKernels().findUnit(text.data(), end, TEXT('&')) == end) return text;
    if (!DecodeEntities(text.data(), static_cast<std::int64_t>(text.size()), storage)) {
        return std::nullopt;
    }
    return storage;
}

void AppendEncoded(TextSplicer& splicer, AUX::WStringView text) noexcept {
    const SearchKernels& kernels = FastestKernels();
    const WCHAR* const end = text.data() + text.size();
    for (const WCHAR* at = text.data(); at != end;) {
        const WCHAR* const plainEnd = kernels.findSpecial(at, end);
        splicer.Append({at, static_cast<std::size_t>(plainEnd - at)});
        at = plainEnd;
        if (at == end) return;
        const std::uint32_t unit = *at++;
        const auto named = std::find_if(std::begin(kNamed), std::end(kNamed),
                                        [&](const auto& n) { return n.character == unit; });
        if (named != std::end(kNamed)) {
            splicer.Append(named->reference);
        } else if (unit == 9 || unit == 10 || unit == 13) {
            splicer.Append(NumberText(unit).Text());
        } else if (IsHigh(unit) && at != end && IsLow(*at)) {
            splicer.Append(
                NumberText(0x10000 + ((unit - 0xD800) << 10) + (*at++ - 0xDC00u)).Text());
        } else if (unit >= 128 && unit < 0xFFFE && !IsSurrogate(unit)) {
            splicer.Append(NumberText(unit).Text());
        }
    }
}
