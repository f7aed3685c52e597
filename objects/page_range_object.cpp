#include "objects/page_range_object.h"

#include "objects/array_objects.h"
#include "objects/item_face.h"
#include "objects/value_objects.h"

namespace AUX {

namespace {

using platform::ComPtr;

HRESULT GiveRect(const BagRect& rect, double* left, double* top, double* right,
                 double* bottom) noexcept {
    if (!left || !top || !right || !bottom) return E_POINTER;
    *left = rect.left;
    *top = rect.top;
    *right = rect.right;
    *bottom = rect.bottom;
    return S_OK;
}

HRESULT Done(bool isDone) noexcept { return isDone ? S_OK : E_OUTOFMEMORY; }

/// The item that a client means with a bag or an item; null for another thing.
ComPtr<ItemFace> ItemBehind(IUnknown* bagOrItem) noexcept {
    ComPtr<IBag> bag;
    ComPtr<IBagItem> root;
    if (bagOrItem && SUCCEEDED(platform::QueryFor(bagOrItem, bag)) &&
        SUCCEEDED(bag->GetRootItem(root.Put()))) {
        return ItemFace::Behind(root.Get());
    }
    return ItemFace::Behind(bagOrItem);
}

/// Runs an operation on a dictionary, under its bag's lock.
template <class Work>
HRESULT WithDictionary(IUnknown* bagOrItem, Work work) noexcept {
    const ComPtr<ItemFace> face = ItemBehind(bagOrItem);
    CAB::DataItem* const item = face ? face->Item() : nullptr;
    CAB::DataDictionary* const dictionary = item ? item->AsDictionary() : nullptr;
    if (!dictionary) return E_INVALIDARG;
    CAB::DataRoot* const root = item->GetRoot();
    if (!root) return work(dictionary);
    const CAB::BagLockScope scope(*root);
    return work(dictionary);
}

}  // namespace

HRESULT PageRangeObject::Reset() noexcept {
    range_.Reset();
    return S_OK;
}

HRESULT PageRangeObject::SetText(BSTR text) noexcept {
    const std::uint32_t refusedBefore = RefusedRequests();
    const bool hasEntries = range_.SetText({text, SysStringLen(text)});
    if (RefusedRequests() != refusedBefore) return E_OUTOFMEMORY;
    return hasEntries ? S_OK : S_FALSE;
}

HRESULT PageRangeObject::GetText(BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    WString written;
    if (!range_.GetText(written)) return E_OUTOFMEMORY;
    return GiveText(text, written.Text(), written.Length());
}

HRESULT PageRangeObject::SetSpan(LONG first, LONG last) noexcept {
    return Done(range_.SetSpan(first, last));
}

HRESULT PageRangeObject::SetPages(IIntArray* pages) noexcept {
    if (!pages) return E_INVALIDARG;
    ULONG count = 0;
    if (const HRESULT result = pages->GetCount(&count); FAILED(result)) return result;
    Array<std::uint32_t> list;
    if (!list.EnsureCapacity(count)) return E_OUTOFMEMORY;
    for (ULONG i = 0; i < count; ++i) {
        ULONG page = 0;
        if (const HRESULT result = pages->GetItem(i, &page); FAILED(result)) return result;
        (void)list.Add(page);  // There is room.
    }
    return Done(range_.SetPages(list.Data(), count));
}

HRESULT PageRangeObject::SetType(LONG type) noexcept {
    range_.SetType(type);
    return S_OK;
}

HRESULT PageRangeObject::SetFilter(LONG filter) noexcept {
    range_.SetFilter(filter);
    return S_OK;
}

HRESULT PageRangeObject::SetReversed(VARIANT_BOOL isReversed) noexcept {
    range_.SetReversed(isReversed != VARIANT_FALSE);
    return S_OK;
}

HRESULT PageRangeObject::GetCount(LONG* count) noexcept { return Give(count, range_.GetCount()); }

HRESULT PageRangeObject::IsEmpty(VARIANT_BOOL* isEmpty) noexcept {
    return Give(isEmpty, ToVariantBool(range_.IsEmpty()));
}

HRESULT PageRangeObject::First(LONG* page) noexcept { return Next(nullptr, VARIANT_TRUE, page); }

HRESULT PageRangeObject::Next(VARIANT_BOOL* newRun, VARIANT_BOOL restart, LONG* page) noexcept {
    if (!page) return E_POINTER;
    bool isNewRun = false;
    *page = range_.Next(&isNewRun, restart != VARIANT_FALSE);
    if (newRun) *newRun = ToVariantBool(isNewRun);
    return *page >= 0 ? S_OK : S_FALSE;
}

HRESULT PageRangeObject::ToPageList(VARIANT_BOOL sorted, IIntArray** pages) noexcept {
    if (!pages) return E_POINTER;
    *pages = nullptr;
    Array<std::uint32_t> list;
    const ComPtr<IntArrayObject> made = platform::MakeObject<IntArrayObject>();
    if (!made || !range_.ToPageList(list, sorted != VARIANT_FALSE)) return E_OUTOFMEMORY;
    if (!list.IsEmpty()) {
        const HRESULT result = made->InsertRange(list.Data(), list.Count(), 0);
        if (FAILED(result)) return result;
    }
    *pages = ComPtr<IntArrayObject>(made).Detach();
    return S_OK;
}

HRESULT PageRangeObject::ToPageSet(LONG* count, IBitSet** pages) noexcept {
    if (count) *count = 0;
    if (!pages) return E_POINTER;
    *pages = nullptr;
    const ComPtr<BitSetObject> made = platform::MakeObject<BitSetObject>();
    std::int32_t distinct = 0;
    if (!made || !range_.ToPageSet(made->Bits(), &distinct)) return E_OUTOFMEMORY;
    if (count) *count = distinct;
    *pages = ComPtr<BitSetObject>(made).Detach();
    return S_OK;
}

HRESULT PageRangeObject::Normalize(VARIANT_BOOL allowAll) noexcept {
    range_.Normalize(allowAll != VARIANT_FALSE);
    return S_OK;
}

HRESULT PageRangeObject::Assign(IPageRange* other) noexcept {
    ComPtr<IPageRangeContent> content;
    if (!other || FAILED(platform::QueryFor(other, content))) return E_INVALIDARG;
    return Done(range_.Assign(content->Range()));
}

HRESULT PageRangeObject::Load(IUnknown* bag, LONG pageCount, ULONG flags) noexcept {
    return WithDictionary(
        bag, [&](CAB::DataDictionary* from) { return range_.Load(from, pageCount, flags); });
}

HRESULT PageRangeObject::Save(IUnknown* bag, LONG type) noexcept {
    return WithDictionary(bag, [&](CAB::DataDictionary* to) { return range_.Save(to, type); });
}

HRESULT PageRangeObject::GetPageCount(LONG* count) noexcept {
    return Give(count, range_.PageCount);
}

HRESULT PageRangeObject::SetPageCount(LONG count) noexcept {
    range_.SetPageCount(count);
    return S_OK;
}

HRESULT PageRangeObject::GetType(LONG* type) noexcept { return Give(type, range_.Type); }

HRESULT PageRangeObject::GetFilter(LONG* filter) noexcept { return Give(filter, range_.Filter); }

HRESULT PageRangeObject::GetReversed(VARIANT_BOOL* isReversed) noexcept {
    return Give(isReversed, ToVariantBool(range_.Reversed != 0));
}

HRESULT PageRangeObject::GetCurrentPage(LONG* page) noexcept {
    return Give(page, range_.CurrentPage);
}

HRESULT PageRangeObject::SetCurrentPage(LONG page) noexcept {
    range_.SetCurrentPage(page);
    return S_OK;
}

HRESULT PageRangeObject::GetCurrentRect(double* left, double* top, double* right,
                                        double* bottom) noexcept {
    return GiveRect(range_.CurrentRect, left, top, right, bottom);
}

HRESULT PageRangeObject::SetCurrentRect(double left, double top, double right,
                                        double bottom) noexcept {
    range_.CurrentRect = {left, top, right, bottom};
    return S_OK;
}

HRESULT PageRangeObject::GetCustomPage(LONG* page) noexcept {
    return Give(page, range_.CustomPage);
}

HRESULT PageRangeObject::SetCustomPage(LONG page) noexcept {
    range_.SetCustomPage(page);
    return S_OK;
}

HRESULT PageRangeObject::GetCustomRect(double* left, double* top, double* right,
                                       double* bottom) noexcept {
    return GiveRect(range_.CustomRect, left, top, right, bottom);
}

HRESULT PageRangeObject::SetCustomRect(double left, double top, double right,
                                       double bottom) noexcept {
    range_.CustomRect = {left, top, right, bottom};
    return S_OK;
}

HRESULT PageRangeObject::Clone(IPageRange** copy) noexcept {
    if (!copy) return E_POINTER;
    *copy = nullptr;
    const ComPtr<PageRangeObject> made = platform::MakeObject<PageRangeObject>();
    if (!made || !made->range_.Assign(range_)) return E_OUTOFMEMORY;
    *copy = ComPtr<PageRangeObject>(made).Detach();
    return S_OK;
}

}  // namespace AUX
