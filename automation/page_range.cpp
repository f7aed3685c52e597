#include "automation/page_range.h"

#include <algorithm>
#include <limits>

namespace AUX {

void PageRange::RemoveEntries() noexcept {
    for (PageSpan* const entry : Entries) delete entry;
    Entries.Free();
    CachedCount = -1;
}

bool PageRange::AddEntry(std::int32_t first, std::int32_t last, bool isOpenStart) noexcept {
    auto* const entry = new (std::nothrow) PageSpan;
    if (!entry) return false;
    entry->First = first;
    entry->Last = last;
    entry->OpenStart = isOpenStart;
    CachedCount = -1;
    if (Entries.Add(entry)) return true;
    delete entry;
    return false;
}

void PageRange::Reset() noexcept {
    RemoveEntries();
    Text.Clear();
    Pages.Free();
    PageCount = 0;
    CurrentPage = CustomPage = -1;
    Rewind();
    Type = kNone;
    Filter = kAllPages;
    Reversed = 0;
    CurrentRect = CustomRect = {};
}

void PageRange::SetPageCount(std::int32_t count) noexcept {
    PageCount = std::max(count, 0);
    CachedCount = -1;
}

bool PageRange::SetPages(const std::uint32_t* pages, std::uint32_t count) noexcept {
    Array<std::uint32_t> copy;
    if (!copy.EnsureCapacity(count)) return false;
    for (std::uint32_t i = 0; i < count; ++i) (void)copy.Add(pages[i]);  // There is room.
    Pages = std::move(copy);
    CachedCount = -1;
    return true;
}

void PageRange::SetType(std::int32_t type) noexcept {
    const auto wanted = type == -1 ? std::uint32_t{kAll} : static_cast<std::uint32_t>(type);
    if (wanted != Type) CachedCount = -1;
    Type = wanted;
}

void PageRange::SetFilter(std::int32_t filter) noexcept {
    const auto wanted =
        filter == -1 ? std::uint32_t{kAllPages} : static_cast<std::uint32_t>(filter);
    if (wanted != kAllPages && wanted != kOddPages && wanted != kEvenPages) return;
    if (wanted != Filter) CachedCount = -1;
    Filter = wanted;
}

void PageRange::SetCurrentPage(std::int32_t page) noexcept {
    CurrentPage = page;
    CachedCount = -1;
}

void PageRange::SetCustomPage(std::int32_t page) noexcept {
    CustomPage = page;
    CachedCount = -1;
}

// -- How many

bool PageRange::Passes(std::uint32_t page) const noexcept {
    return Filter == kAllPages || page % 2 == (Filter == kEvenPages ? 1u : 0u);
}

PageRange::Extent PageRange::ExtentOf(const PageSpan& span) const noexcept {
    const auto first = static_cast<std::uint32_t>(span.First);
    const auto last = static_cast<std::uint32_t>(span.Last);
    const auto end = static_cast<std::uint32_t>(PageCount);
    const auto [low, high] = std::minmax(first, last);
    if (low >= end) return {};
    return {static_cast<std::int32_t>(low), static_cast<std::int32_t>(std::min(high, end - 1)),
            first < last};
}

/// The pages from `low` to `high` that pass; none if `high` is below `low`.
std::int64_t PageRange::CountBetween(std::int32_t low, std::int32_t high) const noexcept {
    if (high < low) return 0;
    const std::int64_t from = low, to = high;
    if (Filter == kAllPages) return to - from + 1;
    return Filter == kEvenPages ? (to + 1) / 2 - from / 2 : to / 2 - (from + 1) / 2 + 1;
}

std::int64_t PageRange::Count() const noexcept {
    if (PageCount < 1) return 0;
    switch (Type) {
        case kAll:
            return CountBetween(0, PageCount - 1);
        case kCustom: {
            std::int64_t sum = 0;
            for (const PageSpan* const entry : Entries) {
                const Extent extent = ExtentOf(*entry);
                sum += CountBetween(extent.low, extent.high);
            }
            return sum;
        }
        case kList:
            return std::count_if(Pages.begin(), Pages.end(), [this](std::uint32_t page) {
                return page < static_cast<std::uint32_t>(PageCount) && Passes(page);
            });
        case kCurrent:
        case kCurrentRect:
            return IsPage(CurrentPage);
        case kCustomRect:
            return IsPage(CustomPage);
        default:
            return Steps();
    }
}

std::int32_t PageRange::GetCount() noexcept {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    if (CachedCount < 0) CachedCount = static_cast<std::int32_t>(std::min(Count(), kMost));
    return CachedCount;
}

/// Gives `take` each page of a walk of its own, until it gives false. \return whether it never did.
template <class Take>
bool PageRange::Walk(Take take) noexcept {
    const std::int32_t outer = OuterCursor, inner = InnerCursor, last = LastPage;
    bool isTaken = true;
    for (std::int32_t page = First(); page >= 0 && isTaken; page = Next(nullptr, false)) {
        isTaken = take(static_cast<std::uint32_t>(page));
    }
    OuterCursor = outer;
    InnerCursor = inner;
    LastPage = last;
    return isTaken;
}

bool PageRange::ToPageList(Array<std::uint32_t>& output, bool sorted) noexcept {
    output.Clear();
    // Sorted, no page comes twice.
    const std::int32_t most = sorted ? std::min(GetCount(), PageCount) : GetCount();
    if (!output.EnsureCapacity(static_cast<std::uint32_t>(most))) return false;
    if (!sorted) return Walk([&](std::uint32_t page) { return output.Add(page); });
    BitSet pages;
    if (!ToPageSet(pages, nullptr)) return false;
    for (std::int64_t page = pages.NextSet(-1); page >= 0; page = pages.NextSet(page)) {
        if (!output.Add(static_cast<std::uint32_t>(page))) return false;
    }
    if (Reversed) std::reverse(output.begin(), output.end());
    return true;
}

bool PageRange::ToPageSet(BitSet& output, std::int32_t* count) noexcept {
    if (count) *count = 0;
    if (!output.Create(static_cast<std::uint32_t>(PageCount))) return false;
    std::int32_t distinct = 0;
    (void)Walk([&](std::uint32_t page) {
        if (!output.Test(page)) ++distinct;
        (void)output.SetBit(page, true);
        return true;
    });
    if (count) *count = distinct;
    return true;
}

// -- As a whole

void PageRange::Normalize(bool allowAll) noexcept {
    const std::uint32_t before = Type;
    const std::uint32_t fallback = allowAll ? kAll : kNone;
    if (CurrentPage >= PageCount) {
        CurrentPage = -1;
        CurrentRect = {};
        if (Type == kCurrentRect) Type = fallback;
    }
    if (Type == kCurrentRect && IsEmptyRect(CurrentRect)) {
        CurrentRect = {};
        Type = fallback;
    }
    if (CustomPage >= PageCount || IsEmptyRect(CustomRect)) {
        CustomPage = -1;
        CustomRect = {};
        if (Type == kCustomRect) Type = fallback;
    }
    if (Type == kList && Pages.IsEmpty()) Type = fallback;
    if (Type != before) CachedCount = -1;
}

bool PageRange::Assign(const PageRange& other) noexcept {
    if (&other == this) return true;
    PageRange copy;
    if (!copy.Text.Assign(other.Text)) return false;
    if (!copy.SetPages(other.Pages.Data(), other.Pages.Count())) return false;
    if (!copy.Entries.EnsureCapacity(other.Entries.Count())) return false;
    for (const PageSpan* const entry : other.Entries) {
        if (!copy.AddEntry(entry->First, entry->Last, entry->OpenStart)) return false;
    }
    std::swap(Entries, copy.Entries);
    Text.Swap(copy.Text);
    Pages = std::move(copy.Pages);
    PageCount = other.PageCount;
    CachedCount = other.CachedCount;
    CurrentPage = other.CurrentPage;
    CustomPage = other.CustomPage;
    OuterCursor = other.OuterCursor;
    InnerCursor = other.InnerCursor;
    LastPage = other.LastPage;
    Type = other.Type;
    Filter = other.Filter;
    Reversed = other.Reversed;
    CurrentRect = other.CurrentRect;
    CustomRect = other.CustomRect;
    return true;
}

}  // namespace AUX
