#include "host/html_text.h"

#include <algorithm>
#include <array>
#include <optional>

#include "host/markup_scanner.h"

namespace host {
namespace {

using platform::WideString;
using platform::WideView;

// An estimate in the manner of a browser's default style at a width of 1280 pixels.
constexpr LONG kMarginPixels = 16;
constexpr LONG kLinePixels = 18;
constexpr LONG kBlockGapPixels = 16;
constexpr LONG kUnitsPerLine = 160;
constexpr LONG kMaxHeight = 1'000'000;

// Named references of U+00A0 to U+00FF, in order.
constexpr std::array<std::string_view, 96> kLatinNames = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",
    "copy",   "ordf",   "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn",
    "sup2",   "sup3",   "acute",  "micro",  "para",   "middot", "cedil",  "sup1",   "ordm",
    "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave", "Aacute", "Acirc",  "Atilde",
    "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",   "Igrave",
    "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde",
    "Ouml",   "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",
    "szlig",  "agrave", "aacute", "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil",
    "egrave", "eacute", "ecirc",  "euml",   "igrave", "iacute", "icirc",  "iuml",   "eth",
    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide", "oslash", "ugrave",
    "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml"};

// What browsers take 0x80 to 0x9F for, in files that call themselves Latin-1 and in references.
constexpr std::array<char32_t, 32> kWindows1252 = {
    0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
    0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};

struct NamedReference {
    std::string_view name;
    char32_t point;
};
constexpr NamedReference kOtherNames[] = {
    {"amp", '&'},       {"lt", '<'},       {"gt", '>'},        {"quot", '"'},
    {"apos", '\''},     {"ndash", 0x2013}, {"mdash", 0x2014},  {"lsquo", 0x2018},
    {"rsquo", 0x2019},  {"sbquo", 0x201A}, {"ldquo", 0x201C},  {"rdquo", 0x201D},
    {"bdquo", 0x201E},  {"bull", 0x2022},  {"hellip", 0x2026}, {"lsaquo", 0x2039},
    {"rsaquo", 0x203A}, {"euro", 0x20AC},  {"trade", 0x2122},  {"larr", 0x2190},
    {"rarr", 0x2192},   {"minus", 0x2212}, {"OElig", 0x152},   {"oelig", 0x153},
    {"Scaron", 0x160},  {"scaron", 0x161}, {"Yuml", 0x178}};

char32_t FromWindows1252(char32_t point) {
    return point >= 0x80 && point < 0xA0 ? kWindows1252[point - 0x80] : point;
}

void AppendPoint(char32_t point, WideString& out) {
    const bool valid = point != 0 && point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF);
    if (!valid) point = 0xFFFD;
    if (point >= 0x10000) {
        out.push_back(static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10)));
        out.push_back(static_cast<WCHAR>(0xDC00 + (point & 0x3FF)));
    } else {
        out.push_back(static_cast<WCHAR>(point));
    }
}

std::optional<char32_t> PointOfName(WideView name) {
    const auto same = [name](std::string_view known) {
        return std::equal(name.begin(), name.end(), known.begin(), known.end(),
                          [](WCHAR a, char b) { return a == static_cast<WCHAR>(b); });
    };
    for (std::size_t i = 0; i < kLatinNames.size(); ++i) {
        if (same(kLatinNames[i])) return static_cast<char32_t>(0xA0 + i);
    }
    for (const NamedReference& known : kOtherNames) {
        if (same(known.name)) return known.point;
    }
    return std::nullopt;
}

int DigitValue(WCHAR c, char32_t base) {
    if (IsDigit(c)) return c - '0';
    const WCHAR lower = LowerOf(c);
    return base == 16 && lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The reference that begins at text[0] == '&'. \return its length, 0 if there is none.
std::size_t TakeReference(WideView text, WideString& out) {
    std::size_t end = 1;
    if (text.size() > 2 && text[1] == '#') {
        const char32_t base = LowerOf(text[2]) == 'x' ? 16 : 10;
        end = base == 16 ? 3 : 2;
        const std::size_t first = end;
        char32_t point = 0;
        for (; end < text.size() && DigitValue(text[end], base) >= 0; ++end) {
            // Stops growing where no character lies any more; the sum cannot overflow.
            if (point <= 0x10FFFF) {
                point = point * base + static_cast<char32_t>(DigitValue(text[end], base));
            }
        }
        if (end == first) return 0;
        AppendPoint(FromWindows1252(point), out);
    } else {
        while (end < text.size() && (IsLetter(text[end]) || IsDigit(text[end]))) ++end;
        // Without the closing ';' a name may be a part of an address: "?a=1&copy=2".
        if (end == text.size() || text[end] != ';') return 0;
        const std::optional<char32_t> point = PointOfName(text.substr(1, end - 1));
        if (!point) return 0;
        AppendPoint(*point, out);
    }
    return end < text.size() && text[end] == ';' ? end + 1 : end;
}

/// The value of <meta name="page-height" content="N">, 0 if the tag is another one.
LONG HeightOfMeta(WideView tag) {
    WideString lower(tag);
    for (WCHAR& c : lower) c = LowerOf(c);
    const std::size_t content = lower.find(TEXT("content="));
    if (lower.find(TEXT("page-height")) == WideString::npos || content == WideString::npos) {
        return 0;
    }
    std::size_t i = content + 8;
    while (i < lower.size() && (lower[i] == '"' || lower[i] == '\'' || lower[i] == ' ')) ++i;
    LONG height = 0;
    for (; i < lower.size() && IsDigit(lower[i]) && height < kMaxHeight; ++i) {
        height = height * 10 + (lower[i] - '0');
    }
    return std::min(height, kMaxHeight);
}

bool IsBlock(WideView name) {
    constexpr WideView kBlocks[] = {TEXT("p"),  TEXT("div"), TEXT("li"),  TEXT("tr"),
                                    TEXT("h1"), TEXT("h2"),  TEXT("h3"),  TEXT("h4"),
                                    TEXT("h5"), TEXT("h6"),  TEXT("pre"), TEXT("blockquote"),
                                    TEXT("dt"), TEXT("dd"),  TEXT("hr"),  TEXT("table")};
    return std::find(std::begin(kBlocks), std::end(kBlocks), name) != std::end(kBlocks);
}

}  // namespace

WideString DecodeReferences(WideView text) {
    WideString out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t taken = text[0] == '&' ? TakeReference(text, out) : 0;
        if (taken == 0) out.push_back(text[0]);
        text.remove_prefix(std::max<std::size_t>(taken, 1));
    }
    return out;
}

WideString CollapseBlanks(WideView text) {
    WideString out;
    bool gap = false;
    for (const WCHAR c : text) {
        if (IsBlank(c)) {
            gap = !out.empty();
            continue;
        }
        if (gap) out.push_back(' ');
        gap = false;
        out.push_back(c);
    }
    return out;
}

HtmlFacts ReadHtmlFacts(WideView markup) {
    HtmlFacts facts;
    MarkupScanner scanner(markup);
    WideView text;
    WideView tag;
    WideString name;
    bool haveTitle = false;
    LONG given = 0;
    LONG estimate = 0;
    LONG units = 0;  // of text in the block at hand
    const auto endBlock = [&](LONG gap) {
        const LONG lines = (units + kUnitsPerLine - 1) / kUnitsPerLine;
        if (units > 0) estimate = std::min(kMaxHeight, estimate + lines * kLinePixels + gap);
        units = 0;
    };
    bool more = true;
    while (more) {
        more = scanner.Next(text, name, tag);
        const auto inked =
            std::count_if(text.begin(), text.end(), [](WCHAR c) { return !IsBlank(c); });
        units = static_cast<LONG>(std::min<std::ptrdiff_t>(kMaxHeight, units + inked));
        if (!more) break;
        if (name == TEXT("title")) {
            const WideView raw = scanner.TakeRaw(name);
            if (!haveTitle) facts.title = CollapseBlanks(DecodeReferences(raw));
            haveTitle = true;
        } else if (name == TEXT("script") || name == TEXT("style")) {
            (void)scanner.TakeRaw(name);  // Neither text nor tags count in there.
        } else if (name == TEXT("meta")) {
            if (given == 0) given = HeightOfMeta(tag);
        } else if (name == TEXT("br")) {
            endBlock(0);
        } else if (IsBlock(name)) {
            endBlock(kBlockGapPixels);
        }
    }
    endBlock(kBlockGapPixels);
    facts.height = given > 0 ? given : estimate > 0 ? estimate + kMarginPixels : 0;
    return facts;
}

WideString DecodeFileText(std::string_view bytes) {
    const auto unit = [bytes](std::size_t i, bool bigEndian) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<WCHAR>(bigEndian ? first << 8 | second : second << 8 | first);
    };
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        const bool bigEndian = bytes.starts_with("\xFE\xFF");
        WideString text;
        text.reserve(bytes.size() / 2);
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) text.push_back(unit(i, bigEndian));
        return text;
    }
    const bool marked = bytes.starts_with("\xEF\xBB\xBF");
    if (marked) bytes.remove_prefix(3);
    WideString text = platform::FromUtf8(bytes);
    // A character of replacement is either the file's own or stands for bytes that are no UTF-8;
    // only then the bytes have to be compared.
    if (marked || text.find(WCHAR{0xFFFD}) == WideString::npos || platform::ToUtf8(text) == bytes) {
        return text;
    }
    text.clear();
    for (const char c : bytes) {
        text.push_back(static_cast<WCHAR>(FromWindows1252(static_cast<unsigned char>(c))));
    }
    return text;
}

}  // namespace host
