#include "converter/command_line.h"

#include <cstddef>
#include <string>

namespace converter {
namespace {

using platform::ToUtf8;
using platform::WideString;
using platform::WideView;

struct FlagSwitch {
    WideView name;
    bool CommandLine::*field;
};
constexpr FlagSwitch kFlags[] = {
    {TEXT("l"), &CommandLine::landscape}, {TEXT("b"), &CommandLine::background},
    {TEXT("h"), &CommandLine::links},     {TEXT("r"), &CommandLine::runApp},
    {TEXT("hi"), &CommandLine::hidden},
};

struct NumberSwitch {
    WideView name;
    std::int32_t CommandLine::*field;
    std::int32_t least;
    std::int32_t largest;
};
constexpr std::int32_t kAnyLeast = INT32_MIN;
constexpr std::int32_t kAnyLargest = INT32_MAX;
constexpr std::int32_t kLargestSide = 144'000;  // 200 inches; viewers show no larger sheet
constexpr std::int32_t kLongestDelayMs = 600'000;
constexpr NumberSwitch kNumbers[] = {
    {TEXT("iw"), &CommandLine::width, 1, 32'767},
    {TEXT("ih"), &CommandLine::height, 0, kAnyLargest},
    {TEXT("ld"), &CommandLine::loadDelayMs, 0, kLongestDelayMs},
    {TEXT("is"), &CommandLine::pdfVersion, kAnyLeast, kAnyLargest},
    {TEXT("ic"), &CommandLine::compression, 0, 2},
    {TEXT("pw"), &CommandLine::pageWidth, 30, kLargestSide},
    {TEXT("ph"), &CommandLine::pageHeight, 30, kLargestSide},
    {TEXT("mt"), &CommandLine::marginTop, 0, kLargestSide},
    {TEXT("mb"), &CommandLine::marginBottom, 0, kLargestSide},
    {TEXT("ml"), &CommandLine::marginLeft, 0, kLargestSide},
    {TEXT("mr"), &CommandLine::marginRight, 0, kLargestSide},
};
constexpr std::size_t kNumberCount = std::size(kNumbers);

constexpr WideView kExtraMark = TEXT(" \\ce ");

bool IsDigit(WCHAR unit) { return unit >= TEXT('0') && unit <= TEXT('9'); }

WideView TrimEnd(WideView text) {
    while (text.ends_with(TEXT(' '))) text.remove_suffix(1);
    return text;
}

void SkipBlanks(WideView& rest) {
    while (rest.starts_with(TEXT(' '))) rest.remove_prefix(1);
}

/// Takes the text up to the next blank.
WideView TakeWord(WideView& rest) {
    SkipBlanks(rest);
    const WideView word = rest.substr(0, rest.find(TEXT(' ')));
    rest.remove_prefix(word.size());
    return word;
}

/// A decimal number with an optional minus sign, of 32 bits.
bool ParseNumber(WideView word, std::int32_t& value) {
    const bool negative = word.starts_with(TEXT('-'));
    if (negative) word.remove_prefix(1);
    if (word.empty() || word.size() > 10) return false;
    std::int64_t number = 0;
    for (const WCHAR unit : word) {
        if (!IsDigit(unit)) return false;
        number = number * 10 + (unit - TEXT('0'));
    }
    if (negative) number = -number;
    if (number < INT32_MIN || number > INT32_MAX) return false;
    value = static_cast<std::int32_t>(number);
    return true;
}

Error Fault(const std::string& text) { return Error{"The command line " + text}; }

class Parser {
public:
    Parser(WideView text, const std::function<bool(const WideString&)>& exists)
        : rest_(text), exists_(exists) {}

    Result<CommandLine> Parse() {
        for (WideString* text : {&line_.firstText, &line_.secondText}) {
            if (const Outcome quoted = ParseQuoted(*text); !quoted) return quoted.GetError();
        }
        for (SkipBlanks(rest_); !rest_.empty(); SkipBlanks(rest_)) {
            if (const Outcome taken = ParseSwitch(TakeWord(rest_)); !taken) {
                return taken.GetError();
            }
        }
        for (std::size_t k = 0; k < kNumberCount; ++k) {
            if (!hasNumber_[k]) return Fault("lacks \\" + ToUtf8(kNumbers[k].name) + ".");
        }
        if (line_.storageFile.empty() && line_.sharedName.empty()) {
            return Fault("names no job: it has neither \\bp nor \\sm.");
        }
        return line_;
    }

private:
    Outcome ParseQuoted(WideString& out) {
        SkipBlanks(rest_);
        const std::size_t end =
            rest_.starts_with(TEXT('"')) ? rest_.find(TEXT('"'), 1) : WideView::npos;
        if (end == WideView::npos) return Fault("does not begin with two texts in quotes.");
        out = rest_.substr(1, end - 1);
        rest_.remove_prefix(end + 1);
        return Done{};
    }

    Outcome ParseSwitch(WideView word) {
        const std::string shown = "\"" + ToUtf8(word.substr(0, 80)) + "\"";
        if (!word.starts_with(TEXT('\\'))) return Fault("holds " + shown + ", which is no switch.");
        const WideView name = word.substr(1);
        for (const FlagSwitch& flag : kFlags) {
            if (name != flag.name) continue;
            if (line_.*flag.field) return Fault("repeats " + shown + ".");
            line_.*flag.field = true;
            return Done{};
        }
        for (std::size_t k = 0; k < kNumberCount; ++k) {
            if (name == kNumbers[k].name) return ParseNumberOf(k, shown);
        }
        if (name == TEXT("bp")) return ParseStorageFile();
        if (name == TEXT("sm")) return ParseSharedName();
        if (name == TEXT("ce")) return ParseExtra();
        return Fault("holds the unknown switch " + shown + ".");
    }

    Outcome ParseNumberOf(std::size_t index, const std::string& shown) {
        const NumberSwitch& number = kNumbers[index];
        if (hasNumber_[index]) return Fault("repeats " + shown + ".");
        const WideView word = TakeWord(rest_);
        std::int32_t& value = line_.*number.field;
        if (!ParseNumber(word, value)) {
            return Fault("has no number behind " + shown + " but \"" + ToUtf8(word.substr(0, 80)) +
                         "\".");
        }
        if (value < number.least || value > number.largest) {
            return Fault("gives " + shown + " the value " + std::to_string(value) +
                         "; it must be from " + std::to_string(number.least) + " to " +
                         std::to_string(number.largest) + ".");
        }
        hasNumber_[index] = true;
        return Done{};
    }

    /// Takes the unquoted value up to ` \ce `, or the whole rest.
    WideString TakeRest(bool whole) {
        SkipBlanks(rest_);
        const std::size_t end = whole ? WideView::npos : rest_.find(kExtraMark);
        const WideString value(TrimEnd(rest_.substr(0, end)));
        rest_.remove_prefix(end == WideView::npos ? rest_.size() : end);
        return value;
    }

    Outcome ParseStorageFile() {
        SkipBlanks(rest_);
        line_.storageFile = TakeRest(exists_(WideString(TrimEnd(rest_))));
        if (line_.storageFile.empty() || line_.storageFile.starts_with(TEXT("\\ce "))) {
            return Fault("has no path behind \\bp.");
        }
        return Done{};
    }

    Outcome ParseSharedName() {
        line_.sharedName = TakeRest(false);
        if (line_.sharedName.empty() || line_.sharedName.starts_with(TEXT("\\ce"))) {
            return Fault("has no name behind \\sm.");
        }
        if (line_.sharedName.find(TEXT(' ')) != WideString::npos) {
            return Fault("holds something behind the name of \\sm.");
        }
        return Done{};
    }

    Outcome ParseExtra() {
        line_.extra = TakeRest(true);
        if (line_.extra.empty()) return Fault("has no text behind \\ce.");
        return Done{};
    }

    WideView rest_;
    const std::function<bool(const WideString&)>& exists_;
    CommandLine line_;
    bool hasNumber_[kNumberCount] = {};
};

}  // namespace

WideView SkipProgramName(WideView line) {
    const bool quoted = line.starts_with(TEXT('"'));
    const std::size_t end = line.find(quoted ? TEXT('"') : TEXT(' '), quoted ? 1 : 0);
    if (end == WideView::npos) return {};
    return line.substr(end + 1);
}

Result<CommandLine> ParseCommandLine(WideView text,
                                     const std::function<bool(const WideString&)>& exists) {
    return Parser(text, exists).Parse();
}

}  // namespace converter
