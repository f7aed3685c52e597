#include <algorithm>
#include <limits>

#include "automation/page_range.h"

namespace AUX {
namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

constexpr bool IsDigit(WCHAR unit) { return unit >= TEXT('0') && unit <= TEXT('9'); }
constexpr bool BeginsNumber(WCHAR unit) { return unit == TEXT('^') || IsDigit(unit); }

/// A place in a text of spans.
class SpanReader {
public:
    SpanReader(WStringView text, std::int32_t pageCount) noexcept
        : text_(text), pageCount_(pageCount) {}

    [[nodiscard]] std::size_t Place() const noexcept { return at_; }

    /// Passes what belongs to no span. \return false at the end.
    bool SkipToSpan() noexcept {
        while (!IsAtEnd() && !BeginsNumber(Peek()) && Peek() != TEXT('-')) ++at_;
        return !IsAtEnd();
    }

    /// Passes what stands between the numbers of a span. \return whether a dash was there.
    bool SkipToNumber() noexcept {
        bool hasDash = false;
        for (; !IsAtEnd() && !BeginsNumber(Peek()) && !IsSeparator(Peek()); ++at_) {
            hasDash = hasDash || Peek() == TEXT('-');
        }
        return hasDash;
    }

    /// Reads a number, or gives `missing` if there are no digits.
    std::int32_t TakeNumber(std::int32_t missing) noexcept {
        const bool isFromEnd = !IsAtEnd() && Peek() == TEXT('^');
        if (isFromEnd) ++at_;
        std::int64_t number = missing;
        if (!IsAtEnd() && IsDigit(Peek())) number = 0;
        for (; !IsAtEnd() && IsDigit(Peek()); ++at_) {
            number = std::min<std::int64_t>(number * 10 + (Peek() - TEXT('0')), kLargest);
        }
        return static_cast<std::int32_t>(isFromEnd ? pageCount_ - number + 1 : number);
    }

private:
    [[nodiscard]] bool IsAtEnd() const noexcept { return at_ == text_.size(); }
    [[nodiscard]] WCHAR Peek() const noexcept { return text_[at_]; }
    static bool IsSeparator(WCHAR unit) noexcept { return unit == TEXT(',') || unit == TEXT(';'); }

    WStringView text_;
    std::int64_t pageCount_;
    std::size_t at_ = 0;
};

/// The numbers of a span as they were read.
struct Numbers {
    std::int32_t first = 1, last = -1;

    [[nodiscard]] static std::int32_t ToIndex(std::int32_t number) noexcept {
        return number >= 1 ? number - 1 : number;
    }
    /// Whether the span names no page. The numbers themselves decide of page 0: an index of 0 is
    /// the first page.
    [[nodiscard]] bool IsNothing(std::int32_t pageCount) const noexcept {
        const std::int32_t index = ToIndex(first);
        const bool isBehind = pageCount > 0 && index >= pageCount;
        if (last == -1 && (index < 0 || isBehind)) return true;
        return (first == 0 && last == 0) || (isBehind && last > pageCount);
    }
};

bool AppendNumber(WString& to, std::int32_t index, std::int32_t pageCount) noexcept {
    WString number;
    // Before page 1: what was read there counted from the end.
    const bool isWritten = index < 0
                               ? number.Format(TEXT("^%lld"), std::int64_t{pageCount} + 1 - index)
                               : number.Format(TEXT("%lld"), std::int64_t{index} + 1);
    return isWritten && to.Append(number);
}

}  // namespace

bool PageRange::SetText(WStringView text) noexcept {
    const bool hasEntries = Parse(text);
    if (!Text.Assign(text)) Text.Clear();
    return hasEntries;
}

bool PageRange::Parse(WStringView text) noexcept {
    RemoveEntries();
    SpanReader reader(text, PageCount);
    bool follows = false;  // another span, with nothing between them
    for (std::size_t end = 0; reader.SkipToSpan(); end = reader.Place()) {
        follows = follows && reader.Place() == end;
        Numbers numbers;
        const bool isOpenStart = reader.SkipToNumber();
        bool hasDash = isOpenStart;
        if (!isOpenStart) {
            numbers.first = reader.TakeNumber(1);
            hasDash = reader.SkipToNumber();
        }
        // Before page 1 is to the end, too: ends are compared unsigned.
        numbers.last = hasDash ? std::max(reader.TakeNumber(-1), -1) : numbers.first;
        if (isOpenStart && follows) {
            RemoveEntries();
            return false;
        }
        follows = true;
        if (numbers.IsNothing(PageCount)) continue;
        (void)AddEntry(Numbers::ToIndex(numbers.first), Numbers::ToIndex(numbers.last),
                       isOpenStart);
    }
    return !Entries.IsEmpty();
}

bool PageRange::GetText(WString& output) const noexcept {
    output.Clear();
    for (const PageSpan* const entry : Entries) {
        if (!output.IsEmpty() && !output.Append(TEXT(", "))) return false;
        const bool isOne = entry->First == entry->Last;
        if ((isOne || !entry->OpenStart) && !AppendNumber(output, entry->First, PageCount)) {
            return false;
        }
        if (isOne) continue;
        if (!output.Append(TEXT("-"))) return false;
        if (entry->Last >= 0 && !AppendNumber(output, entry->Last, PageCount)) return false;
    }
    return true;
}

bool PageRange::SetSpan(std::int32_t first, std::int32_t last) noexcept {
    RemoveEntries();
    Type = kCustom;
    first = std::max(first, 0);
    const std::uint32_t end =
        std::max(static_cast<std::uint32_t>(last), static_cast<std::uint32_t>(first));
    last = static_cast<std::int32_t>(end);
    if (PageCount > 0 && end >= static_cast<std::uint32_t>(PageCount)) last = PageCount - 1;
    if (last < 0) last = -1;
    const bool isWritten =
        last < 0 ? Text.Format(TEXT("%lld-"), std::int64_t{first} + 1)
                 : Text.Format(TEXT("%lld-%lld"), std::int64_t{first} + 1, std::int64_t{last} + 1);
    return isWritten && AddEntry(first, last, false);
}

}  // namespace AUX
