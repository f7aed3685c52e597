#include "foundation/format_text.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace AUX {
namespace {

// Takes characters: counts them, and writes them if there is a buffer.
template <class Char>
class Sink {
public:
    explicit Sink(Char* buffer) noexcept : buffer_(buffer) {}

    void Put(const Char* text, std::size_t count) noexcept {
        if (buffer_) std::copy_n(text, count, buffer_ + count_);
        count_ += count;
    }
    void Put(std::string_view ascii) noexcept {
        if (buffer_) std::copy(ascii.begin(), ascii.end(), buffer_ + count_);
        count_ += ascii.size();
    }
    void Fill(Char character, std::uint64_t count) noexcept {
        if (buffer_) std::fill_n(buffer_ + count_, count, character);
        count_ += count;
    }
    [[nodiscard]] std::uint64_t Count() const noexcept { return count_; }

private:
    Char* buffer_;
    std::uint64_t count_ = 0;
};

// A number in its parts, in the order of printing.
struct NumberParts {
    std::string_view sign;
    std::uint64_t zeros = 0;  // In front of the digits.
    std::string_view digits;
    std::uint64_t moreZeros = 0;  // Decimals beyond what a double can hold.

    [[nodiscard]] std::uint64_t Length() const noexcept {
        return sign.size() + zeros + digits.size() + moreZeros;
    }
};

std::uint64_t Missing(std::int32_t width, std::uint64_t length) noexcept {
    const std::uint64_t wanted = static_cast<std::uint64_t>(width);
    return wanted > length ? wanted - length : 0;
}

template <class Char>
void PutNumber(Sink<Char>& sink, const FormatConversion& conversion, bool mayFillZeros,
               NumberParts parts) noexcept {
    std::uint64_t blanks = Missing(conversion.width, parts.Length());
    if (conversion.hasZeros && !conversion.isLeft && mayFillZeros) {
        parts.zeros += blanks;
        blanks = 0;
    }
    if (!conversion.isLeft) sink.Fill(Char(' '), blanks);
    sink.Put(parts.sign);
    sink.Fill(Char('0'), parts.zeros);
    sink.Put(parts.digits);
    sink.Fill(Char('0'), parts.moreZeros);
    if (conversion.isLeft) sink.Fill(Char(' '), blanks);
}

std::string_view SignOf(bool isNegative, const FormatConversion& conversion) noexcept {
    if (isNegative) return "-";
    if (conversion.hasPlus) return "+";
    return conversion.hasBlank ? " " : "";
}

void MakeUpper(char* first, const char* last) noexcept {
    for (; first != last; ++first) {
        if (*first >= 'a' && *first <= 'z') *first = static_cast<char>(*first - 'a' + 'A');
    }
}

template <class Char>
void PutInteger(Sink<Char>& sink, const FormatConversion& conversion,
                const FormatArgument<Char>& argument) noexcept {
    const bool isSigned = conversion.type == 'd';
    std::uint64_t value = argument.integer;
    bool isNegative = false;
    if (isSigned) {
        // An unsigned argument is read as the signed number of its size, as printf does.
        std::int64_t number = static_cast<std::int64_t>(value);
        if (!argument.isWide) number = static_cast<std::int32_t>(value);
        isNegative = number < 0;
        value = isNegative ? 0 - static_cast<std::uint64_t>(number)
                           : static_cast<std::uint64_t>(number);
    } else if (!argument.isWide) {
        value = static_cast<std::uint32_t>(value);
    }
    char digits[20];  // Of 2^64 - 1, in decimals.
    const int base = conversion.type == 'x' || conversion.type == 'X' ? 16 : 10;
    char* end = std::to_chars(digits, digits + sizeof digits, value, base).ptr;
    if (conversion.type == 'X') MakeUpper(digits, end);
    if (value == 0 && conversion.precision == 0) end = digits;

    NumberParts parts;
    parts.digits = {digits, static_cast<std::size_t>(end - digits)};
    if (isSigned) parts.sign = SignOf(isNegative, conversion);
    if (conversion.precision > 0) parts.zeros = Missing(conversion.precision, parts.digits.size());
    PutNumber(sink, conversion, conversion.precision < 0, parts);
}

// A double has at most 1074 decimals and 309 digits before them; what lies beyond is zeros.
constexpr std::int32_t kMaxDecimals = 1100;

template <class Char>
void PutReal(Sink<Char>& sink, const FormatConversion& conversion, double value) noexcept {
    char buffer[kMaxDecimals + 320];
    const std::int32_t precision = conversion.precision < 0 ? 6 : conversion.precision;
    const char* const end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                      std::min(precision, kMaxDecimals))
            .ptr;
    const bool isNegative = buffer[0] == '-';
    const char* const digits = isNegative ? buffer + 1 : buffer;
    const bool isNumber = *digits >= '0' && *digits <= '9';  // Not inf or nan.

    NumberParts parts;
    parts.sign = SignOf(isNegative, conversion);
    parts.digits = {digits, static_cast<std::size_t>(end - digits)};
    if (isNumber && precision > kMaxDecimals) {
        parts.moreZeros = static_cast<std::uint64_t>(precision - kMaxDecimals);
    }
    PutNumber(sink, conversion, isNumber, parts);
}

template <class Char>
void PutText(Sink<Char>& sink, const FormatConversion& conversion, const Char* text,
             std::size_t length) noexcept {
    const std::uint64_t blanks = Missing(conversion.width, length);
    if (!conversion.isLeft) sink.Fill(Char(' '), blanks);
    sink.Put(text, length);
    if (conversion.isLeft) sink.Fill(Char(' '), blanks);
}

template <class Char>
void PutArgument(Sink<Char>& sink, const FormatConversion& conversion,
                 const FormatArgument<Char>& argument) noexcept {
    switch (conversion.type) {
        case 's': {
            const std::size_t limit = conversion.precision < 0
                                          ? argument.text.size()
                                          : static_cast<std::size_t>(conversion.precision);
            return PutText(sink, conversion, argument.text.data(),
                           std::min(argument.text.size(), limit));
        }
        case 'd':
        case 'u':
        case 'x':
        case 'X':
            return PutInteger(sink, conversion, argument);
        default:
            return PutReal(sink, conversion, argument.real);
    }
}

}  // namespace

template <class Char>
bool PrintFormat(Char* buffer, std::uint64_t& measured, const Char* format,
                 const FormatArgument<Char>* arguments, std::size_t count) noexcept {
    Sink<Char> sink(buffer);
    const FormatArgument<Char>* const end = arguments + count;
    while (*format) {
        const Char* const start = format;
        while (*format && *format != Char('%')) ++format;
        sink.Put(start, static_cast<std::size_t>(format - start));
        if (!*format) break;
        FormatConversion conversion;
        if (!ReadConversion(++format, conversion)) return false;
        if (conversion.type == '%') {
            sink.Put("%");
            continue;
        }
        if (arguments == end || !IsServedBy(conversion, arguments->kind)) return false;
        PutArgument(sink, conversion, *arguments++);
    }
    if (arguments != end) return false;
    measured = sink.Count();
    return true;
}

template bool PrintFormat(WCHAR*, std::uint64_t&, const WCHAR*, const FormatArgument<WCHAR>*,
                          std::size_t) noexcept;
template bool PrintFormat(char*, std::uint64_t&, const char*, const FormatArgument<char>*,
                          std::size_t) noexcept;

}  // namespace AUX
