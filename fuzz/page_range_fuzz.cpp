#include "automation/page_range.h"
#include "fuzz/units.h"

namespace {

using AUX::PageRange;

// A walk's length and an account of its pages and their order.
struct Account {
    std::int32_t length = 0;
    std::uint64_t pages = 0;
    bool operator==(const Account&) const = default;
};

Account WalkOf(PageRange& range) {
    Account account;
    for (std::int32_t page = range.First(); page >= 0; page = range.Next(nullptr, false)) {
        fuzz::Require(page < range.PageCount);
        account.pages = account.pages * 31 + static_cast<std::uint64_t>(page);
        ++account.length;
    }
    return account;
}

}  // namespace

/// The first byte is the count of pages, the second tells filter and direction, the rest is a text.
/// Counts and lists agree with the walk, and the text that is written back means the same pages.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    constexpr int kFilters[] = {1, 4, 5};
    const std::vector<WCHAR> units = fuzz::MakeUnits(data + 2, size - 2);
    PageRange range, again;
    for (PageRange* each : {&range, &again}) {
        each->SetPageCount(data[0]);
        each->SetType(PageRange::kCustom);
        each->SetFilter(kFilters[data[1] % 3]);
        each->SetReversed(data[1] >= 128);
    }
    (void)range.SetText(fuzz::View(units));
    const Account walk = WalkOf(range);
    fuzz::Require(range.GetCount() == walk.length);
    AUX::Array<std::uint32_t> list;
    fuzz::Require(range.ToPageList(list, false));
    fuzz::Require(list.Count() == static_cast<std::uint32_t>(walk.length));
    AUX::WString text;
    fuzz::Require(range.GetText(text));
    fuzz::Require(again.SetText(text) == !range.Entries.IsEmpty());
    fuzz::Require(WalkOf(again) == walk);
    return 0;
}
