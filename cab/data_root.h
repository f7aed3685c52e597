#pragma once

#include <atomic>
#include <memory>

#include "cab/item_spec.h"
#include "foundation/array.h"
#include "foundation/text_cipher.h"
#include "platform/sync.h"

namespace AUX::CAB {

template <int Variant>
class DataItemT;
using DataItem = DataItemT<0>;
class DataReader;

/// The back pointer of an automation object to its item or bag.
class ItemWrapper {
public:
    /// The item or bag is going; every later call of the wrapper must fail.
    virtual void OnTargetGone() noexcept = 0;

protected:
    ~ItemWrapper() = default;
};

/// A bag: a tree of items under one dictionary. Counted; made with one reference. Items take no
/// lock: whoever uses a bag from several threads holds Lock.
class DataRoot : public Allocated {
public:
    /// Makes a bag.
    /// \param handle  The template, which the bag takes over; null for a free bag.
    /// \return null if memory runs out, or if the template's root is no dictionary.
    [[nodiscard]] static DataRoot* Create(
        std::unique_ptr<TemplateHandle> handle = nullptr) noexcept;

    void AddRef() noexcept;
    void Release() noexcept;

    /// Enters the bag and keeps it alive until Unlock. Recursive.
    DataItem* Lock() noexcept;
    void Unlock() noexcept;

    /// Makes a fresh root item, all values at their defaults.
    /// \return false, with the old one kept, if memory runs out.
    [[nodiscard]] bool Rebuild() noexcept;

    void MarkChanged() noexcept { ++changeCount; }
    [[nodiscard]] std::uint32_t GetChangeCount() const noexcept { return changeCount; }
    [[nodiscard]] std::uint32_t LockDepth() const noexcept { return lockDepth; }
    [[nodiscard]] DataItem* GetRootItem() const noexcept { return rootItem.get(); }
    [[nodiscard]] const ItemSpec* GetRootSpec() const noexcept { return rootSpec; }

    /// A reader to read lazily from; null, as there is no store yet.
    [[nodiscard]] DataReader* GetAttachedStore() const noexcept { return attachedStore; }

    /// Keeps what a template needs as long as the bag: declarations of it may stand in items that
    /// did not bring it. \return false when memory runs out.
    [[nodiscard]] bool KeepTemplate(TemplateHandle& handle) noexcept;
    /// The same with every template that another bag keeps or is made of.
    [[nodiscard]] bool KeepTemplatesOf(const DataRoot& other) noexcept;

    /// What protects the strings; null for none. The bag owns it.
    [[nodiscard]] TextCipher* GetCipher() const noexcept { return cipher.get(); }
    void SetCipher(std::unique_ptr<TextCipher> newCipher) noexcept;

    [[nodiscard]] ItemWrapper* GetWrapper() const noexcept { return wrapper.load(); }
    /// Installs a wrapper where `expected` stands. \return false if another one stands there.
    bool ExchangeWrapper(ItemWrapper* expected, ItemWrapper* replacement) noexcept {
        return wrapper.compare_exchange_strong(expected, replacement);
    }

private:
    DataRoot() noexcept;
    ~DataRoot();
    [[nodiscard]] bool Start(std::unique_ptr<TemplateHandle> handle) noexcept;
    [[nodiscard]] std::unique_ptr<DataItem> MakeRootItem() noexcept;

    std::atomic<std::int32_t> refCount = 1;
    std::atomic<ItemWrapper*> wrapper = nullptr;
    CRITICAL_SECTION lock;
    std::uint32_t lockDepth = 0;
    bool hasLock = false;
    std::unique_ptr<DataItem> rootItem;
    const ItemSpec* rootSpec = nullptr;
    std::unique_ptr<TemplateHandle> templateHandle;
    Array<TemplateHandle*> keptTemplates;
    DataReader* attachedStore = nullptr;
    std::unique_ptr<TextCipher> cipher;
    std::uint32_t changeCount = 0;
};

/// Holds a bag's lock.
class BagLockScope {
public:
    explicit BagLockScope(DataRoot& bag) noexcept : bag_(bag), root_(bag.Lock()) {}
    ~BagLockScope() { bag_.Unlock(); }
    BagLockScope(const BagLockScope&) = delete;
    BagLockScope& operator=(const BagLockScope&) = delete;
    [[nodiscard]] DataItem* Root() const noexcept { return root_; }

private:
    DataRoot& bag_;
    DataItem* root_;
};

}  // namespace AUX::CAB
