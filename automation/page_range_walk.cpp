#include <algorithm>

#include "automation/page_range.h"

namespace AUX {

void PageRange::Rewind() noexcept {
    OuterCursor = InnerCursor = kNotStarted;
    LastPage = kNoPage;
}

/// What OuterCursor counts: pages, entries, or how often a type gives one.
std::int32_t PageRange::Steps() const noexcept {
    switch (Type) {
        case kAll:
            return PageCount;
        case kOdd:
            return PageCount / 2 + PageCount % 2;
        case kEven:
            return PageCount / 2;
        case kCustom:
            return static_cast<std::int32_t>(Entries.Count());
        case kList:
            return static_cast<std::int32_t>(Pages.Count());
        case kFirst:
        case kLast:
        case kCurrent:
        case kCurrentRect:
        case kCustomRect:
            return 1;
        default:
            return 0;
    }
}

/// Moves OuterCursor to the next step, and at the end behind the last one, where it stays. There
/// may be fewer steps than at the last call. \return false at the end.
bool PageRange::Advance() noexcept {
    const std::int32_t steps = Steps();
    if (OuterCursor == kNotStarted) {
        OuterCursor = Reversed ? steps - 1 : 0;
    } else if (Reversed) {
        if (OuterCursor >= 0) OuterCursor = std::min(OuterCursor, steps) - 1;
    } else if (OuterCursor < steps) {
        ++OuterCursor;
    }
    return OuterCursor >= 0 && OuterCursor < steps;
}

std::int32_t PageRange::Next(bool* newRun, bool restart) noexcept {
    if (restart) Rewind();
    bool isNewRun = LastPage == kNoPage;
    const std::int32_t page = PageCount < 1 ? -1 : NextPage(isNewRun);
    if (page >= 0) LastPage = page;
    if (newRun) *newRun = page >= 0 && isNewRun;
    return page;
}

std::int32_t PageRange::NextPage(bool& newRun) noexcept {
    if (Type == kCustom) return NextOfEntries(newRun);
    if (Type == kList) return NextOfList(newRun);
    while (Advance()) {
        switch (Type) {
            case kAll:
                if (Passes(static_cast<std::uint32_t>(OuterCursor))) return OuterCursor;
                break;
            case kFirst:
                return 0;
            case kLast:
                return PageCount - 1;
            case kOdd:
                return OuterCursor * 2;
            case kEven:
                return OuterCursor * 2 + 1;
            case kCustomRect:
                return IsPage(CustomPage) ? CustomPage : -1;
            default:
                return IsPage(CurrentPage) ? CurrentPage : -1;
        }
    }
    return -1;
}

std::int32_t PageRange::NextOfEntries(bool& newRun) noexcept {
    for (;;) {
        const bool begins = InnerCursor == kNotStarted;
        if (begins && !Advance()) return -1;
        if (OuterCursor < 0 || OuterCursor >= Steps()) return -1;  // Entries went meanwhile.
        const Extent extent = ExtentOf(*Entries[static_cast<std::uint32_t>(OuterCursor)]);
        if (extent.high < extent.low) {
            InnerCursor = kNotStarted;
            continue;
        }
        const bool goesUp = extent.isUpward == !Reversed;
        const std::int32_t start = goesUp ? extent.low : extent.high;
        const std::int32_t end = goesUp ? extent.high : extent.low;
        if (begins) {
            newRun = true;
            InnerCursor = start;
        } else if (goesUp ? InnerCursor >= end : InnerCursor <= end) {
            InnerCursor = kNotStarted;
            continue;
        } else if (goesUp) {
            InnerCursor = std::max(InnerCursor + 1, start);
        } else {
            InnerCursor = std::min(InnerCursor - 1, start);  // The document may have shrunk.
        }
        if (Passes(static_cast<std::uint32_t>(InnerCursor))) return InnerCursor;
    }
}

std::int32_t PageRange::NextOfList(bool& newRun) noexcept {
    while (Advance()) {
        const std::uint32_t page = Pages[static_cast<std::uint32_t>(OuterCursor)];
        if (page >= static_cast<std::uint32_t>(PageCount) || !Passes(page)) continue;
        const auto next = static_cast<std::int32_t>(page);
        if (next != LastPage + 1 && next != LastPage - 1) newRun = true;
        return next;
    }
    return -1;
}

}  // namespace AUX
