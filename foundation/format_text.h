#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/wstring_view.h"

namespace AUX {

enum class FormatKind : std::uint8_t { Signed, Unsigned, Real, Text };

/// One argument of a formatted text. It borrows: a text must outlive the call.
template <class Char>
struct FormatArgument {
    template <std::integral T>
    constexpr FormatArgument(T value) noexcept
        : kind(std::is_signed_v<T> ? FormatKind::Signed : FormatKind::Unsigned),
          isWide(sizeof(T) > 4),
          integer(static_cast<std::uint64_t>(value)) {}
    constexpr FormatArgument(double value) noexcept : kind(FormatKind::Real), real(value) {}
    constexpr FormatArgument(const Char* value) noexcept : kind(FormatKind::Text), text(value) {}
    template <class T>
    requires std::convertible_to<const T&, BasicStringView<Char>> &&
        (!std::integral<T>)constexpr FormatArgument(const T& value) noexcept
        : kind(FormatKind::Text), text(value) {}

    FormatKind kind;
    bool isWide = false;        ///< An integer of more than 32 bits.
    std::uint64_t integer = 0;  ///< Sign-extended.
    double real = 0;
    BasicStringView<Char> text;
};

/// One conversion of a format text, as written: %[flags][width][.precision][ll or z or l]type.
struct FormatConversion {
    bool isLeft = false;
    bool hasPlus = false;
    bool hasBlank = false;
    bool hasZeros = false;
    std::int32_t width = 0;
    std::int32_t precision = -1;  ///< -1: none given.
    char type = 0;                ///< d u x X s f, or %.
};

namespace format_detail {

inline constexpr std::int32_t kMaxNumber = 0x7FFFFFF;

template <class Char>
constexpr bool ReadNumber(const Char*& cursor, std::int32_t& number) noexcept {
    number = 0;
    for (; *cursor >= Char('0') && *cursor <= Char('9'); ++cursor) {
        number = number * 10 + static_cast<std::int32_t>(*cursor - Char('0'));
        if (number > kMaxNumber) return false;
    }
    return true;
}

template <class Char>
constexpr bool ReadFlag(Char character, FormatConversion& conversion) noexcept {
    switch (character) {
        case Char('-'):
            return conversion.isLeft = true;
        case Char('+'):
            return conversion.hasPlus = true;
        case Char(' '):
            return conversion.hasBlank = true;
        case Char('0'):
            return conversion.hasZeros = true;
        default:
            return false;
    }
}

/// Whether `type` may follow the length letters before it. A text is %ls in a wide format and %s in
/// a narrow one, so that a format never means two things on two run-times.
template <class Char>
constexpr bool IsKnownType(char type, bool isLong, bool isSized) noexcept {
    switch (type) {
        case 'd':
        case 'u':
        case 'x':
        case 'X':
            return true;
        case 's':
            return !isSized && isLong == (sizeof(Char) > 1);
        case 'f':
            return !isSized;
        case '%':
            return !isSized && !isLong;
        default:
            return false;
    }
}

}  // namespace format_detail

/// Reads the conversion behind a '%' and moves `cursor` behind it.
/// \return false if it is not one of the known conversions.
template <class Char>
constexpr bool ReadConversion(const Char*& cursor, FormatConversion& conversion) noexcept {
    using namespace format_detail;
    while (ReadFlag(*cursor, conversion)) ++cursor;
    if (!ReadNumber(cursor, conversion.width)) return false;
    if (*cursor == Char('.')) {
        ++cursor;
        if (!ReadNumber(cursor, conversion.precision)) return false;
    }
    bool isLong = false;
    bool isSized = false;  // The argument's own type gives its size; the letters are only checked.
    if (*cursor == Char('z')) {
        isSized = true;
        ++cursor;
    } else if (*cursor == Char('l')) {
        isLong = true;
        if (*++cursor == Char('l')) {
            isSized = true;
            ++cursor;
        }
    }
    if (*cursor <= Char(0) || *cursor > Char(0x7F)) return false;
    conversion.type = static_cast<char>(*cursor++);
    if (conversion.type == 'i') conversion.type = 'd';
    return IsKnownType<Char>(conversion.type, isLong, isSized);
}

/// Whether an argument of this kind can serve the conversion.
constexpr bool IsServedBy(const FormatConversion& conversion, FormatKind kind) noexcept {
    switch (conversion.type) {
        case 's':
            return kind == FormatKind::Text;
        case 'd':
        case 'u':
        case 'x':
        case 'X':
            return kind == FormatKind::Signed || kind == FormatKind::Unsigned;
        default:
            return kind == FormatKind::Real;
    }
}

/// Whether every conversion is known and there is one argument of its kind for each, none left.
template <class Char>
constexpr bool IsFormatFor(const Char* format, const FormatKind* kinds,
                           std::size_t count) noexcept {
    std::size_t used = 0;
    while (*format) {
        if (*format++ != Char('%')) continue;
        FormatConversion conversion;
        if (!ReadConversion(format, conversion)) return false;
        if (conversion.type == '%') continue;
        if (used == count || !IsServedBy(conversion, kinds[used])) return false;
        ++used;
    }
    return used == count;
}

/// A format literal that was checked against the types of its arguments when it was compiled.
template <class Char, class... Arguments>
class FormatText {
public:
    template <std::size_t N>
    consteval FormatText(const Char (&format)[N]) : format_(format) {
        constexpr FormatKind kKinds[] = {KindOf<Arguments>()..., FormatKind::Text};
        if (!IsFormatFor(format, kKinds, sizeof...(Arguments))) TheFormatDoesNotFitItsArguments();
    }
    [[nodiscard]] constexpr const Char* Get() const noexcept { return format_; }

private:
    template <class T>
    static consteval FormatKind KindOf() {
        using Type = std::decay_t<T>;
        if constexpr (std::integral<Type>) {
            return std::is_signed_v<Type> ? FormatKind::Signed : FormatKind::Unsigned;
        } else if constexpr (std::floating_point<Type>) {
            return FormatKind::Real;
        } else {
            return FormatKind::Text;
        }
    }
    static void TheFormatDoesNotFitItsArguments();  // Not constexpr: reaching it is the error.

    const Char* format_;
};

/// Prints by the wide `printf` rules, independent of the locale: the decimal sign is always '.'.
/// A null text prints nothing. With `buffer` null it only measures; otherwise the buffer has room
/// for what was measured, and no terminator is written.
/// \param measured  Characters, without a terminator.
/// \return false, with nothing printed, if the format does not fit its arguments.
template <class Char>
[[nodiscard]] bool PrintFormat(Char* buffer, std::uint64_t& measured, const Char* format,
                               const FormatArgument<Char>* arguments, std::size_t count) noexcept;

}  // namespace AUX
