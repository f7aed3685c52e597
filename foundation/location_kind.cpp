#include "foundation/location_kind.h"

#include <algorithm>
#include <iterator>

#include "foundation/path_characters.h"
#include "foundation/urls.h"
#include "platform/shell.h"

namespace AUX {
namespace {

constexpr std::size_t kMaxScheme = 16;  // units
constexpr WCHAR kFirstPrintable = 33;   // what lies below is blank or control

// The schemes that need no "//" behind the colon, sorted.
constexpr WStringView kOpaqueSchemes[] = {
    TEXT("aim"),     TEXT("amss"),      TEXT("apt"),         TEXT("barion"), TEXT("beshare"),
    TEXT("bitcoin"), TEXT("callto"),    TEXT("cid"),         TEXT("dab"),    TEXT("data"),
    TEXT("dav"),     TEXT("doi"),       TEXT("drm"),         TEXT("fax"),    TEXT("feed"),
    TEXT("fm"),      TEXT("geo"),       TEXT("go"),          TEXT("gtalk"),  TEXT("h323"),
    TEXT("iax"),     TEXT("im"),        TEXT("itms"),        TEXT("jar"),    TEXT("javascript"),
    TEXT("jdbc"),    TEXT("magnet"),    TEXT("mailto"),      TEXT("maps"),   TEXT("message"),
    TEXT("mid"),     TEXT("msnim"),     TEXT("mvn"),         TEXT("news"),   TEXT("openpgp4fpr"),
    TEXT("palm"),    TEXT("paparazzi"), TEXT("pres"),        TEXT("psyc"),   TEXT("session"),
    TEXT("shc"),     TEXT("sip"),       TEXT("sips"),        TEXT("skype"),  TEXT("sms"),
    TEXT("spotify"), TEXT("steam"),     TEXT("stratum+tcp"), TEXT("stun"),   TEXT("stuns"),
    TEXT("svn"),     TEXT("tag"),       TEXT("tel"),         TEXT("things"), TEXT("trueconf"),
    TEXT("turn"),    TEXT("turns"),     TEXT("unreal"),      TEXT("urn"),    TEXT("view-source"),
    TEXT("ws"),      TEXT("xfire"),     TEXT("xmpp"),        TEXT("ymsgr"),
};
static_assert(std::size(kOpaqueSchemes) == 64);

constexpr WCHAR Lower(WCHAR character) noexcept {
    const bool isCapital = character >= TEXT('A') && character <= TEXT('Z');
    return isCapital ? static_cast<WCHAR>(character + 0x20) : character;
}

// Schemes are plain ASCII, so no other letters have a case.
constexpr bool IsBefore(WStringView a, WStringView b) noexcept {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](WCHAR x, WCHAR y) { return Lower(x) < Lower(y); });
}
static_assert(std::is_sorted(std::begin(kOpaqueSchemes), std::end(kOpaqueSchemes), IsBefore));

bool IsOpaqueScheme(WStringView scheme) noexcept {
    return std::binary_search(std::begin(kOpaqueSchemes), std::end(kOpaqueSchemes), scheme,
                              IsBefore);
}

// Blanks, accents and marks that no host and no opaque part begins with. The end counts as 0.
bool CanBeginRest(WCHAR character) noexcept {
    constexpr struct {
        WCHAR first;
        WCHAR last;
    } kRefused[] = {
        {0x0000, kFirstPrintable - 1},
        {TEXT(':'), TEXT(':')},
        {kNoBreakSpace, kNoBreakSpace},
        {0x02B0, 0x036F},
        {0x1D2C, 0x1D6A},
        {0x1D9B, 0x1DFF},
        {0x2000, 0x200F},
        {0x202A, 0x202F},
        {0x206A, 0x206F},
    };
    return std::none_of(std::begin(kRefused), std::end(kRefused), [character](const auto& range) {
        return character >= range.first && character <= range.last;
    });
}

constexpr bool BelongsToScheme(WCHAR character, bool isFirst) noexcept {
    return IsPlainLetter(character) || character == TEXT('+') || character == TEXT('-') ||
           character == TEXT('.') || (!isFirst && character >= TEXT('0') && character <= TEXT('9'));
}

// What follows the colon, cut to what CanBeginRest decides about; false if it does not fit.
bool SkipToRest(WStringView scheme, WStringView& text) noexcept {
    if (!text.empty() && IsPathSeparator(text[0])) {
        if (text.size() < 2 || !IsPathSeparator(text[1])) return false;
        text = text.substr(2);
        if (text.starts_with(TEXT('/'))) text = text.substr(1);
        return true;
    }
    if (!IsOpaqueScheme(scheme)) return false;
    while (!text.empty() && (text[0] == TEXT(' ') || text[0] == kNoBreakSpace)) {
        text = text.substr(1);
    }
    return true;
}

LocationKind ClassifyScheme(WStringView text, WStringView& scheme) noexcept {
    while (!text.empty() && (text[0] < kFirstPrintable || text[0] == kNoBreakSpace)) {
        text = text.substr(1);
    }
    if (text.empty()) return LocationKind::None;
    std::size_t length = 0;
    while (length < text.size() && length < kMaxScheme &&
           BelongsToScheme(text[length], length == 0)) {
        ++length;
    }
    if (length == text.size() || text[length] != TEXT(':')) return LocationKind::Location;
    if (length == 0) return LocationKind::None;
    const WStringView read = text.substr(0, length);
    text = text.substr(length + 1);
    if (!SkipToRest(read, text) || text.empty() || !CanBeginRest(text[0])) {
        return LocationKind::None;
    }
    scheme = read;
    return LocationKind::Location | LocationKind::HasScheme;
}

LocationKind Classify(const WCHAR* text, WStringView& scheme) noexcept {
    if (LocalPathFromText(text)) return LocationKind::Location | LocationKind::LocalPath;
    if (text[0] == TEXT('.') || IsPathSeparator(text[0])) {
        return PathIsRelativeW(text) ? LocationKind::Location | LocationKind::Relative
                                     : LocationKind::None;
    }
    return ClassifyScheme(text, scheme);
}

}  // namespace

LocationKind ClassifyLocation(const WCHAR* text, WString* scheme) noexcept {
    WStringView read;
    const LocationKind kind = text && *text ? Classify(text, read) : LocationKind::None;
    if (!scheme) return kind;
    WString copy;  // The text may be that of `scheme`.
    const bool isCopied = copy.Assign(read);
    *scheme = std::move(copy);
    return isCopied ? kind : LocationKind::None;
}

}  // namespace AUX
