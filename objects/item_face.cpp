#include "objects/item_face.h"

#include "cab/notice.h"
#include "objects/item_face_work.h"
#include "objects/path_item.h"

namespace AUX {

using CAB::DataItem;
using CAB::Kind;

platform::ComPtr<ItemFace> ItemFace::MakeSpare() noexcept {
    platform::ComPtr<ItemFace> made;
    made.Attach(new (std::nothrow) ItemFace);
    return made;
}

platform::ComPtr<ItemFace> ItemFace::Bind(DataItem& item,
                                          platform::ComPtr<ItemFace> spare) noexcept {
    for (;;) {
        // An item's wrapper is always the link of its face.
        if (CAB::ItemWrapper* const present = item.GetWrapper()) {
            return platform::ComPtr<ItemFace>(&static_cast<Link*>(present)->Face());
        }
        if (!spare) return spare;
        if (item.ExchangeWrapper(nullptr, &spare->link_)) {
            spare->item_ = &item;
            return spare;
        }
    }
}

platform::ComPtr<ItemFace> ItemFace::Of(DataItem& item) noexcept {
    return Bind(item, item.GetWrapper() ? platform::ComPtr<ItemFace>() : MakeSpare());
}

platform::ComPtr<ItemFace> ItemFace::Behind(IUnknown* object) noexcept {
    platform::ComPtr<ItemFace> face;
    if (object) (void)platform::QueryFor(object, face);  // A refusal leaves it null.
    return face;
}

DataItem* ItemFace::Item() const noexcept {
    // Of forwarders only those of paths have faces.
    if (!item_ || !item_->IsProxyOwned()) return item_;
    return static_cast<PathItem*>(item_)->IsOrphan() ? nullptr : item_;
}

HRESULT ItemFace::QueryInterface(REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (IsEqualIID(id, platform::InterfaceId<ItemFace>())) {
        *object = this;
    } else if (IsEqualIID(id, platform::InterfaceId<IUnknown>()) ||
               IsEqualIID(id, platform::InterfaceId<IDispatch>()) ||
               IsEqualIID(id, platform::InterfaceId<IBagItem>())) {
        *object = static_cast<IBagItem*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG ItemFace::Release() noexcept {
    if (--references_ != 0) return references_;
    if (item_) {
        item_->ExchangeWrapper(&link_, nullptr);
        if (item_->IsProxyOwned()) delete item_;
    }
    delete this;
    return 0;
}

// -- Kind and state

HRESULT ItemFace::GetKind(LONG* kind) noexcept {
    if (!kind) return E_POINTER;
    *kind = 0;
    return With([&](DataItem& item) {
        *kind = static_cast<LONG>(item.GetType());
        return S_OK;
    });
}

HRESULT ItemFace::IsKind(LONG kind) noexcept {
    return With([&](DataItem& item) { return Accepted(item.IsType(static_cast<Kind>(kind))); });
}

HRESULT ItemFace::IsPresent(LONG* isPresent) noexcept {
    if (!isPresent) return E_POINTER;
    *isPresent = 0;
    return With([&](DataItem& item) {
        *isPresent = item.GetType() != Kind::None;
        return S_OK;
    });
}

HRESULT ItemFace::Reset() noexcept {
    return With([](DataItem& item) { return item.Reset() ? S_OK : E_FAIL; });
}

HRESULT ItemFace::GetLastStatus(LONG* status) noexcept {
    if (!status) return E_POINTER;
    *status = CAB::GetNotice();
    return Item() ? S_OK : E_FAIL;
}

HRESULT ItemFace::GetFlags(LONG* flags) noexcept {
    if (!flags) return E_POINTER;
    *flags = 0;
    return With([&](DataItem& item) {
        *flags = item.GetFlags() & CAB::ItemTransient ? kFaceTransient : 0;
        return S_OK;
    });
}

HRESULT ItemFace::SetFlags(LONG flags) noexcept {
    return With([&](DataItem& item) {
        if (item.GetType() == Kind::None) return E_INVALIDARG;
        item.SetFlags(flags & kFaceTransient ? CAB::ItemTransient : 0, CAB::ItemTransient);
        return S_OK;
    });
}

HRESULT ItemFace::IsAtDefault(VARIANT_BOOL* isDefault) noexcept {
    if (!isDefault) return E_POINTER;
    *isDefault = VARIANT_FALSE;
    return With([&](DataItem& item) {
        *isDefault = ToVariantBool(item.IsDefault());
        return S_OK;
    });
}

HRESULT ItemFace::IsEqual(IBagItem* other, VARIANT_BOOL* isEqual) noexcept {
    if (!isEqual) return E_POINTER;
    *isEqual = VARIANT_FALSE;
    return With([&](DataItem& item) {
        return WithOther(other, [&](DataItem& its) {
            *isEqual = ToVariantBool(item.Equals(&its, 0));
            return S_OK;
        });
    });
}

HRESULT ItemFace::Assign(IBagItem* source) noexcept {
    return With([&](DataItem& item) {
        return WithOther(source, [&](DataItem& its) {
            const std::uint32_t refusedBefore = RefusedRequests();
            if (!item.Assign(&its, false, false)) return E_INVALIDARG;
            // Containers get over a child that refuses.
            return RefusedRequests() == refusedBefore ? S_OK : E_OUTOFMEMORY;
        });
    });
}

}  // namespace AUX
