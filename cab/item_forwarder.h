#pragma once

#include "cab/data_item.h"
#include "cab/data_root.h"

namespace AUX::CAB {

/// Has the operations of an item and no value of its own: each goes to the item that the subclass
/// names, or to the nil item.
class ItemForwarder : public DataItem {
public:
    [[nodiscard]] DataItem* Self() noexcept override { return Read().Self(); }
    /// The one cast that may make the item.
    [[nodiscard]] DataItem* Target(Kind kind) noexcept override { return Write(kind).Cast(kind); }
    [[nodiscard]] DataItem* Cast(Kind kind) noexcept override { return Read().Cast(kind); }
    [[nodiscard]] DataRoot* GetRoot() noexcept override { return Read().GetRoot(); }
    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override {
        return Read().Equals(other, equalFlags);
    }
    [[nodiscard]] std::uint64_t GetStamp() noexcept override { return Read().GetStamp(); }
    void SetStamp(std::uint64_t stamp) noexcept override { Write(Kind::None).SetStamp(stamp); }
    [[nodiscard]] bool SetRoot(DataRoot* newRoot, bool recursive) noexcept override {
        return Write(Kind::None).SetRoot(newRoot, recursive);
    }

    [[nodiscard]] const WCHAR* GetValueName() noexcept override { return Read().GetValueName(); }
    [[nodiscard]] DataContainer* AsContainer() noexcept override { return Read().AsContainer(); }
    [[nodiscard]] IUnknown* GetObject() noexcept override { return Read().GetObject(); }
    [[nodiscard]] DataDictionary* AsDictionary() noexcept override { return Read().AsDictionary(); }
    [[nodiscard]] DataArray* AsArray() noexcept override { return Read().AsArray(); }
    [[nodiscard]] Stream* GetStream() noexcept override { return Read().GetStream(); }
    [[nodiscard]] const WString* GetString() noexcept override { return Read().GetString(); }
    const double* GetDouble(double& value) noexcept override { return Read().GetDouble(value); }
    const std::int64_t* GetInt64(std::int64_t& value) noexcept override {
        return Read().GetInt64(value);
    }
    const std::int32_t* GetInt(std::int32_t& value) noexcept override {
        return Read().GetInt(value);
    }
    const bool* GetBool(bool& value) noexcept override { return Read().GetBool(value); }
    [[nodiscard]] bool SetText(WStringView text) noexcept override {
        return Write(Kind::String).SetText(text);
    }
    [[nodiscard]] bool SetObject(IUnknown* object) noexcept override {
        return Write(Kind::Object).SetObject(object);
    }
    [[nodiscard]] bool SetStream(Stream* stream, bool attach) noexcept override {
        return Write(Kind::Stream).SetStream(stream, attach);
    }
    [[nodiscard]] bool SetString(WString& text, bool swap) noexcept override {
        return Write(Kind::String).SetString(text, swap);
    }
    [[nodiscard]] bool SetDouble(const double* value, std::uint32_t flag) noexcept override {
        return Write(Kind::Double).SetDouble(value, flag);
    }
    [[nodiscard]] bool SetInt64(const std::int64_t* value, std::uint32_t flag) noexcept override {
        return Write(Kind::Int64).SetInt64(value, flag);
    }
    [[nodiscard]] bool SetInt(const std::int32_t* value, std::uint32_t flag) noexcept override {
        return Write(Kind::Int).SetInt(value, flag);
    }
    [[nodiscard]] bool SetBool(const bool* value, std::uint32_t flag) noexcept override {
        return Write(Kind::Bool).SetBool(value, flag);
    }

    [[nodiscard]] bool Assign(DataItem* source, bool deep, bool withFlags) noexcept override {
        return Write(Kind::None).Assign(source, deep, withFlags);
    }
    [[nodiscard]] Kind GetType() noexcept override { return Read().GetType(); }
    /// Makes an item that is missing, of that kind.
    [[nodiscard]] bool IsType(Kind kind) noexcept override { return Write(kind).IsType(kind); }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override {
        return Read().WriteTo(sink, skipDefaults);
    }
    [[nodiscard]] bool Preload() noexcept override { return Read().Preload(); }
    [[nodiscard]] const ItemSpec* GetSpec() noexcept override { return Read().GetSpec(); }
    [[nodiscard]] bool SetSpecHandle(std::unique_ptr<TemplateHandle> handle) noexcept override {
        return Write(Kind::None).SetSpecHandle(std::move(handle));
    }
    [[nodiscard]] bool SetSpec(const ItemSpec* newSpec) noexcept override {
        return Write(Kind::None).SetSpec(newSpec);
    }
    [[nodiscard]] bool IsDefault() noexcept override { return Read().IsDefault(); }
    [[nodiscard]] bool Reset() noexcept override { return Write(Kind::None).Reset(); }
    [[nodiscard]] Kind GetStoredType() noexcept override { return Read().GetStoredType(); }
    [[nodiscard]] Status GetProtected(WString& output) noexcept override {
        return Read().GetProtected(output);
    }
    [[nodiscard]] Status SetProtected(WStringView text) noexcept override {
        return Write(Kind::None).SetProtected(text);
    }
    void SetTransientAll(bool isTransient) noexcept override {
        Write(Kind::None).SetTransientAll(isTransient);
    }
    [[nodiscard]] std::uint32_t GetFlags() noexcept override { return Read().GetFlags(); }
    void SetFlags(std::uint32_t bits, std::uint32_t mask) noexcept override {
        Write(Kind::None).SetFlags(bits, mask);
    }
    [[nodiscard]] bool IsProxyOwned() const noexcept override { return true; }
    /// A copy of the forwarder; the caller owns it. Null when memory runs out.
    [[nodiscard]] DataItem* Attach() noexcept override = 0;

    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override {
        return Write(Kind::None).AssignValue(source, withFlags);
    }
    bool ResetValue() noexcept override { return Write(Kind::None).ResetValue(); }
    void OnSpecChanged() noexcept override { Write(Kind::None).OnSpecChanged(); }

protected:
    /// The item, or the nil item if there is none.
    [[nodiscard]] virtual DataItem& Read() noexcept = 0;
    /// The same, after an attempt to make a missing one of that kind; None makes nothing.
    [[nodiscard]] virtual DataItem& Write(Kind kind) noexcept = 0;
};

/// A bag's root item, with the bag's lock held as long as this lives.
class BagLock final : public ItemForwarder {
public:
    explicit BagLock(DataRoot& bag) noexcept : bag_(bag), scope_(bag) {}
    [[nodiscard]] DataItem* Attach() noexcept override { return new (std::nothrow) BagLock(bag_); }

protected:
    [[nodiscard]] DataItem& Read() noexcept override { return *scope_.Root(); }
    [[nodiscard]] DataItem& Write(Kind) noexcept override { return *scope_.Root(); }

private:
    DataRoot& bag_;
    BagLockScope scope_;
};

}  // namespace AUX::CAB
