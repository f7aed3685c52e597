#pragma once

#include <cstdint>

#include "automation/bag_rect.h"
#include "foundation/allocated.h"
#include "foundation/array.h"
#include "foundation/bit_set.h"
#include "foundation/wstring.h"

namespace AUX {

/// Pages from First to Last, downwards if First is the later one. Compared unsigned, so that a Last
/// of -1 means "to the end".
struct PageSpan : Allocated {
    std::int32_t First = 0;           ///< 0-based.
    std::int32_t Last = -1;           ///< 0-based.
    std::uint32_t OpenStart : 1 = 0;  ///< The text had no first number.
};
static_assert(sizeof(PageSpan) == 12);

/// Which pages of a document, and in which order. Pages are 0-based everywhere but in texts, and
/// every answer is limited to the document's count of pages. Not thread-safe.
///
/// A false result means that memory ran out, unless told otherwise.
class PageRange {
public:
    enum PageType : std::uint32_t {
        kNone,
        kAll,  ///< As Filter has it.
        kFirst,
        kLast,
        kOdd,  ///< By page number: 0, 2, 4, ...
        kEven,
        kCustom,  ///< Entries, as Filter has it.
        kList,    ///< Pages, as Filter has it.
        kCurrent,
        kCurrentRect,
        kCustomRect,
    };
    enum PageFilter : std::uint32_t { kAllPages = 1, kOddPages = 4, kEvenPages = 5 };

    /// What Load may read, and how strictly it takes it.
    enum LoadFlags : std::uint32_t {
        kReadReversed = 1,
        kReadCurrent = 2,
        kReadCurrentRect = 4,  ///< With kReadCurrent.
        kReadCustom = 8,
        kReadArray = 0x10,
        kReadFilter = 0x20,
        kAllowAll = 0x40,  ///< kAll is allowed.
        kNotEmpty = 0x80000000u,
    };

    PageRange() noexcept = default;
    ~PageRange() { RemoveEntries(); }
    PageRange(const PageRange&) = delete;
    PageRange& operator=(const PageRange&) = delete;

    /// Back to what a new object is; without pages.
    void Reset() noexcept;
    /// \param count  Pages of the document; below 1 if unknown. Texts that were read before stay as
    ///               they were read, and a walk under way goes on within the new count.
    void SetPageCount(std::int32_t count) noexcept;

    /// Reads spans such as "1-3, 7", "5-2", "8-" and "-3". '^' counts from the end: "^1" is the
    /// last page. What is no digit, '-' or '^' parts spans. Numbers beyond 31 bits count as the
    /// largest. Dropped are page 0 alone, spans wholly behind the last page, and those that memory
    /// runs out for. A "-3" that directly follows a span makes the whole text invalid: no entries
    /// are left. \return whether there are entries.
    bool SetText(WStringView text) noexcept;
    /// Writes the entries, joined by ", ". What lies before page 1 is written with '^'.
    bool GetText(WString& output) const noexcept;
    /// Makes it one span of type kCustom, with a text.
    /// \param last  Compared unsigned: -1 is the end.
    bool SetSpan(std::int32_t first, std::int32_t last) noexcept;
    /// Copies the pages for kList. \param pages  May be null if `count` is 0.
    bool SetPages(const std::uint32_t* pages, std::uint32_t count) noexcept;
    /// \param type  -1 means kAll; one above kCustomRect is as kNone.
    void SetType(std::int32_t type) noexcept;
    /// \param filter  -1 means kAllPages; what is no filter is ignored.
    void SetFilter(std::int32_t filter) noexcept;
    void SetReversed(bool isReversed) noexcept { Reversed = isReversed; }
    /// \param page  -1 if unknown.
    void SetCurrentPage(std::int32_t page) noexcept;
    void SetCustomPage(std::int32_t page) noexcept;

    /// How many pages a walk gives; a page that is named twice counts twice. At most 2147483647.
    [[nodiscard]] std::int32_t GetCount() noexcept;
    [[nodiscard]] bool IsEmpty() noexcept { return GetCount() == 0; }

    /// Begins a walk. \return as Next.
    std::int32_t First() noexcept { return Next(nullptr, true); }
    /// \param newRun   Gets whether the page begins a run: the first of a walk, the first of an
    ///                 entry, and in kList one that is no neighbour of the one before. May be null.
    /// \param restart  Begins a walk.
    /// \return the next page, or -1 at the end and from then on.
    std::int32_t Next(bool* newRun, bool restart) noexcept;

    /// All pages, in the order of a walk, or sorted without those that are named twice (downwards
    /// if Reversed is set). Leaves the walk under way alone. \return false with what fitted.
    [[nodiscard]] bool ToPageList(Array<std::uint32_t>& output, bool sorted) noexcept;
    /// All pages as bits of a set of PageCount. \param count  Gets how many; may be null.
    [[nodiscard]] bool ToPageSet(BitSet& output, std::int32_t* count) noexcept;

    /// Gives up what does not fit the page count; a type that needs it becomes kAll or kNone.
    void Normalize(bool allowAll) noexcept;

    /// Copies all, the walk under way too. \return false, with nothing changed.
    [[nodiscard]] bool Assign(const PageRange& other) noexcept;

    /// Reads "Type", "Text" and what the flags allow. The caller holds the bag's lock.
    /// \param bag    Null is E_INVALIDARG.
    /// \param count  Of pages; 0 means the one that the object has.
    /// \return S_FALSE if something was corrected, else S_OK; E_OUTOFMEMORY with what was read.
    HRESULT Load(CAB::DataDictionary* bag, std::int32_t count, std::uint32_t flags) noexcept;
    /// Writes "Type", "Filter", "Reversed" and "Text"; "Custom", "CustomRect", "Array", "Current"
    /// and "CurrentRect" only if the bag has them. The caller holds the bag's lock.
    /// \param bag   Null is E_INVALIDARG.
    /// \param type  What to write as the type; -1 for the object's.
    /// \return E_FAIL if the bag's template refuses an item; E_OUTOFMEMORY. What was written stays.
    HRESULT Save(CAB::DataDictionary* bag, std::int32_t type) const noexcept;

    Array<PageSpan*> Entries;
    WString Text;  ///< The one last given.
    Array<std::uint32_t> Pages;
    std::int32_t PageCount = 0;
    std::int32_t CachedCount = -1;
    std::int32_t CurrentPage = -1;
    std::int32_t CustomPage = -1;
    std::int32_t OuterCursor = kNotStarted;
    std::int32_t InnerCursor = kNotStarted;
    std::int32_t LastPage = kNoPage;
    std::uint32_t Type = kNone;
    std::uint32_t Filter = kAllPages;
    std::uint32_t Reversed = 0;
    BagRect CurrentRect, CustomRect;

private:
    static constexpr std::int32_t kNotStarted = -2;
    static constexpr std::int32_t kNoPage = -999;

    /// The ends of a span as far as the document goes.
    struct Extent {
        std::int32_t low = 0, high = -1;  // nothing if high is below low
        bool isUpward = true;
    };

    void RemoveEntries() noexcept;
    [[nodiscard]] bool Parse(WStringView text) noexcept;
    [[nodiscard]] bool AddEntry(std::int32_t first, std::int32_t last, bool isOpenStart) noexcept;
    [[nodiscard]] bool IsPage(std::int32_t page) const noexcept {
        return static_cast<std::uint32_t>(page) < static_cast<std::uint32_t>(PageCount);
    }
    [[nodiscard]] bool Passes(std::uint32_t page) const noexcept;
    [[nodiscard]] Extent ExtentOf(const PageSpan& span) const noexcept;
    [[nodiscard]] std::int64_t CountBetween(std::int32_t low, std::int32_t high) const noexcept;
    [[nodiscard]] std::int64_t Count() const noexcept;
    [[nodiscard]] std::int32_t Steps() const noexcept;
    void Rewind() noexcept;
    [[nodiscard]] bool Advance() noexcept;
    [[nodiscard]] std::int32_t NextPage(bool& newRun) noexcept;
    [[nodiscard]] std::int32_t NextOfEntries(bool& newRun) noexcept;
    [[nodiscard]] std::int32_t NextOfList(bool& newRun) noexcept;
    template <class Take>
    bool Walk(Take take) noexcept;
    void LoadPlaces(CAB::DataDictionary& bag, std::uint32_t flags) noexcept;
    [[nodiscard]] bool LoadPages(CAB::DataDictionary& bag) noexcept;
    [[nodiscard]] bool FitsType(std::int32_t type, std::uint32_t flags) const noexcept;
    [[nodiscard]] bool TryType(std::uint32_t type) noexcept;
};

}  // namespace AUX
