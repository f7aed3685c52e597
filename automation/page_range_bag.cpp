#include "automation/page_range.h"
#include "cab/data_array.h"

namespace AUX {
namespace {

using CAB::DataDictionary;
using CAB::DataItem;
using CAB::Kind;

std::int32_t ReadInt(DataDictionary& bag, WStringView key, std::int32_t missing) noexcept {
    DataItem* const item = bag.Find(key);
    std::int32_t value = 0;
    return item && item->GetInt(value) ? value : missing;
}

bool ReadFlag(DataDictionary& bag, WStringView key) noexcept {
    DataItem* const item = bag.Find(key);
    bool flag = false;
    if (item && item->GetBool(flag)) return flag;
    return ReadInt(bag, key, 0) != 0;
}

DataDictionary* FindRect(DataDictionary& bag, WStringView key) noexcept {
    DataItem* const item = bag.Find(key);
    return item ? item->AsDictionary() : nullptr;
}

DataItem* Make(DataDictionary& bag, WStringView key, Kind kind) noexcept {
    return bag.GetOrAdd(key.data(), static_cast<std::int64_t>(key.size()), kind);
}

bool WriteInt(DataItem* item, std::int32_t value) noexcept {
    return item && item->SetInt(&value, 0);
}

}  // namespace

void PageRange::LoadPlaces(DataDictionary& bag, std::uint32_t flags) noexcept {
    DataDictionary* const customRect = FindRect(bag, TEXT("CustomRect"));
    if ((flags & kReadCustom) && bag.Find(TEXT("Custom")) && customRect) {
        CustomPage = ReadInt(bag, TEXT("Custom"), -1);
        CustomRect = LoadBagRect(*customRect);
        if (!IsPage(CustomPage) || IsEmptyRect(CustomRect)) {
            CustomPage = -1;
            CustomRect = {};
        }
    }
    if (!(flags & kReadCurrent)) return;
    CurrentPage = ReadInt(bag, TEXT("Current"), -1);
    if (!IsPage(CurrentPage)) CurrentPage = -1;
    DataDictionary* const currentRect = FindRect(bag, TEXT("CurrentRect"));
    if (!(flags & kReadCurrentRect) || CurrentPage < 0 || !currentRect) return;
    CurrentRect = LoadBagRect(*currentRect);
    if (IsEmptyRect(CurrentRect)) CurrentRect = {};
}

bool PageRange::LoadPages(DataDictionary& bag) noexcept {
    DataItem* const item = bag.Find(TEXT("Array"));
    CAB::DataArray* const array = item ? item->AsArray() : nullptr;
    if (!array) return true;
    for (std::uint32_t i = 0; i < array->GetCount(); ++i) {
        DataItem* const element = array->ItemAt(i);
        std::int32_t page = -1;
        if (!element || !element->GetInt(page) || !IsPage(page)) continue;
        if (!Pages.Add(static_cast<std::uint32_t>(page))) return false;
    }
    return true;
}

/// Whether a type that was read may stay.
bool PageRange::FitsType(std::int32_t type, std::uint32_t flags) const noexcept {
    const bool hasPage = IsPage(CurrentPage);
    switch (type) {
        case kNone:
        case kCustom:
            return true;
        case kAll:
            return (flags & kAllowAll) != 0;
        case kFirst:
        case kLast:
            return !(flags & kNotEmpty);
        case kList:
            return !Pages.IsEmpty();
        case kCurrent:
            return !(flags & kReadCurrent) || hasPage;
        case kCurrentRect: {
            constexpr std::uint32_t kBoth = kReadCurrent | kReadCurrentRect;
            return (flags & kBoth) != kBoth || (hasPage && !IsEmptyRect(CurrentRect));
        }
        case kCustomRect:
            return IsPage(CustomPage) && !IsEmptyRect(CustomRect);
        default:  // Odd and even pages are kAll with a filter now.
            return false;
    }
}

/// Takes a type if it gives pages.
bool PageRange::TryType(std::uint32_t type) noexcept {
    const std::uint32_t before = Type;
    SetType(static_cast<std::int32_t>(type));
    if (!IsEmpty()) return true;
    SetType(static_cast<std::int32_t>(before));
    return false;
}

HRESULT PageRange::Load(DataDictionary* bag, std::int32_t count, std::uint32_t flags) noexcept {
    if (!bag) return E_INVALIDARG;
    const std::uint32_t refusedBefore = RefusedRequests();
    if (count == 0) count = PageCount;
    Reset();
    SetPageCount(count);
    if (flags & kReadReversed) Reversed = ReadFlag(*bag, TEXT("Reversed"));
    LoadPlaces(*bag, flags);
    if ((flags & kReadArray) && !LoadPages(*bag)) return E_OUTOFMEMORY;
    DataItem* const item = bag->Find(TEXT("Text"));
    if (const WString* const text = item ? item->GetString() : nullptr) (void)SetText(*text);

    const bool hasCurrent = (flags & kReadCurrent) && IsPage(CurrentPage);
    const std::int32_t type = ReadInt(*bag, TEXT("Type"), -1);
    bool isCorrected = !FitsType(type, flags);
    if (!isCorrected) {
        Type = static_cast<std::uint32_t>(type);
    } else if (flags & kAllowAll) {
        Type = kAll;
    } else {
        Type = !Pages.IsEmpty() ? kList : hasCurrent ? kCurrent : kCustom;
    }
    if (flags & kReadFilter) SetFilter(ReadInt(*bag, TEXT("Filter"), kAllPages));
    CachedCount = -1;
    if ((flags & kNotEmpty) && PageCount > 0 && IsEmpty()) {
        const bool isAll = (flags & kAllowAll) && TryType(kAll);
        if (isAll || (hasCurrent && TryType(kCurrent))) isCorrected = true;
    }
    if (RefusedRequests() != refusedBefore) return E_OUTOFMEMORY;
    return isCorrected ? S_FALSE : S_OK;
}

HRESULT PageRange::Save(DataDictionary* bag, std::int32_t type) const noexcept {
    if (!bag) return E_INVALIDARG;
    const std::uint32_t refusedBefore = RefusedRequests();
    const bool isReversed = Reversed != 0;
    const bool hasCustom = IsPage(CustomPage);
    bool isSaved = WriteInt(Make(*bag, TEXT("Type"), Kind::Int),
                            type == -1 ? static_cast<std::int32_t>(Type) : type) &&
                   WriteInt(Make(*bag, TEXT("Filter"), Kind::Int), static_cast<int>(Filter));
    DataItem* const reversed = isSaved ? Make(*bag, TEXT("Reversed"), Kind::Bool) : nullptr;
    isSaved = reversed && reversed->SetBool(&isReversed, 1);
    DataItem* const text = isSaved ? Make(*bag, TEXT("Text"), Kind::String) : nullptr;
    isSaved = text && text->SetText(Text);

    if (DataItem* const page = bag->Find(TEXT("Custom"))) {
        isSaved = WriteInt(page, CustomPage) && isSaved;
    }
    if (DataDictionary* const rect = FindRect(*bag, TEXT("CustomRect"))) {
        isSaved = SaveBagRect(hasCustom ? CustomRect : BagRect{}, *rect) && isSaved;
    }
    DataItem* const list = bag->Find(TEXT("Array"));
    if (CAB::DataArray* const array = list ? list->AsArray() : nullptr) {
        array->Clear();
        for (const std::uint32_t page : Pages) {
            isSaved = WriteInt(array->InsertAt(-1, Kind::Int), static_cast<std::int32_t>(page)) &&
                      isSaved;
        }
    }
    if (DataItem* const page = bag->Find(TEXT("Current"))) {
        isSaved = WriteInt(page, CurrentPage) && isSaved;
    }
    if (DataDictionary* const rect = FindRect(*bag, TEXT("CurrentRect"))) {
        isSaved = SaveBagRect(CurrentRect, *rect) && isSaved;
    }
    if (isSaved) return S_OK;
    return RefusedRequests() != refusedBefore ? E_OUTOFMEMORY : E_FAIL;
}

}  // namespace AUX
