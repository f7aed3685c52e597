#include "automation/page_range.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cab/data_array.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"

namespace AUX {
namespace {

using platform::FromUtf8;
using platform::ToUtf8;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

struct Step {
    std::int32_t page;
    bool beginsRun;
    bool operator==(const Step&) const = default;
};
using Walk = std::vector<Step>;

std::string Show(const Walk& walk) {
    std::ostringstream out;
    const char* between = "";
    for (const Step& step : walk) {
        out << between << (step.beginsRun ? "*" : "") << step.page;
        between = " ";
    }
    return out.str();
}

Walk WalkOf(PageRange& range) {
    Walk walk;
    bool begins = true;
    for (std::int32_t page = range.Next(&begins, true); page >= 0;
         page = range.Next(&begins, false)) {
        walk.push_back({page, begins});
        if (walk.size() > 100'000) break;
    }
    EXPECT_FALSE(begins) << "at the end";
    EXPECT_EQ(range.Next(&begins, false), -1) << "behind the end";
    return walk;
}

std::string TextOf(const PageRange& range) {
    WString text;
    EXPECT_TRUE(range.GetText(text));
    return ToUtf8({text.Text(), text.Length()});
}

TEST(PageRange, TextsAreReadAsTheTableTells) {
    for (const auto& row : test_support::ReadCases(AUTOMATION_CASES "page_texts.tsv", 5)) {
        const std::string count = ToUtf8(row[0]), how = ToUtf8(row[2]), read = ToUtf8(row[4]);
        SCOPED_TRACE(ToUtf8(row[1]) + " " + how);
        PageRange range;
        range.SetPageCount(std::stoi(count));
        range.SetType(PageRange::kCustom);
        if (how.find('o') != std::string::npos) range.SetFilter(PageRange::kOddPages);
        if (how.find('e') != std::string::npos) range.SetFilter(PageRange::kEvenPages);
        range.SetReversed(how.find('r') != std::string::npos);
        EXPECT_EQ(range.SetText(WStringView(row[1])), read != "none");
        EXPECT_EQ(Show(WalkOf(range)), ToUtf8(row[3]));
        EXPECT_EQ(TextOf(range), read == "none" ? "" : read);
    }
}

/// The pages that a range means, written down one by one.
Walk Meant(const PageRange& range) {
    Walk walk;
    const std::int64_t count = range.PageCount;
    const auto add = [&](std::int64_t page, bool isFiltered, bool begins) {
        if (page < 0 || page >= count) return false;
        if (isFiltered && range.Filter == 4 && page % 2 != 0) return false;
        if (isFiltered && range.Filter == 5 && page % 2 == 0) return false;
        walk.push_back({static_cast<std::int32_t>(page), begins || walk.empty()});
        return true;
    };
    std::vector<std::int64_t> pages;
    switch (range.Type) {
        case 1:
        case 4:
        case 5:
            for (std::int64_t page = 0; page < count; ++page) {
                if (range.Type == 1 || page % 2 == (range.Type == 5 ? 1 : 0)) pages.push_back(page);
            }
            break;
        case 2:
            pages = {0};
            break;
        case 3:
            pages = {count - 1};
            break;
        case 7:
            pages.assign(range.Pages.begin(), range.Pages.end());
            break;
        case 8:
        case 9:
            pages = {range.CurrentPage};
            break;
        case 10:
            pages = {range.CustomPage};
            break;
        case 6: {
            std::vector<const PageSpan*> entries(range.Entries.begin(), range.Entries.end());
            if (range.Reversed) std::reverse(entries.begin(), entries.end());
            for (const PageSpan* entry : entries) {
                const auto first = static_cast<std::uint32_t>(entry->First);
                const auto last = static_cast<std::uint32_t>(entry->Last);
                std::vector<std::int64_t> span;
                for (std::int64_t page = std::min(first, last);
                     page <= std::max(first, last) && page < count; ++page) {
                    span.push_back(page);
                }
                if ((first >= last) != (range.Reversed != 0))
                    std::reverse(span.begin(), span.end());
                bool begins = true;
                for (const std::int64_t page : span) begins = !add(page, true, begins) && begins;
            }
            return walk;
        }
        default:
            break;
    }
    if (range.Reversed) std::reverse(pages.begin(), pages.end());
    for (const std::int64_t page : pages) {
        const bool isApart = !walk.empty() && std::abs(page - walk.back().page) != 1;
        add(page, range.Type == 1 || range.Type == 7, range.Type == 7 && isApart);
    }
    return walk;
}

TEST(PageRange, CountsListsAndSetsAgreeWithTheWalk) {
    constexpr unsigned kSeed = 5;
    std::mt19937 random(kSeed);
    const auto upTo = [&](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const char* const kPieces[] = {"1", "2", "3", "5", "7", "9", "12", "-",  "-",   "-",
                                   ",", ",", ";", "^", "0", " ", "x",  "-4", "^2-", "2147483648"};
    for (int run = 0; run < 20'000; ++run) {
        std::string text;
        for (int pieces = upTo(12); pieces > 0; --pieces) text += kPieces[upTo(20)];
        PageRange range;
        range.SetPageCount(upTo(14) - 1);
        (void)range.SetText(WStringView(FromUtf8(text)));
        std::vector<std::uint32_t> pages;
        for (int i = upTo(6); i > 0; --i) pages.push_back(static_cast<std::uint32_t>(upTo(15)));
        ASSERT_TRUE(range.SetPages(pages.data(), static_cast<std::uint32_t>(pages.size())));
        range.SetCurrentPage(upTo(15) - 2);
        range.SetCustomPage(upTo(15) - 2);
        (void)range.GetCount();  // What is remembered must not outlive what comes next.
        range.SetType(upTo(3) ? 6 : upTo(13) - 1);
        range.SetFilter(upTo(7) - 1);
        range.SetReversed(upTo(2) != 0);
        SCOPED_TRACE(::testing::Message()
                     << "seed " << kSeed << ", run " << run << ": \"" << text << "\" of "
                     << range.PageCount << ", type " << range.Type);
        const Walk walk = WalkOf(range);
        ASSERT_EQ(Show(walk), Show(Meant(range)));
        ASSERT_EQ(range.GetCount(), static_cast<std::int32_t>(walk.size()));
        ASSERT_EQ(range.IsEmpty(), walk.empty());

        const std::int32_t first = range.First();
        Array<std::uint32_t> list, sorted;
        BitSet set;
        std::int32_t distinct = -1;
        ASSERT_TRUE(range.ToPageList(list, false));
        ASSERT_TRUE(range.ToPageList(sorted, true));
        ASSERT_TRUE(range.ToPageSet(set, &distinct));
        std::set<std::uint32_t> wanted;
        for (const Step& step : walk) wanted.insert(static_cast<std::uint32_t>(step.page));
        ASSERT_TRUE(std::equal(list.begin(), list.end(), walk.begin(), walk.end(),
                               [](std::uint32_t page, const Step& step) {
                                   return page == static_cast<std::uint32_t>(step.page);
                               }));
        std::vector<std::uint32_t> ordered(wanted.begin(), wanted.end());
        if (range.Reversed) std::reverse(ordered.begin(), ordered.end());
        ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), ordered.begin(), ordered.end()));
        ASSERT_EQ(distinct, static_cast<std::int32_t>(wanted.size()));
        ASSERT_EQ(set.Size(), static_cast<std::uint32_t>(range.PageCount));
        for (std::uint32_t page = 0; page < set.Size(); ++page) {
            ASSERT_EQ(set.Test(page), wanted.count(page) == 1);
        }
        if (walk.size() > 1) {
            ASSERT_EQ(range.Next(nullptr, false), walk[1].page) << "lists leave the walk alone";
        }
        ASSERT_EQ(first, walk.empty() ? -1 : walk[0].page);

        PageRange again, copy;
        again.SetPageCount(range.PageCount);
        again.SetReversed(range.Reversed != 0);
        again.SetType(PageRange::kCustom);
        range.SetType(PageRange::kCustom);
        range.SetFilter(-1);
        ASSERT_EQ(again.SetText(WStringView(FromUtf8(TextOf(range)))), !range.Entries.IsEmpty());
        ASSERT_EQ(Show(WalkOf(again)), Show(WalkOf(range)));
        ASSERT_EQ(TextOf(again), TextOf(range));
        ASSERT_TRUE(copy.Assign(range));
        ASSERT_EQ(Show(WalkOf(copy)), Show(WalkOf(range)));
    }
}

// What is left of a walk when the document changes under it: the pages that are still there.
TEST(PageRange, WalksOnInADocumentThatChanges) {
    const struct {
        std::int32_t type;
        bool isReversed;
        const WCHAR* text;
        int taken;
        std::int32_t count;
        std::vector<std::int32_t> rest;
    } kCases[] = {
        {1, true, TEXT(""), 2, 3, {2, 1, 0}},    {1, false, TEXT(""), 2, 3, {2}},
        {1, false, TEXT(""), 5, 3, {}},          {1, false, TEXT(""), 2, 0, {}},
        {1, true, TEXT(""), 9, 20, {0}},         {4, true, TEXT(""), 1, 4, {2, 0}},
        {5, true, TEXT(""), 1, 4, {3, 1}},       {6, false, TEXT("9-1"), 2, 3, {2, 1, 0}},
        {6, true, TEXT("1-9"), 2, 3, {2, 1, 0}}, {6, false, TEXT("2-9, 1"), 2, 3, {0}},
        {6, false, TEXT("9-7, 2"), 1, 3, {1}},   {6, false, TEXT("2-"), 2, 5, {3, 4}},
        {7, true, TEXT(""), 1, 3, {1}},
    };
    const std::uint32_t pages[] = {8, 1, 9};
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        PageRange range;
        range.SetPageCount(10);
        (void)range.SetText(c.text);
        ASSERT_TRUE(range.SetPages(pages, 3));
        range.SetType(c.type);
        range.SetReversed(c.isReversed);
        (void)range.First();
        for (int i = 1; i < c.taken; ++i) EXPECT_GE(range.Next(nullptr, false), 0);
        range.SetPageCount(c.count);
        std::vector<std::int32_t> rest;
        for (std::int32_t page; rest.size() < 20 && (page = range.Next(nullptr, false)) >= 0;) {
            rest.push_back(page);
        }
        EXPECT_EQ(rest, c.rest);
        EXPECT_EQ(range.Next(nullptr, false), -1) << "behind the end";
    }
}

TEST(PageRange, KeepsToTheEndsOf32Bits) {
    PageRange range;
    range.SetPageCount(kLargest);
    const struct {
        std::int32_t type, filter;
        std::int32_t count, first, last;
    } kCases[] = {
        {1, 1, kLargest, 0, kLargest - 1},         {1, 4, kLargest / 2 + 1, 0, kLargest - 1},
        {1, 5, kLargest / 2, 1, kLargest - 2},     {3, 1, 1, kLargest - 1, kLargest - 1},
        {4, 1, kLargest / 2 + 1, 0, kLargest - 1}, {5, 1, kLargest / 2, 1, kLargest - 2},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        range.SetType(c.type);
        range.SetFilter(c.filter);
        EXPECT_EQ(range.GetCount(), c.count);
        range.SetReversed(false);
        EXPECT_EQ(range.First(), c.first);
        range.SetReversed(true);
        EXPECT_EQ(range.First(), c.last);
    }
    range.SetType(PageRange::kCustom);
    range.SetFilter(-1);
    EXPECT_TRUE(range.SetText(TEXT("2-, 2-, 2147483648-")));
    EXPECT_EQ(range.GetCount(), kLargest) << "as many as are counted";
    range.SetReversed(false);
    EXPECT_EQ(range.First(), 1);
    range.Entries[0]->First = kLargest - 2;
    EXPECT_EQ(range.First(), kLargest - 2);
    EXPECT_EQ(range.Next(nullptr, false), kLargest - 1);
    EXPECT_EQ(range.Next(nullptr, false), 1) << "the next entry";

    const struct {
        std::int32_t pages, first, last;
        const char* text;
    } kSpans[] = {
        {10, 2, -1, "3-10"},  {0, 2, -1, "3-"},
        {10, 2, 100, "3-10"}, {10, -5, 3, "1-4"},
        {10, 5, 3, "6"},      {0, kLargest, -7, "2147483648-"},
        {0, 0, 0, "1"},       {0, kLargest, kLargest, "2147483648"},
    };
    for (const auto& c : kSpans) {
        PageRange span;
        span.SetPageCount(c.pages);
        EXPECT_TRUE(span.SetSpan(c.first, c.last));
        EXPECT_EQ(TextOf(span), c.text);
        EXPECT_EQ(span.Type, std::uint32_t{PageRange::kCustom});
    }
}

// Each span is one request for memory, but for the row that they stand in.
TEST(PageRange, AMillionSpansAreReadOnce) {
    std::string text;
    constexpr int kSpans = 1'000'000;
    for (int i = 0; i < kSpans; ++i) text += i % 2 ? "5-2," : "7;";
    const platform::WideString wide = FromUtf8(text);
    testing::AllocationWatch watch;
    PageRange range;
    range.SetPageCount(10);
    range.SetType(PageRange::kCustom);
    EXPECT_TRUE(range.SetText(WStringView(wide)));
    EXPECT_LT(watch.Requests(), kSpans + 100u);
    EXPECT_EQ(range.GetCount(), kSpans / 2 * 5);
}

TEST(PageRange, GivesUpWhatTheDocumentDoesNotHave) {
    const BagRect full = {0, 2, 1, 0}, flat = {0, 0, 1, 0};
    const struct {
        std::int32_t type, current, custom;
        BagRect currentRect, customRect;
        std::int32_t withAll, without;
        bool keepsCurrent, keepsCustom;
    } kCases[] = {
        {9, 3, 3, full, full, 9, 9, true, true},    {9, 9, 3, full, full, 1, 0, false, true},
        {9, 3, 3, flat, full, 1, 0, true, true},    {8, 9, 3, full, full, 8, 8, false, true},
        {10, 3, 9, full, full, 1, 0, true, false},  {10, 3, 3, full, flat, 1, 0, true, false},
        {10, 3, 3, full, full, 10, 10, true, true}, {7, 3, 9, full, full, 1, 0, true, false},
        {6, 3, 3, full, full, 6, 6, true, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        for (const bool allowsAll : {true, false}) {
            PageRange range;
            range.SetPageCount(5);
            range.SetType(c.type);
            range.SetCurrentPage(c.current);
            range.SetCustomPage(c.custom);
            range.CurrentRect = c.currentRect;
            range.CustomRect = c.customRect;
            (void)range.GetCount();
            range.Normalize(allowsAll);
            EXPECT_EQ(range.Type, static_cast<std::uint32_t>(allowsAll ? c.withAll : c.without));
            EXPECT_EQ(range.CurrentPage, c.keepsCurrent ? c.current : -1);
            EXPECT_EQ(range.CustomPage, c.keepsCustom ? c.custom : -1);
            EXPECT_EQ(IsEmptyRect(range.CustomRect), !c.keepsCustom);
            EXPECT_EQ(range.GetCount(), static_cast<std::int32_t>(WalkOf(range).size()));
        }
    }
}

// -- Bags

void PutInt(CAB::DataDictionary& bag, const WCHAR* key, std::int32_t value) {
    ASSERT_TRUE(bag.GetOrAdd(key, -1, CAB::Kind::Int)->SetInt(&value, 0));
}

void PutRect(CAB::DataDictionary& bag, const WCHAR* key, const BagRect& rect) {
    ASSERT_TRUE(SaveBagRect(rect, *bag.GetOrAdd(key, -1, CAB::Kind::Dictionary)->AsDictionary()));
}

TEST(PageRange, LoadsWhatTheFlagsAllow) {
    constexpr std::uint32_t kAll = 0x40, kFull = 0x80000000u, kCurrent = 2, kRects = 2 | 4 | 8;
    const struct {
        std::int32_t type, current, custom;
        bool hasRects;
        const WCHAR* text;
        std::vector<std::int32_t> pages;
        std::uint32_t flags;
        std::int32_t loaded;
        bool isCorrected;
    } kCases[] = {
        {6, -1, -1, false, TEXT("2-3"), {}, 0, 6, false},
        {1, -1, -1, false, TEXT(""), {}, kAll, 1, false},
        {1, -1, -1, false, TEXT(""), {}, 0, 6, true},
        {1, 2, -1, false, TEXT(""), {}, kCurrent, 8, true},
        {1, 2, -1, false, TEXT(""), {4, 99, -1}, kCurrent | 0x10, 7, true},
        {7, 2, -1, false, TEXT(""), {4}, 0, 6, true},
        {7, 2, -1, false, TEXT(""), {4}, 0x10, 7, false},
        {11, -1, -1, false, TEXT(""), {}, kAll, 1, true},
        {-1, -1, -1, false, TEXT(""), {}, kAll, 1, true},
        {8, 99, -1, false, TEXT("1"), {}, kCurrent, 6, true},
        {8, 99, -1, false, TEXT("1"), {}, 0, 8, false},
        {8, 3, -1, false, TEXT("1"), {}, kCurrent, 8, false},
        {9, 3, -1, true, TEXT("1"), {}, kRects, 9, false},
        {9, 3, -1, false, TEXT("1"), {}, kRects, 8, true},
        {9, 3, -1, false, TEXT("1"), {}, kCurrent, 9, false},
        {10, -1, 3, true, TEXT("1"), {}, kRects, 10, false},
        {10, -1, 3, false, TEXT("1"), {}, kRects, 6, true},
        {10, -1, 99, true, TEXT("1"), {}, kRects, 6, true},
        {2, -1, -1, false, TEXT("1"), {}, 0, 2, false},
        {2, -1, -1, false, TEXT("1"), {}, kFull, 6, true},
        {4, -1, -1, false, TEXT("1"), {}, kAll, 1, true},
        {6, -1, -1, false, TEXT("99"), {}, kFull | kAll, 1, true},
        {6, 3, -1, false, TEXT("99"), {}, kFull | kCurrent, 8, true},
        {6, -1, -1, false, TEXT("99"), {}, kFull, 6, false},
        {0, -1, -1, false, TEXT("1"), {}, 0, 0, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        CAB::DataDictionary bag;
        PutInt(bag, TEXT("Type"), c.type);
        PutInt(bag, TEXT("Current"), c.current);
        PutInt(bag, TEXT("Custom"), c.custom);
        PutInt(bag, TEXT("Filter"), 5);
        PutRect(bag, TEXT("CustomRect"), c.hasRects ? BagRect{0, 2, 1, 0} : BagRect{});
        PutRect(bag, TEXT("CurrentRect"), c.hasRects ? BagRect{0, 2, 1, 0} : BagRect{});
        ASSERT_TRUE(bag.GetOrAdd(TEXT("Text"), -1, CAB::Kind::String)->SetText(c.text));
        auto* const array = bag.GetOrAdd(TEXT("Array"), -1, CAB::Kind::Array)->AsArray();
        for (const std::int32_t page : c.pages) {
            ASSERT_TRUE(array->InsertAt(-1, CAB::Kind::Int)->SetInt(&page, 0));
        }
        PageRange range;
        range.SetPageCount(5);
        EXPECT_EQ(range.Load(&bag, 0, c.flags), c.isCorrected ? S_FALSE : S_OK);
        EXPECT_EQ(range.Type, static_cast<std::uint32_t>(c.loaded));
        EXPECT_EQ(range.PageCount, 5);
        EXPECT_EQ(range.Filter, 1u) << "not asked for";
        EXPECT_EQ(range.Load(&bag, 7, c.flags | 0x20), c.isCorrected ? S_FALSE : S_OK);
        EXPECT_EQ(range.Filter, 5u);
        EXPECT_EQ(range.PageCount, 7);
    }
    EXPECT_EQ(PageRange().Load(nullptr, 5, 0), E_INVALIDARG);
    EXPECT_EQ(PageRange().Save(nullptr, -1), E_INVALIDARG);
}

TEST(PageRange, SavesWhatTheBagHasAPlaceFor) {
    PageRange range;
    range.SetPageCount(9);
    EXPECT_TRUE(range.SetText(TEXT(" 2 - 4")));
    const std::uint32_t pages[] = {3, 1};
    EXPECT_TRUE(range.SetPages(pages, 2));
    range.SetType(PageRange::kCustom);
    range.SetFilter(4);
    range.SetReversed(true);
    range.SetCurrentPage(2);
    range.SetCustomPage(9);
    range.CurrentRect = range.CustomRect = {0, 2, 1, 0};
    CAB::DataDictionary small, large;
    EXPECT_EQ(range.Save(&small, 8), S_OK);
    EXPECT_EQ(small.GetCount(), 4u) << "nothing else is added";
    PutInt(large, TEXT("Custom"), 0);
    PutInt(large, TEXT("Current"), 0);
    PutRect(large, TEXT("CustomRect"), {1, 1, 1, 1});
    PutRect(large, TEXT("CurrentRect"), {});
    (void)large.GetOrAdd(TEXT("Array"), -1, CAB::Kind::Array)
        ->AsArray()
        ->InsertAt(-1, CAB::Kind::Int);
    EXPECT_EQ(range.Save(&large, -1), S_OK);
    PageRange loaded;
    EXPECT_EQ(loaded.Load(&small, 9, 0), S_OK);
    EXPECT_EQ(loaded.Type, 8u) << "as was asked for";
    EXPECT_EQ(loaded.Load(&large, 9, 0x3F), S_OK);
    EXPECT_EQ(loaded.Type, 6u);
    EXPECT_EQ(loaded.Filter, 4u);
    EXPECT_TRUE(loaded.Reversed);
    EXPECT_EQ(ToUtf8({loaded.Text.Text(), loaded.Text.Length()}), " 2 - 4");
    EXPECT_EQ(loaded.CurrentPage, 2);
    EXPECT_EQ(loaded.CurrentRect.top, 2);
    EXPECT_EQ(loaded.CustomPage, -1) << "its rectangle was written as none";
    ASSERT_EQ(loaded.Pages.Count(), 2u);
    EXPECT_EQ(loaded.Pages[1], 1u);
}

TEST(PageRange, StaysWholeWhenMemoryRunsOut) {
    const std::uint32_t pages[] = {3, 1};
    const auto failures = test_support::FailEachAllocation([&](auto hasFailed) {
        PageRange range, copy;
        range.SetPageCount(10);
        range.SetType(PageRange::kCustom);
        const bool hasEntries = range.SetText(TEXT("1-3, 7, 9-"));
        EXPECT_EQ(hasEntries, !range.Entries.IsEmpty());
        EXPECT_TRUE(range.Entries.Count() == 3 || hasFailed());
        (void)range.SetPages(pages, 2);
        const bool isCopied = copy.Assign(range);
        EXPECT_TRUE(isCopied || hasFailed());
        EXPECT_EQ(copy.PageCount, isCopied ? 10 : 0) << "all or nothing";
        Array<std::uint32_t> list;
        EXPECT_TRUE(range.ToPageList(list, true) || hasFailed());
        CAB::DataDictionary bag;
        const HRESULT saved = range.Save(&bag, -1);
        EXPECT_TRUE(saved == S_OK || (saved == E_OUTOFMEMORY && hasFailed()));
        const HRESULT loaded = copy.Load(&bag, 10, 0x3F);
        EXPECT_TRUE(SUCCEEDED(loaded) || hasFailed());
    });
    EXPECT_GT(failures, 10u);
}

}  // namespace
}  // namespace AUX
