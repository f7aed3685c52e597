#include "objects/operation_lists.h"

#include "cab/data_array.h"
#include "cab/data_dictionary.h"

namespace AUX {

namespace {

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070490);

}  // namespace

OperationList::OperationList(IUnknown* operation, const WCHAR* key) noexcept
    : owner_(platform::ComPtr<IUnknown>(operation).As<IBagOwner>()) {
    if (!owner_) return;
    CAB::DataItem* const root = owner_->Bag().Lock();
    if (CAB::DataDictionary* const keys = root ? root->AsDictionary() : nullptr) {
        item_ = keys->Find(key);
    }
}

OperationList::~OperationList() {
    if (owner_) owner_->Bag().Unlock();
}

bool OperationList::IsOne() const noexcept { return item_->GetType() == CAB::Kind::Object; }

HRESULT OperationList::GetCount(ULONG* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    if (!owner_) return E_INVALIDARG;
    if (!item_) return kNotFound;
    if (IsOne()) return Give(count, item_->GetObject() ? 1 : 0);
    CAB::DataArray* const array = item_->AsArray();
    return array ? Give(count, array->GetCount()) : E_INVALIDARG;
}

HRESULT OperationList::GetItem(ULONG index, IUnknown** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!owner_) return E_INVALIDARG;
    if (!item_) return E_FAIL;
    ULONG count = 0;
    if (const HRESULT result = GetCount(&count); FAILED(result)) return result;
    if (index >= count) return E_INVALIDARG;
    CAB::DataItem* const item = IsOne() ? item_ : item_->AsArray()->ItemAt(index);
    *object = platform::ComPtr<IUnknown>(item ? item->GetObject() : nullptr).Detach();
    return S_OK;
}

HRESULT OperationList::Add(IUnknown* object) noexcept {
    if (!item_) return E_INVALIDARG;
    if (IsOne()) return item_->SetObject(object) ? S_OK : E_FAIL;
    CAB::DataArray* const array = item_->AsArray();
    if (!array) return E_INVALIDARG;
    CAB::DataItem* const added = array->InsertAt(-1, CAB::Kind::Object);
    if (!added) return E_OUTOFMEMORY;
    if (added->SetObject(object)) return S_OK;
    array->DropAt(array->GetCount() - 1);
    return E_FAIL;
}

HRESULT OperationList::Clear() noexcept {
    if (!item_) return E_INVALIDARG;
    if (IsOne()) return item_->SetObject(nullptr) ? S_OK : E_FAIL;
    CAB::DataArray* const array = item_->AsArray();
    if (!array) return E_INVALIDARG;
    array->Clear();
    return S_OK;
}

}  // namespace AUX
