#include <algorithm>
#include <cmath>
#include <iterator>

#include "automation/color.h"
#include "automation/number_text.h"
#include "platform/gdi.h"

namespace AUX {
namespace {

constexpr WCHAR ToCapital(WCHAR unit) {
    return unit >= TEXT('a') && unit <= TEXT('z') ? static_cast<WCHAR>(unit - 32) : unit;
}

constexpr bool IsLetter(WCHAR unit) {
    return ToCapital(unit) >= TEXT('A') && ToCapital(unit) <= TEXT('Z');
}

/// \param capitals  A name without small letters.
bool IsSame(WStringView text, WStringView capitals) {
    return std::equal(text.begin(), text.end(), capitals.begin(), capitals.end(),
                      [](WCHAR a, WCHAR b) { return ToCapital(a) == b; });
}

template <class Row, std::size_t kCount>
const Row* FindRow(const Row (&rows)[kCount], WStringView name) {
    const Row* const row = std::find_if(std::begin(rows), std::end(rows),
                                        [&](const Row& each) { return IsSame(name, each.name); });
    return row == std::end(rows) ? nullptr : row;
}

struct SystemColor {
    WStringView name;
    int index;  // of GetSysColor
};
constexpr SystemColor kSystemColors[] = {
    {TEXT("3DFACE"), 15},
    {TEXT("3DDKSHADOW"), 21},
    {TEXT("3DHIGHLIGHT"), 20},
    {TEXT("3DLIGHT"), 22},
    {TEXT("3DSHADOW"), 16},
    {TEXT("ACTIVEBORDER"), 10},
    {TEXT("ACTIVECAPTION"), 2},
    {TEXT("APPWORKSPACE"), 12},
    {TEXT("BACKGROUND"), 1},
    {TEXT("BTNTEXT"), 18},
    {TEXT("CAPTIONTEXT"), 9},
    {TEXT("GRAYTEXT"), 17},
    {TEXT("HIGHLIGHT"), 13},
    {TEXT("HIGHLIGHTTEXT"), 14},
    {TEXT("INACTIVEBORDER"), 11},
    {TEXT("INACTIVECAPTION"), 3},
    {TEXT("INACTIVECAPTIONTEXT"), 19},
    {TEXT("INFOBK"), 24},
    {TEXT("INFOTEXT"), 23},
    {TEXT("MENU"), 4},
    {TEXT("MENUTEXT"), 7},
    {TEXT("SCROLLBAR"), 0},
    {TEXT("WINDOW"), 5},
    {TEXT("WINDOWFRAME"), 6},
    {TEXT("WINDOWTEXT"), 8},
};
constexpr std::size_t kSystemColorWord = 5;  // Its letters; which ones they are tells nothing.

struct Form {
    WStringView name;
    ColorKind kind;
    std::size_t numbers;
    double scale;
};
constexpr Form kForms[] = {
    {TEXT("RGB"), ColorKind::Rgb, 3, 1},  {TEXT("RGBD"), ColorKind::Rgb, 3, 255},
    {TEXT("CMY"), ColorKind::Cmyk, 3, 1}, {TEXT("CMYK"), ColorKind::Cmyk, 4, 1},
    {TEXT("G"), ColorKind::Gray, 1, 1},   {TEXT("GRAY"), ColorKind::Gray, 1, 1},
};

/// The kind of a text of one character. \return false if it is none.
bool ReadLetter(WCHAR letter, ColorKind& kind) {
    switch (ToCapital(letter)) {
        case TEXT('A'):
            kind = ColorKind::A;
            return true;
        case TEXT('D'):
            kind = ColorKind::D;
            return true;
        case TEXT('N'):
        case TEXT('-'):
            kind = ColorKind::N;
            return true;
        default:
            return false;
    }
}

/// Six to eight hexadecimal digits, of which the last six count. \return false if there are fewer.
bool ReadHex(WStringView digits, std::uint32_t& colorRef) {
    constexpr std::size_t kMostDigits = 8;
    constexpr std::int32_t kFewestDigits = 6;
    std::int32_t count = 0;
    const auto length = static_cast<std::int32_t>(std::min(digits.size(), kMostDigits));
    const std::uint32_t value = ParseHex(digits.data(), length, &count);
    colorRef = (value & 0xFF) << 16 | (value & 0xFF00) | (value >> 16 & 0xFF);
    return count >= kFewestDigits;
}

/// Takes a number and what parts it from the one before. \return false if none is there.
bool TakeNumber(WStringView& text, double& value) {
    constexpr WStringView kSeparators = TEXT(" ,;");
    constexpr WStringView kOfNumbers = TEXT("0123456789.");
    text = text.substr(text.find_first_not_of(kSeparators));
    const WStringView run = text.substr(0, text.find_first_not_of(kOfNumbers));
    if (run.empty()) return false;
    text = text.substr(run.size());
    std::int32_t consumed = 0;
    value = ParseDecimal(run.data(), static_cast<std::int32_t>(run.size()), &consumed,
                         Exponent::kNotAllowed);
    return consumed == static_cast<std::int32_t>(run.size());
}

void Append(ColorText& to, WStringView text) {
    to.length = static_cast<std::uint32_t>(
        std::copy(text.begin(), text.end(), to.units + to.length) - to.units);
}

/// Three digits behind the point, rounded from the exact value, ties to even; less what is 0 at the
/// end. A float times 1000 fits a double exactly.
void AppendNumber(ColorText& to, float value) {
    const double exact = static_cast<double>(value) * 1000;
    auto thousandths = static_cast<int>(exact);
    const double rest = exact - thousandths;
    if (rest > 0.5 || (rest == 0.5 && thousandths % 2 != 0)) ++thousandths;
    to.units[to.length++] = thousandths < 1000 ? TEXT('0') : TEXT('1');
    thousandths %= 1000;
    if (thousandths > 0) to.units[to.length++] = TEXT('.');
    for (int digit = 100; thousandths > 0; thousandths %= digit, digit /= 10) {
        to.units[to.length++] = static_cast<WCHAR>(TEXT('0') + thousandths / digit);
    }
}

}  // namespace

ColorText Color::GetText() const noexcept {
    constexpr WStringView kHeads[] = {TEXT("A"),    TEXT("D"),     TEXT("N"),
                                      TEXT("RGB("), TEXT("CMYK("), TEXT("Gray(")};
    constexpr std::size_t kNumbers[] = {0, 0, 0, 3, 4, 1};
    const auto row = static_cast<int>(kind) - static_cast<int>(ColorKind::A);
    ColorText text;
    Append(text, kHeads[row]);
    for (std::size_t i = 0; i < kNumbers[row]; ++i) {
        if (i > 0) Append(text, TEXT(","));
        AppendNumber(text, c[i]);
    }
    if (kNumbers[row] > 0) Append(text, TEXT(")"));
    return text;
}

bool Color::ParseNumbers(WStringView text, ColorKind newKind, std::size_t count,
                         double scale) noexcept {
    ColorComponents numbers = {};
    for (std::size_t i = 0; i < count; ++i) {
        double value = 0;
        if (!TakeNumber(text, value)) return false;
        numbers[i] = static_cast<float>(std::min(value, scale) / scale);
    }
    SetRaw(newKind, numbers);
    return true;
}

Color::Parsed Color::SetText(WStringView text) noexcept {
    constexpr std::size_t kFewestUnits = 4;
    if (text.size() == 1) {
        ColorKind newKind{};
        if (!ReadLetter(text[0], newKind)) return Parsed::NotUnderstood;
        return SetKind(newKind) ? Parsed::KindChanged : Parsed::SameKind;
    }
    if (text.size() < kFewestUnits) return Parsed::NotUnderstood;
    if (text[0] == TEXT('#')) {
        std::uint32_t colorRef = 0;
        if (!ReadHex(text.substr(1), colorRef)) return Parsed::NotUnderstood;
        SetColorRef(colorRef);
        return Parsed::Set;
    }
    const auto letters = static_cast<std::size_t>(
        std::find_if_not(text.begin(), text.end(), IsLetter) - text.begin());
    if (letters == text.size() || text[letters] != TEXT('(')) return Parsed::NotUnderstood;
    const WStringView word = text.substr(0, letters);
    WStringView rest = text.substr(letters + 1);
    if (const Form* const form = FindRow(kForms, word)) {
        return ParseNumbers(rest, form->kind, form->numbers, form->scale) ? Parsed::Set
                                                                          : Parsed::NotUnderstood;
    }
    if (letters != kSystemColorWord) return Parsed::NotUnderstood;
    if (!rest.empty() && rest.back() == TEXT(')')) rest.remove_suffix(1);
    const SystemColor* const row = FindRow(kSystemColors, rest);
    if (!row) return Parsed::NotUnderstood;
    SetColorRef(GetSysColor(row->index));
    return Parsed::Set;
}

}  // namespace AUX
