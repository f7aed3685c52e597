#include "cab/data_root.h"

#include "cab/create_item.h"
#include "cab/data_item.h"

namespace AUX::CAB {

DataRoot::DataRoot() noexcept = default;

DataRoot* DataRoot::Create(std::unique_ptr<TemplateHandle> handle) noexcept {
    DataRoot* const bag = new (std::nothrow) DataRoot;
    if (!bag || bag->Start(std::move(handle))) return bag;
    delete bag;
    return nullptr;
}

bool DataRoot::Start(std::unique_ptr<TemplateHandle> handle) noexcept {
    hasLock = InitializeCriticalSectionAndSpinCount(&lock, 0) != FALSE;
    if (!hasLock) return false;
    if (handle) {
        rootSpec = handle->GetSpec();
        if (!rootSpec || rootSpec->kind != Kind::Dictionary) return false;
        templateHandle = std::move(handle);
    }
    rootItem = MakeRootItem();
    changeCount = 0;
    return rootItem != nullptr;
}

DataRoot::~DataRoot() {
    if (ItemWrapper* const left = wrapper.exchange(nullptr)) left->OnTargetGone();
    rootItem.reset();
    for (TemplateHandle* const kept : keptTemplates) delete kept;
    if (hasLock) DeleteCriticalSection(&lock);
}

std::unique_ptr<DataItem> DataRoot::MakeRootItem() noexcept {
    return CreateItem(this, nullptr, rootSpec, nullptr, Kind::Dictionary);
}

void DataRoot::AddRef() noexcept { refCount.fetch_add(1, std::memory_order_relaxed); }

void DataRoot::Release() noexcept {
    if (refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

DataItem* DataRoot::Lock() noexcept {
    EnterCriticalSection(&lock);
    ++lockDepth;
    AddRef();
    return rootItem.get();
}

void DataRoot::Unlock() noexcept {
    --lockDepth;
    LeaveCriticalSection(&lock);
    Release();
}

bool DataRoot::Rebuild() noexcept {
    const BagLockScope scope(*this);
    std::unique_ptr<DataItem> fresh = MakeRootItem();
    if (!fresh) return false;
    rootItem = std::move(fresh);
    MarkChanged();
    return true;
}

bool DataRoot::KeepTemplate(TemplateHandle& handle) noexcept {
    const auto keepsSame = [&](const TemplateHandle* kept) {
        return kept->Kept() == handle.Kept();
    };
    if (!handle.Kept() || (templateHandle && keepsSame(templateHandle.get()))) return true;
    for (const TemplateHandle* const kept : keptTemplates) {
        if (keepsSame(kept)) return true;
    }
    std::unique_ptr<TemplateHandle> copy = handle.Clone();
    if (!copy || !keptTemplates.Add(copy.get())) return false;
    (void)copy.release();
    return true;
}

bool DataRoot::KeepTemplatesOf(const DataRoot& other) noexcept {
    if (&other == this) return true;
    if (other.templateHandle && !KeepTemplate(*other.templateHandle)) return false;
    for (TemplateHandle* const kept : other.keptTemplates) {
        if (!KeepTemplate(*kept)) return false;
    }
    return true;
}

void DataRoot::SetCipher(std::unique_ptr<TextCipher> newCipher) noexcept {
    cipher = std::move(newCipher);
}

}  // namespace AUX::CAB
