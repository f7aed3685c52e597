#include "cab/exact_number.h"

#include <charconv>

#include "foundation/astring.h"

namespace AUX::CAB {

namespace {

constexpr bool IsSpace(WCHAR unit) noexcept { return unit == ' ' || (unit >= 9 && unit <= 13); }

// Leaves white space and a plus sign out; a sign behind the plus makes it no number.
WStringView SkipToNumber(WStringView text) noexcept {
    std::size_t start = 0;
    while (start < text.size() && IsSpace(text[start])) ++start;
    if (start < text.size() && text[start] == '+') {
        ++start;
        if (start < text.size() && text[start] == '-') return {};
    }
    return text.substr(start);
}

template <class Integer>
bool ParseInteger(WStringView text, Integer& value) noexcept {
    text = SkipToNumber(text);
    const bool isNegative = !text.empty() && text[0] == '-';
    Integer result = 0;
    for (std::size_t i = isNegative; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        const auto digit = static_cast<Integer>(isNegative ? '0' - text[i] : text[i] - '0');
        if (__builtin_mul_overflow(result, Integer{10}, &result) ||
            __builtin_add_overflow(result, digit, &result)) {
            return false;
        }
    }
    value = result;
    return true;
}

bool EqualsIgnoringCase(WStringView text, const char* word) noexcept {
    std::size_t i = 0;
    for (; word[i] != 0; ++i) {
        if (i == text.size() || (text[i] | 0x20) != word[i]) return false;
    }
    return i == text.size();
}

}  // namespace

bool ParseNumber(WStringView text, std::int32_t& value) noexcept {
    return ParseInteger(text, value);
}

bool ParseNumber(WStringView text, std::int64_t& value) noexcept {
    return ParseInteger(text, value);
}

bool ParseNumber(WStringView text, double& value) noexcept {
    text = SkipToNumber(text);
    // Characters that no number has end it.
    std::size_t length = 0;
    while (length < text.size() && text[length] > ' ' && text[length] < 127) ++length;
    AString narrow;
    if (!narrow.SetLength(static_cast<std::uint32_t>(length))) return false;
    for (std::size_t i = 0; i < length; ++i) narrow.Data()[i] = static_cast<char>(text[i]);
    double result = 0;
    const std::from_chars_result end =
        std::from_chars(narrow.Text(), narrow.Text() + length, result);
    if (end.ec == std::errc::result_out_of_range) return false;
    value = end.ec == std::errc() ? result : 0;
    return true;
}

bool ParseNumber(WStringView text, bool& value) noexcept {
    const bool isTrue = EqualsIgnoringCase(text, "true");
    if (!isTrue && !EqualsIgnoringCase(text, "false")) return false;
    value = isTrue;
    return true;
}

bool FormatNumber(bool value, WString& text) noexcept {
    return text.Assign(value ? TEXT("true") : TEXT("false"));
}

namespace {

template <class Value>
bool FormatAny(Value value, WString& text) noexcept {
    char digits[32];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    text.Clear();
    for (const char* at = digits; at != end.ptr; ++at) {
        if (!text.AppendRepeated(static_cast<WCHAR>(*at), 1)) return false;
    }
    return true;
}

}  // namespace

bool FormatNumber(std::int64_t value, WString& text) noexcept { return FormatAny(value, text); }
bool FormatNumber(double value, WString& text) noexcept { return FormatAny(value, text); }

}  // namespace AUX::CAB
