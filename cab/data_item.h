#pragma once

#include <atomic>
#include <memory>

#include "cab/data_root.h"
#include "foundation/stream.h"
#include "foundation/wstring.h"
#include "platform/com.h"

namespace AUX::CAB {

class DataArray;
class DataContainer;
class DataDictionary;
class DataWriter;

template <int Variant>
class DataItemT;

/// A value of a bag. Its parent container owns it, or the DataRoot the root item. What a class does
/// not override answers with nothing and refuses changes.
///
/// Nothing here throws: false or null says that an operation failed, and then value, flags and the
/// bag's change count are what they were. A getter that gives a pointer also writes the value to
/// its argument, and leaves that alone if it gives null. A conversion works only if nothing is
/// lost, and leaves ConversionNotice for the thread. Pointers that getters give are valid until the
/// item changes. Not thread-safe; see DataRoot::Lock. Only wrappers may be exchanged by any thread.
template <>
class DataItemT<0> : public Allocated {
public:
    DataItemT() noexcept = default;
    DataItemT(const DataItemT&) = delete;
    DataItemT& operator=(const DataItemT&) = delete;

    /// The kind of a reader; -1 for an item.
    [[nodiscard]] virtual std::int32_t GetReaderKind() const noexcept { return -1; }
    [[nodiscard]] virtual DataItem* Self() noexcept { return this; }
    [[nodiscard]] virtual DataItem* Target(Kind kind) noexcept { return Cast(kind); }
    /// This item, if `kind` is its own or None.
    [[nodiscard]] virtual DataItem* Cast(Kind kind) noexcept;
    [[nodiscard]] virtual DataRoot* GetRoot() noexcept { return root; }
    virtual ~DataItemT();
    /// \param equalFlags  kEqualAnyStream and its like. Dictionaries don't compare their keys.
    [[nodiscard]] virtual bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept;
    [[nodiscard]] virtual std::uint64_t GetStamp() noexcept { return 0; }
    virtual void SetStamp(std::uint64_t) noexcept {}
    /// Joins a bag; null is none. A container fills itself from its template the first time.
    /// \return false if memory ran out while it did; the container is then empty.
    [[nodiscard]] virtual bool SetRoot(DataRoot* newRoot, bool recursive) noexcept;

    [[nodiscard]] virtual const WCHAR* GetValueName() noexcept { return nullptr; }
    [[nodiscard]] virtual DataContainer* AsContainer() noexcept { return nullptr; }
    /// Borrowed; may be null.
    [[nodiscard]] virtual IUnknown* GetObject() noexcept { return nullptr; }
    [[nodiscard]] virtual DataDictionary* AsDictionary() noexcept { return nullptr; }
    [[nodiscard]] virtual DataArray* AsArray() noexcept { return nullptr; }
    /// The item's own stream, made empty at the first call.
    [[nodiscard]] virtual Stream* GetStream() noexcept { return nullptr; }
    [[nodiscard]] virtual const WString* GetString() noexcept { return nullptr; }
    virtual const double* GetDouble(double&) noexcept { return nullptr; }
    virtual const std::int64_t* GetInt64(std::int64_t&) noexcept { return nullptr; }
    virtual const std::int32_t* GetInt(std::int32_t&) noexcept { return nullptr; }
    virtual const bool* GetBool(bool&) noexcept { return nullptr; }
    /// Numbers: a name of the value spec, or else a text that is parsed: "true" and "false" in any
    /// case; the number that the text begins with, 0 if there is none. Out of range is a refusal.
    [[nodiscard]] virtual bool SetText(WStringView) noexcept { return false; }
    virtual void* EmptySlot1() noexcept { return nullptr; }
    [[nodiscard]] virtual bool SetObject(IUnknown*) noexcept { return false; }
    virtual void* EmptySlot2() noexcept { return nullptr; }
    virtual void* EmptySlot3() noexcept { return nullptr; }
    /// Copies the stream's bytes, or with `attach` takes the stream over, when it succeeds.
    [[nodiscard]] virtual bool SetStream(Stream*, bool /*attach*/) noexcept { return false; }
    /// Copies the text, or with `swap` exchanges the buffers. Numbers: a name of the value spec.
    [[nodiscard]] virtual bool SetString(WString&, bool /*swap*/) noexcept { return false; }
    /// Of the setters of numbers the pointer may be null, which is refused. The second argument is
    /// what the automation faces hand on; it changes nothing.
    [[nodiscard]] virtual bool SetDouble(const double*, std::uint32_t) noexcept { return false; }
    [[nodiscard]] virtual bool SetInt64(const std::int64_t*, std::uint32_t) noexcept {
        return false;
    }
    [[nodiscard]] virtual bool SetInt(const std::int32_t*, std::uint32_t) noexcept { return false; }
    [[nodiscard]] virtual bool SetBool(const bool*, std::uint32_t) noexcept { return false; }

    /// Takes over the value of another item, converted if need be; the same item and its ancestors
    /// and descendants may be given. An array becomes as long as the source, a dictionary keeps the
    /// keys that the source lacks. Children that cannot take their value are left out.
    /// \param deep       A copy always owns all of its values, so this changes nothing.
    /// \param withFlags  ItemTransient, ItemDirty and stamps are then those of the source.
    /// \return false if the value does not fit, or memory ran out: then a dictionary may have taken
    ///         some keys over, each of them whole.
    [[nodiscard]] virtual bool Assign(DataItem* source, bool deep, bool withFlags) noexcept;
    [[nodiscard]] virtual Kind GetType() noexcept { return Kind::None; }
    [[nodiscard]] virtual bool IsType(Kind kind) noexcept { return GetType() == kind; }
    /// Hands the value to a store. \return false if the store refuses.
    [[nodiscard]] virtual bool WriteTo(DataWriter&, bool /*skipDefaults*/) noexcept {
        return false;
    }
    /// Fills a container from its template now, with all below it.
    [[nodiscard]] virtual bool Preload() noexcept { return true; }
    [[nodiscard]] virtual const ItemSpec* GetSpec() noexcept;
    /// As SetSpec, with a template that the item then keeps alive.
    [[nodiscard]] virtual bool SetSpecHandle(std::unique_ptr<TemplateHandle> handle) noexcept;
    /// Takes a declaration, which must outlive the item; null for none. A container is brought into
    /// its shape: values that fit are kept, what it does not declare goes.
    /// \return false, with nothing changed, if kind or value do not fit it, or memory ran out.
    [[nodiscard]] virtual bool SetSpec(const ItemSpec* newSpec) noexcept;
    [[nodiscard]] virtual bool IsDefault() noexcept { return false; }
    /// Goes back to the default of the declaration, or to zero or nothing.
    [[nodiscard]] virtual bool Reset() noexcept;
    /// The kind that the item has in a store.
    [[nodiscard]] virtual Kind GetStoredType() noexcept { return GetType(); }
    /// The value as text; of a string, through the bag's cipher.
    /// \return a negative status, with the output unchanged, as EncryptText or E_FAIL.
    [[nodiscard]] virtual Status GetProtected(WString& output) noexcept;
    [[nodiscard]] virtual Status SetProtected(WStringView text) noexcept;
    virtual void SetTransientAll(bool /*isTransient*/) noexcept {}
    [[nodiscard]] virtual std::uint32_t GetFlags() noexcept { return flags; }
    virtual void SetFlags(std::uint32_t bits, std::uint32_t mask) noexcept {
        flags = (flags & ~mask) | bits;
    }
    [[nodiscard]] virtual bool IsProxyOwned() const noexcept { return false; }
    [[nodiscard]] virtual DataItem* Attach() noexcept { return this; }

    [[nodiscard]] ItemWrapper* GetWrapper() const noexcept { return wrapper.load(); }
    /// Installs a wrapper where `expected` stands. \return false if another one stands there.
    bool ExchangeWrapper(ItemWrapper* expected, ItemWrapper* replacement) noexcept {
        return wrapper.compare_exchange_strong(expected, replacement);
    }

    /// The kind-specific part of Assign; `source` is neither above nor below this item.
    [[nodiscard]] virtual bool AssignValue(DataItem& /*source*/, bool /*withFlags*/) noexcept {
        return false;
    }
    /// The kind-specific part of Reset. \return whether the value changed.
    virtual bool ResetValue() noexcept { return false; }
    virtual void OnSpecChanged() noexcept {}

    /// Assign for two items of which none is above the other.
    [[nodiscard]] bool AssignUnrelated(DataItem& source, bool withFlags) noexcept;
    /// Reset, telling whether something changed.
    bool ResetAndTell() noexcept;
    /// Gives a new item its declaration, and the default value. \return false if memory runs out.
    [[nodiscard]] bool StartWithSpec(const ItemSpec* newSpec) noexcept;
    /// Raises the change count and sets the flags of a change.
    void MarkSet(std::uint32_t bits = ItemValueSet | ItemDirty) noexcept;
    /// Makes a leaf that is new in its container ItemDirty: no save has written it, even if its
    /// value is never set.
    void MarkNew() noexcept {
        if (!IsContainer(GetType())) flags |= ItemDirty;
    }

protected:
    /// Brings the value into the shape of the declaration that was just set.
    [[nodiscard]] virtual bool ApplySpec() noexcept { return true; }

    std::atomic<ItemWrapper*> wrapper = nullptr;
    std::uint32_t flags = 0;
    /// An ItemSpec, or with the low bit set an owned TemplateHandle.
    std::uintptr_t spec = 0;
    DataRoot* root = nullptr;

private:
    [[nodiscard]] bool ExchangeSpec(std::uintptr_t word, const ItemSpec* newSpec) noexcept;
    void DropSpec(std::uintptr_t word) noexcept;
};

}  // namespace AUX::CAB
