#include "cab/data_array.h"
#include "cab/data_dictionary.h"
#include "cab/item_path.h"
#include "objects/item_face_work.h"
#include "objects/path_item.h"
#include "objects/variant_value.h"

namespace AUX {

using CAB::DataArray;
using CAB::DataDictionary;
using CAB::DataItem;
using CAB::Kind;
using platform::ComPtr;

HRESULT ItemFace::Item(VARIANT path, IBagItem** item) noexcept {
    return Lookup(path, Way::Made, item);
}

HRESULT ItemFace::EnsureItem(VARIANT path, LONG kind, IBagItem** item) noexcept {
    HRESULT result = Lookup(path, Way::AsItIs, item);
    if (result != S_FALSE) return result;
    result = kind == 0 ? E_INVALIDARG : (*item)->IsKind(kind);
    if (SUCCEEDED(result)) return result;
    (*item)->Release();
    *item = nullptr;
    return result;
}

HRESULT ItemFace::Lookup(const VARIANT& path, Way way, IBagItem** item) noexcept {
    if (!item) return E_POINTER;
    *item = nullptr;
    return With([&](DataItem& own) -> HRESULT {
        if (path.vt == VT_EMPTY || path.vt == VT_NULL) {
            AddRef();
            *item = this;
            return S_OK;
        }
        WString text;
        if (!PathOf(path, text) || text.IsEmpty()) return E_INVALIDARG;
        if (DataItem* const found = CAB::FindPath(own, text)) {
            *item = Of(*found).Detach();
            return *item ? S_OK : E_OUTOFMEMORY;
        }
        // Made first, so that memory runs out before containers are made.
        ComPtr<ItemFace> face = MakeSpare();
        std::unique_ptr<PathItem> missing = PathItem::Make(own, text);
        if (!face || !missing) return E_OUTOFMEMORY;
        if (DataItem* const made =
                way == Way::Made ? CAB::MakePath(own, text, Kind::None) : nullptr) {
            *item = Bind(*made, std::move(face)).Detach();
            return S_OK;
        }
        *item = Bind(*missing.release(), std::move(face)).Detach();  // It owns the place.
        return S_FALSE;
    });
}

HRESULT ItemFace::Exists(LPCWSTR path, LONG kind, VARIANT_BOOL* exists) noexcept {
    if (!exists) return E_POINTER;
    *exists = VARIANT_FALSE;
    return With([&](DataItem& item) {
        const auto wanted = static_cast<Kind>(kind);
        const WStringView text = TextAt(path);
        DataItem* const found = text.empty()
                                    ? item.Cast(wanted)
                                    : CAB::MakePath(item, text, wanted, CAB::KindMatch::Strict);
        *exists = ToVariantBool(found);
        return S_OK;
    });
}

HRESULT ItemFace::GetCount(LONG* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return With([&](DataItem& item) {
        CAB::DataContainer* const container = item.AsContainer();
        if (container) *count = static_cast<LONG>(container->GetCount());
        return S_OK;
    });
}

HRESULT ItemFace::KeyAt(LONG index, BSTR* key) noexcept {
    if (!key) return E_POINTER;
    *key = nullptr;
    return With([&](DataItem& item) -> HRESULT {
        DataDictionary* const dictionary = item.AsDictionary();
        if (!dictionary || index < 0) return E_INVALIDARG;
        const auto place = static_cast<std::uint32_t>(index);
        if (place >= dictionary->GetCount()) return E_INVALIDARG;
        const WStringView text = dictionary->KeyAt(place);
        return GiveText(key, text.data(), static_cast<UINT>(text.size()));
    });
}

// -- Adding

DataItem* ItemFace::AddChild(const VARIANT& key, Kind kind, CAB::Growth& growth) noexcept {
    DataItem* const item = Item();
    DataArray* const array = item->AsArray();
    if (!array) {
        const WStringView path = TextOf(key);
        if (path.empty()) return nullptr;
        return CAB::MakePath(*item, path, kind, CAB::KindMatch::AnyPresent, &growth);
    }
    LONG index = -1;
    if (!IsMissing(key) && !IndexOf(key, index)) return nullptr;
    const LONG count = static_cast<LONG>(array->GetCount());
    if (index < 0 || index > count) index = count;
    const CAB::Growth added = {array, array->GetFlags(), index, false, {}};
    DataItem* const element = array->InsertAt(index, kind);
    if (element) growth = added;
    return element;
}

template <class Work>
HRESULT ItemFace::Adding(IBagItem** item, Work work) noexcept {
    if (!item) return E_POINTER;
    *item = nullptr;
    return With([&](DataItem&) -> HRESULT {
        ComPtr<ItemFace> spare = MakeSpare();
        if (!spare) return E_OUTOFMEMORY;
        DataItem* const added = work();
        if (!added) return E_INVALIDARG;
        *item = Bind(*added, std::move(spare)).Detach();
        return S_OK;
    });
}

HRESULT ItemFace::GetOrAdd(VARIANT key, LONG kind, IBagItem** item) noexcept {
    CAB::Growth growth;
    return Adding(item, [&] { return AddChild(key, static_cast<Kind>(kind), growth); });
}

HRESULT ItemFace::GetOrAddRaw(VARIANT key, LONG kind, void** item) noexcept {
    if (!item) return E_POINTER;
    *item = nullptr;
    return With([&](DataItem&) {
        CAB::Growth growth;
        *item = AddChild(key, static_cast<Kind>(kind), growth);
        return Accepted(*item);
    });
}

HRESULT ItemFace::GetOrAddWithValue(VARIANT key, LONG kind, VARIANT value,
                                    IBagItem** item) noexcept {
    const Kind wanted = kind ? static_cast<Kind>(kind) : KindOf(value);
    CAB::Growth growth;
    HRESULT result = Adding(item, [&] { return AddChild(key, wanted, growth); });
    if (FAILED(result)) return result;
    result = (*item)->PutValueByPointer(&value);
    if (SUCCEEDED(result)) return result;
    (*item)->Release();
    *item = nullptr;
    growth.Undo();
    return result;
}

HRESULT ItemFace::Append(LONG kind, IBagItem** item) noexcept {
    return Adding(item, [&]() -> DataItem* {
        DataArray* const array = Item()->AsArray();
        return array ? array->InsertAt(-1, static_cast<Kind>(kind)) : nullptr;
    });
}

// -- Removing and moving

HRESULT ItemFace::Remove(VARIANT keyOrIndex) noexcept {
    return With([&](DataItem& item) {
        LONG index = -1;
        if (DataDictionary* const dictionary = item.AsDictionary()) {
            const WStringView key = TextOf(keyOrIndex);
            if (key.data()) return Accepted(dictionary->RemoveKey(key));
            return Accepted(IndexOf(keyOrIndex, index) && dictionary->RemoveAt(index));
        }
        DataArray* const array = item.AsArray();
        return Accepted(array && (IsMissing(keyOrIndex) || IndexOf(keyOrIndex, index)) &&
                        array->RemoveAt(index));
    });
}

HRESULT ItemFace::RemoveRange(LONG first, LONG count) noexcept {
    return With([&](DataItem& item) {
        DataArray* const array = item.AsArray();
        return Accepted(array && count >= 0 &&
                        array->RemoveRange(first, static_cast<std::uint32_t>(count)));
    });
}

HRESULT ItemFace::Move(LONG first, LONG to, LONG count) noexcept {
    return With([&](DataItem& item) {
        DataArray* const array = item.AsArray();
        return Accepted(array && array->Move(first, to, count));
    });
}

}  // namespace AUX
