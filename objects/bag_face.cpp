#include "objects/bag_face.h"

#include "cab/bag_text.h"
#include "cab/foreign_stream.h"
#include "cab/item_forwarder.h"
#include "cab/notice.h"
#include "cab/registry_load.h"
#include "foundation/memory.h"
#include "objects/item_face.h"
#include "objects/registry_arguments.h"
#include "platform/system.h"

namespace AUX {

using CAB::BagLock;

platform::ComPtr<BagFace> BagFace::Make(CAB::DataRoot* bag) noexcept {
    platform::ComPtr<BagFace> made;
    made.Attach(new (std::nothrow) BagFace);
    if (!made) {
        bag->Release();
        return made;
    }
    made->bag_ = bag;
    made->hasLock_ = InitializeCriticalSectionAndSpinCount(&made->lock_, 0) != FALSE;
    if (!made->hasLock_) return {};
    (void)bag->ExchangeWrapper(nullptr, &made->link_);
    return made;
}

BagFace::~BagFace() {
    if (bag_) {
        // Only the borrower itself can give a lock back; what it forgot would block all others.
        while (depth_ != 0 && borrower_ == GetCurrentThreadId()) (void)GiveBack();
        (void)bag_->ExchangeWrapper(&link_, nullptr);
        bag_->Release();
    }
    if (hasLock_) DeleteCriticalSection(&lock_);
}

HRESULT BagFace::QueryInterface(REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (IsEqualIID(id, platform::InterfaceId<IUnknown>()) ||
        IsEqualIID(id, platform::InterfaceId<IDispatch>()) ||
        IsEqualIID(id, platform::InterfaceId<IBag>())) {
        *object = static_cast<IBag*>(this);
    } else if (IsEqualIID(id, platform::InterfaceId<IBagLocker>())) {
        *object = static_cast<IBagLocker*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG BagFace::AddRef() noexcept { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

ULONG BagFace::Release() noexcept {
    // Acquire and release: the last holder must see what all others wrote.
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
}

/// Runs an operation on the root item, under the bag's lock.
template <class Work>
HRESULT BagFace::With(Work work) noexcept {
    const std::uint32_t refusedBefore = RefusedRequests();
    CAB::ClearNotice();
    BagLock root(*bag_);
    const HRESULT result = work(*root.Self());
    return FAILED(result) && RefusedRequests() != refusedBefore ? E_OUTOFMEMORY : result;
}

HRESULT BagFace::GetRootItem(IBagItem** item) noexcept {
    if (!item) return E_POINTER;
    *item = nullptr;
    return With([&](CAB::DataItem& root) {
        *item = ItemFace::Of(root).Detach();
        return *item ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT BagFace::Rebuild() noexcept { return bag_->Rebuild() ? S_OK : E_OUTOFMEMORY; }

HRESULT BagFace::LoadStream(IStream* stream, VARIANT_BOOL isOwn) noexcept {
    if (!stream) return E_INVALIDARG;
    std::unique_ptr<Stream> source = CAB::MakeForeignStream(stream, kAccessRead);
    if (source && !isOwn) source = source->Clone();
    return source ? E_FAIL : E_OUTOFMEMORY;
}

HRESULT BagFace::SaveStream(IStream* stream) noexcept {
    if (!stream) return E_INVALIDARG;
    return CAB::MakeForeignStream(stream, kAccessWrite) ? E_NOTIMPL : E_OUTOFMEMORY;
}

HRESULT BagFace::LoadRegistry(LPCWSTR path, LONGLONG key) noexcept {
    return With([&](CAB::DataItem& root) { return CAB::LoadFromRegistry(root, KeyOf(key), path); });
}

HRESULT BagFace::SaveRegistry(LPCWSTR path, LONGLONG key) noexcept {
    return SaveRegistryFlags(path, key, 0);
}

HRESULT BagFace::SaveRegistryFlags(LPCWSTR path, LONGLONG key, LONG flags) noexcept {
    return With([&](CAB::DataItem& root) { return SaveItem(root, path, key, flags); });
}

HRESULT BagFace::GetChangeCount(LONG* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return With([&](CAB::DataItem&) {
        *count = static_cast<LONG>(bag_->GetChangeCount());
        return S_OK;
    });
}

HRESULT BagFace::FromJson(BSTR text) noexcept {
    if (!text) return E_INVALIDARG;
    return With(
        [&](CAB::DataItem&) { return CAB::FromJson(bag_, WStringView(text, SysStringLen(text))); });
}

HRESULT BagFace::ToJson(LONG flags, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    return With(
        [&](CAB::DataItem&) { return CAB::ToJson(bag_, static_cast<std::uint32_t>(flags), text); });
}

HRESULT BagFace::Borrow() noexcept {
    (void)bag_->Lock();
    EnterCriticalSection(&lock_);
    borrower_ = GetCurrentThreadId();
    ++depth_;
    LeaveCriticalSection(&lock_);
    return S_OK;
}

HRESULT BagFace::GiveBack() noexcept {
    EnterCriticalSection(&lock_);
    const bool isBorrower = depth_ != 0 && borrower_ == GetCurrentThreadId();
    if (isBorrower && --depth_ == 0) borrower_ = 0;
    LeaveCriticalSection(&lock_);
    if (!isBorrower) return E_FAIL;
    bag_->Unlock();
    return S_OK;
}

}  // namespace AUX
